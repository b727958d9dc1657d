#pragma once

#include <string_view>

namespace cvn73100::sim {

// SCPI keywords are written with their short form in upper case ("CHANnel"): a word matches when it spells
// either the short form or the whole keyword, in any case.
bool MatchesKeyword(std::string_view keyword, std::string_view word);

// A word split into its letters and its numeric suffix ("CHAN2" -> "CHAN", 2); suffix is -1 when absent and
// kHugeSuffix when it has too many digits to be meaningful.
struct SuffixedWord {
  std::string_view stem;
  int suffix = -1;
};
inline constexpr int kHugeSuffix = 1'000'000;
SuffixedWord SplitSuffix(std::string_view word);

// The short form of a keyword ("CHANnel" -> "CHAN").
std::string_view ShortForm(std::string_view keyword);

}  // namespace cvn73100::sim
