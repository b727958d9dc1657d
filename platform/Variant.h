#pragma once
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace cvn73100 {

using Bytes = std::vector<std::uint8_t>;

// An instrument's saved state: Empty (nullopt) or bytes that only the instrument understands.
using LearnString = std::optional<Bytes>;
// The most bytes a learn string may hold, read from an instrument or from a file.
inline constexpr std::size_t LEARN_STRING_CAP = std::size_t{1} << 20;

// A self-describing value: Empty, Boolean, Integer (16-bit), Long (32-bit), Double, String,
// byte array, array of doubles (waveforms) or array of Variants.
class Variant {
 public:
  using Array = std::vector<Variant>;
  using Doubles = std::vector<double>;
  enum class Type { Empty, Boolean, Integer, Long, Double, String, ByteArray, DoubleArray, Array };

  Variant() = default;
  Variant(bool value) : m_value(value) {}
  Variant(std::int16_t value) : m_value(value) {}
  Variant(std::int32_t value) : m_value(value) {}
  Variant(double value) : m_value(value) {}
  Variant(const char* value) : m_value(std::string(value)) {}
  Variant(std::string value) : m_value(std::move(value)) {}
  Variant(Bytes value) : m_value(std::move(value)) {}
  Variant(Doubles value) : m_value(std::move(value)) {}
  Variant(Array value) : m_value(std::move(value)) {}

  Type GetType() const { return static_cast<Type>(m_value.index()); }
  bool IsEmpty() const { return GetType() == Type::Empty; }
  bool IsNumeric() const;

  // Conversions raise the type-mismatch error (13) when the value cannot be converted.
  bool AsBool() const;
  std::int16_t AsInteger() const;  // also raises overflow as type mismatch
  std::int32_t AsLong() const;
  double AsDouble() const;
  std::string AsString() const;
  const Bytes& AsBytes() const;
  const Doubles& AsDoubles() const;
  const Array& AsArray() const;
  Array& AsArray();

  bool operator==(const Variant& other) const { return m_value == other.m_value; }

 private:
  std::variant<std::monostate, bool, std::int16_t, std::int32_t, double, std::string, Bytes, Doubles, Array> m_value;
};

Variant ToVariant(const LearnString& learnString);
// Empty stays Empty; a byte array becomes the learn string; anything else is a type mismatch.
LearnString ToLearnString(const Variant& value);

}  // namespace cvn73100
