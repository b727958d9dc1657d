#pragma once
#include <algorithm>
#include <string>
#include <string_view>

namespace cvn73100 {

// Text rules of setups and setup files: names, models and file tags compare without regard to case
// (ASCII letters), and "blanks" are spaces only, so a line's carriage return survives trimming.
class SetupText {
 public:
  static char Upper(char c) { return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c; }

  static std::string ToUpper(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(), Upper);
    return result;
  }

  static bool EqualsIgnoreCase(std::string_view a, std::string_view b) {
    return a.size() == b.size() &&
           std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) { return Upper(x) == Upper(y); });
  }

  // Removes leading and trailing spaces.
  static std::string Trim(std::string_view text) {
    const std::size_t begin = text.find_first_not_of(' ');
    if (begin == std::string_view::npos) return std::string();
    return std::string(text.substr(begin, text.find_last_not_of(' ') - begin + 1));
  }
};

}  // namespace cvn73100
