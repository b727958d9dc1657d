#pragma once
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "platform/Enumerations.h"

// SCPI character data for the enumerated settings, shared by everything that writes or reads them: the
// automation server sends the long form, the simulator accepts either form and answers the short one.
// A keyword is written with its short form in upper case ("NORMal" -> "NORM"); a trailing number is a
// numeric suffix ("CHANnel2" -> "CHAN2").
namespace cvn73100::scpi {

struct Mnemonic {
  std::int32_t value;  // the control's enumeration value
  std::string_view keyword;
};

constexpr char Upper(char c) { return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c; }
constexpr bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// The short form of a keyword without suffix ("CHANnel" -> "CHAN").
constexpr std::string_view ShortForm(std::string_view keyword) {
  std::size_t n = 0;
  while (n < keyword.size() && !(keyword[n] >= 'a' && keyword[n] <= 'z')) ++n;
  return keyword.substr(0, n);
}

// True when `word` spells the short form or the whole of `keyword`, in any case.
constexpr bool MatchesKeyword(std::string_view keyword, std::string_view word) {
  if (word.size() != ShortForm(keyword).size() && word.size() != keyword.size()) return false;
  for (std::size_t i = 0; i < word.size(); ++i) {
    if (Upper(word[i]) != Upper(keyword[i])) return false;
  }
  return true;
}

// A word split into its letters and its numeric suffix ("CHAN2" -> "CHAN", 2); suffix is -1 when absent and
// HUGE_SUFFIX when it has too many digits to be meaningful.
struct SuffixedWord {
  std::string_view stem;
  int suffix = -1;
};
inline constexpr int HUGE_SUFFIX = 1'000'000;

constexpr SuffixedWord SplitSuffix(std::string_view word) {
  std::size_t stemEnd = word.size();
  while (stemEnd > 0 && IsDigit(word[stemEnd - 1])) --stemEnd;
  if (stemEnd == word.size()) return {word, -1};
  int suffix = 0;
  for (std::size_t i = stemEnd; i < word.size(); ++i) {
    suffix = suffix * 10 + (word[i] - '0');
    if (suffix >= HUGE_SUFFIX) return {word.substr(0, stemEnd), HUGE_SUFFIX};
  }
  return {word.substr(0, stemEnd), suffix};
}

// The entry `word` names, long or short form, any case; a suffix left out means 1. nullptr when none.
constexpr const Mnemonic* FindKeyword(std::span<const Mnemonic> table, std::string_view word) {
  const SuffixedWord given = SplitSuffix(word);
  for (const Mnemonic& m : table) {
    if (m.keyword.empty()) continue;
    const SuffixedWord key = SplitSuffix(m.keyword);
    const bool suffixMatches = given.suffix == key.suffix || (given.suffix == -1 && key.suffix == 1);
    if (suffixMatches && MatchesKeyword(key.stem, given.stem)) return &m;
  }
  return nullptr;
}

// The first entry for `value`; nullptr when the table has none.
constexpr const Mnemonic* FindValue(std::span<const Mnemonic> table, std::int64_t value) {
  for (const Mnemonic& m : table) {
    if (m.value == value) return &m;
  }
  return nullptr;
}

// "CHANnel2" -> "CHAN2": the form an instrument answers in.
inline std::string ShortReply(std::string_view keyword) {
  const SuffixedWord key = SplitSuffix(keyword);
  std::string out(ShortForm(key.stem));
  if (key.suffix >= 0) out += std::to_string(key.suffix);
  return out;
}

// When several entries share a value, the first is the one sent; later ones are only read.
inline constexpr Mnemonic ACQUISITION_TYPES[] = {
    {Cvn73100_AcquisitionType_Normal, "NORMal"},    {Cvn73100_AcquisitionType_Average, "AVERage"},
    {Cvn73100_AcquisitionType_Real, "HRESolution"}, {Cvn73100_AcquisitionType_Peak, "PEAK"},
    {Cvn73100_AcquisitionType_Glitch, "GLITch"},    {Cvn73100_AcquisitionType_Auto, "AUTO"}};
inline constexpr Mnemonic CHANNEL_COUPLINGS[] = {
    {Cvn73100_ProbeCoupling_DC, "DC"}, {Cvn73100_ProbeCoupling_AC, "AC"}, {Cvn73100_ProbeCoupling_GND, "GND"}};
inline constexpr Mnemonic TIME_MODES[] = {{Cvn73100_TimeMode_Normal, "MAIN"},
                                          {Cvn73100_TimeMode_Delayed, "WINDow"},
                                          {Cvn73100_TimeMode_XY, "XY"},
                                          {Cvn73100_TimeMode_Roll, "ROLL"}};
inline constexpr Mnemonic TIME_REFERENCES[] = {{Cvn73100_TimeReference_Left, "LEFT"},
                                               {Cvn73100_TimeReference_Center, "CENTer"},
                                               {Cvn73100_TimeReference_Right, "RIGHt"}};
inline constexpr Mnemonic TRIGGER_SWEEPS[] = {{Cvn73100_TriggerMode_Auto, "AUTO"},
                                              {Cvn73100_TriggerMode_Normal, "NORMal"},
                                              {Cvn73100_TriggerMode_AutoLevel, "ALEVel"}};
inline constexpr Mnemonic TRIGGER_SOURCES[] = {
    {Cvn73100_TriggerSource_Channel1, "CHANnel1"},   {Cvn73100_TriggerSource_Channel2, "CHANnel2"},
    {Cvn73100_TriggerSource_Channel3, "CHANnel3"},   {Cvn73100_TriggerSource_Channel4, "CHANnel4"},
    {Cvn73100_TriggerSource_External, "EXTernal"},   {Cvn73100_TriggerSource_Line, "LINE"},
    {Cvn73100_TriggerSource_Logic_D0, "DIGital0"},   {Cvn73100_TriggerSource_Logic_D1, "DIGital1"},
    {Cvn73100_TriggerSource_Logic_D2, "DIGital2"},   {Cvn73100_TriggerSource_Logic_D3, "DIGital3"},
    {Cvn73100_TriggerSource_Logic_D4, "DIGital4"},   {Cvn73100_TriggerSource_Logic_D5, "DIGital5"},
    {Cvn73100_TriggerSource_Logic_D6, "DIGital6"},   {Cvn73100_TriggerSource_Logic_D7, "DIGital7"},
    {Cvn73100_TriggerSource_Logic_D8, "DIGital8"},   {Cvn73100_TriggerSource_Logic_D9, "DIGital9"},
    {Cvn73100_TriggerSource_Logic_D10, "DIGital10"}, {Cvn73100_TriggerSource_Logic_D11, "DIGital11"},
    {Cvn73100_TriggerSource_Logic_D12, "DIGital12"}, {Cvn73100_TriggerSource_Logic_D13, "DIGital13"},
    {Cvn73100_TriggerSource_Logic_D14, "DIGital14"}, {Cvn73100_TriggerSource_Logic_D15, "DIGital15"}};
inline constexpr Mnemonic TRIGGER_SLOPES[] = {{Cvn73100_TriggerSlope_Positive, "POSitive"},
                                              {Cvn73100_TriggerSlope_Negative, "NEGative"}};
inline constexpr Mnemonic TRIGGER_COUPLINGS[] = {{Cvn73100_TriggerCoupling_DC, "DC"},
                                                 {Cvn73100_TriggerCoupling_AC, "AC"}};
inline constexpr Mnemonic ON_OFF[] = {{Cvn73100_Off, "OFF"}, {Cvn73100_On, "ON"}};

}  // namespace cvn73100::scpi
