#include "simulator/Mnemonic.h"

namespace cvn73100::sim {
namespace {
char Upper(char c) { return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c; }
bool IsLower(char c) { return c >= 'a' && c <= 'z'; }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }
}  // namespace

std::string_view ShortForm(std::string_view keyword) {
  std::size_t n = 0;
  while (n < keyword.size() && !IsLower(keyword[n])) ++n;
  return keyword.substr(0, n);
}

bool MatchesKeyword(std::string_view keyword, std::string_view word) {
  if (word.size() != ShortForm(keyword).size() && word.size() != keyword.size()) return false;
  for (std::size_t i = 0; i < word.size(); ++i) {
    if (Upper(word[i]) != Upper(keyword[i])) return false;
  }
  return true;
}

SuffixedWord SplitSuffix(std::string_view word) {
  std::size_t stemEnd = word.size();
  while (stemEnd > 0 && IsDigit(word[stemEnd - 1])) --stemEnd;
  if (stemEnd == word.size()) return {word, -1};
  int suffix = 0;
  for (std::size_t i = stemEnd; i < word.size(); ++i) {
    suffix = suffix * 10 + (word[i] - '0');
    if (suffix >= kHugeSuffix) return {word.substr(0, stemEnd), kHugeSuffix};
  }
  return {word.substr(0, stemEnd), suffix};
}

}  // namespace cvn73100::sim
