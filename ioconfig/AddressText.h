#pragma once
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

// Small text operations for address strings. Addresses are outside input: every operation is
// bounds-checked, and case folding is plain ASCII so the host's locale never changes a result.
namespace cvn73100::address_text {

inline constexpr std::size_t npos = std::string::npos;

inline char Upper(char c) { return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c; }
inline bool IsDigit(char c) { return c >= '0' && c <= '9'; }

inline std::string ToUpper(std::string_view text) {
  std::string result(text);
  for (char& c : result) c = Upper(c);
  return result;
}

inline bool StartsWithNoCase(std::string_view text, std::string_view prefix) {
  if (text.size() < prefix.size()) return false;
  for (std::size_t i = 0; i < prefix.size(); ++i)
    if (Upper(text[i]) != Upper(prefix[i])) return false;
  return true;
}

// Position of `what` in `text` at or after `from`, ignoring case; npos when absent.
inline std::size_t FindNoCase(std::string_view text, std::string_view what, std::size_t from = 0) {
  if (from > text.size()) return npos;
  return ToUpper(text).find(ToUpper(what), from);
}

// The value of the decimal digits starting at `pos` (0 when there are none). A value beyond the
// 32-bit range saturates at its maximum, which every caller then refuses as out of range.
inline std::int32_t LeadingDigits(std::string_view text, std::size_t pos) {
  std::int64_t value = 0;
  for (; pos < text.size() && IsDigit(text[pos]); ++pos) {
    value = value * 10 + (text[pos] - '0');
    if (value > std::numeric_limits<std::int32_t>::max()) value = std::numeric_limits<std::int32_t>::max();
  }
  return static_cast<std::int32_t>(value);
}

// Leading digits followed by nothing else; -1 for an empty text or any other character.
inline std::int32_t DigitsOnly(std::string_view text) {
  if (text.empty()) return -1;
  for (char c : text)
    if (!IsDigit(c)) return -1;
  return LeadingDigits(text, 0);
}

}  // namespace cvn73100::address_text

namespace cvn73100::address_text {

enum class InstrumentAddressFault { None, NoSeparator, BadSeparator, OutOfRange };

struct InstrumentAddress {
  InstrumentAddressFault fault = InstrumentAddressFault::None;
  std::int32_t value = -1;
};

// The instrument address of a full GPIB address: the one or two digits between the first two "::".
inline InstrumentAddress ReadInstrumentAddress(std::string_view text, std::int32_t first, std::int32_t last) {
  const std::size_t separator1 = text.find("::");
  if (separator1 == npos) return {InstrumentAddressFault::NoSeparator, -1};
  const std::size_t start = separator1 + 2;
  const std::size_t separator2 = text.find("::", start);
  if (separator2 == npos || (separator2 - start != 1 && separator2 - start != 2))
    return {InstrumentAddressFault::BadSeparator, -1};
  const std::int32_t value = DigitsOnly(text.substr(start, separator2 - start));
  if (value < first || value > last) return {InstrumentAddressFault::OutOfRange, value};
  return {InstrumentAddressFault::None, value};
}

}  // namespace cvn73100::address_text
