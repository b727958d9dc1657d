#include "platform/Variant.h"

#include <charconv>
#include <cmath>
#include <limits>

#include "platform/ScopeError.h"

namespace cvn73100 {
namespace {

[[noreturn]] void Mismatch() { throw RuntimeError(ERR_TYPE_MISMATCH); }

double ParseNumber(const std::string& text) {
  std::size_t begin = text.find_first_not_of(' ');
  std::size_t end = text.find_last_not_of(' ');
  if (begin == std::string::npos) Mismatch();
  double value = 0;
  const char* first = text.data() + begin;
  const char* last = text.data() + end + 1;
  auto [ptr, ec] = std::from_chars(first, last, value);
  if (ec != std::errc() || ptr != last) Mismatch();
  return value;
}

std::int64_t RoundToInteger(double value, std::int64_t lo, std::int64_t hi) {
  if (!std::isfinite(value)) Mismatch();
  const double rounded = std::nearbyint(value);  // banker's rounding, as an automation host converts
  if (rounded < static_cast<double>(lo) || rounded > static_cast<double>(hi)) Mismatch();
  return static_cast<std::int64_t>(rounded);
}

}  // namespace

bool Variant::IsNumeric() const {
  switch (GetType()) {
    case Type::Boolean:
    case Type::Integer:
    case Type::Long:
    case Type::Double:
      return true;
    default:
      return false;
  }
}

double Variant::AsDouble() const {
  switch (GetType()) {
    case Type::Empty:
      return 0;
    case Type::Boolean:
      return std::get<bool>(m_value) ? -1 : 0;
    case Type::Integer:
      return std::get<std::int16_t>(m_value);
    case Type::Long:
      return std::get<std::int32_t>(m_value);
    case Type::Double:
      return std::get<double>(m_value);
    case Type::String:
      return ParseNumber(std::get<std::string>(m_value));
    default:
      Mismatch();
  }
}

bool Variant::AsBool() const {
  if (GetType() == Type::Boolean) return std::get<bool>(m_value);
  if (GetType() == Type::String) {
    const auto& s = std::get<std::string>(m_value);
    if (s == "True" || s == "true" || s == "TRUE") return true;
    if (s == "False" || s == "false" || s == "FALSE") return false;
  }
  return AsDouble() != 0;
}

std::int16_t Variant::AsInteger() const {
  return static_cast<std::int16_t>(
      RoundToInteger(AsDouble(), std::numeric_limits<std::int16_t>::min(), std::numeric_limits<std::int16_t>::max()));
}

std::int32_t Variant::AsLong() const {
  return static_cast<std::int32_t>(
      RoundToInteger(AsDouble(), std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()));
}

std::string Variant::AsString() const {
  switch (GetType()) {
    case Type::Empty:
      return "";
    case Type::Boolean:
      return std::get<bool>(m_value) ? "True" : "False";
    case Type::Integer:
      return std::to_string(std::get<std::int16_t>(m_value));
    case Type::Long:
      return std::to_string(std::get<std::int32_t>(m_value));
    case Type::Double: {
      char buffer[32];
      auto [ptr, ec] = std::to_chars(buffer, buffer + sizeof buffer, std::get<double>(m_value));
      return ec == std::errc() ? std::string(buffer, ptr) : std::string();
    }
    case Type::String:
      return std::get<std::string>(m_value);
    case Type::ByteArray: {
      const auto& b = std::get<Bytes>(m_value);
      return std::string(b.begin(), b.end());
    }
    default:
      Mismatch();
  }
}

const Bytes& Variant::AsBytes() const {
  if (const auto* bytes = std::get_if<Bytes>(&m_value)) return *bytes;
  Mismatch();
}

const Variant::Doubles& Variant::AsDoubles() const {
  if (const auto* doubles = std::get_if<Doubles>(&m_value)) return *doubles;
  Mismatch();
}

const Variant::Array& Variant::AsArray() const {
  if (const auto* array = std::get_if<Array>(&m_value)) return *array;
  Mismatch();
}

Variant::Array& Variant::AsArray() {
  if (auto* array = std::get_if<Array>(&m_value)) return *array;
  Mismatch();
}

Variant ToVariant(const LearnString& learnString) { return learnString ? Variant(*learnString) : Variant(); }

LearnString ToLearnString(const Variant& value) {
  if (value.IsEmpty()) return std::nullopt;
  return value.AsBytes();
}

}  // namespace cvn73100
