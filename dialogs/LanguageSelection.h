#pragma once
#include <cstdint>
#include <optional>
#include <string>

namespace cvn73100 {

// What a country code selects: the catalogue's language and the font the control adopts with it.
struct LanguageChoice {
  std::int32_t countryCode = 1;  // the accepted code, for the control to store
  int base = 0;                  // the language's base in the message catalogue
  std::string fontName;          // message base + 102
  std::int16_t fontSize = 9;     // message base + 103, in points
};

// The control's language, chosen by international telephone country code (1, 33, 34, 39, 49, 81, 82,
// 886). The Asian languages need their double-byte code page on this computer: 932 for Japanese, 949
// for Korean, 950 for Traditional Chinese. The control's CountryCode setter is
//
//   const LanguageChoice choice = LanguageSelection::Select(code);  // throws; nothing changed then
//   SetFontName(choice.fontName); SetFontSize(choice.fontSize); store code; announce "CountryCode".
class LanguageSelection {
 public:
  static constexpr int CODE_PAGE_JAPANESE = 932;
  static constexpr int CODE_PAGE_KOREAN = 949;
  static constexpr int CODE_PAGE_TRADITIONAL_CHINESE = 950;

  // The catalogue base of `countryCode`; nullopt for a code that names none of the eight languages.
  static std::optional<int> BaseOfCountry(std::int32_t countryCode);
  // The code page the language at `base` needs, or 0 when it needs none.
  static int CodePageOfBase(int base);

  // Checks `countryCode` as the CountryCode property accepts it and says what it selects, changing
  // nothing. A code of no language, or an Asian language whose code page this computer lacks, is
  // asserted (class "Cvn73100Scope", procedure "CountryCode", the case label) and then refused with
  // ScopeError -2147221124: source message 104, description 106 "Invalid property value." or 107
  // "Asian languages are not supported on this computer.", both in the current language.
  static LanguageChoice Check(std::int32_t countryCode);
  // Check, then SetLanguage: on success the catalogue speaks the new language and its help files are
  // installed; on failure (the same ScopeError) the language stays as it was.
  static LanguageChoice Select(std::int32_t countryCode);

  // Makes the language at `base` current for the process and installs its help files.
  static void SetLanguage(int base);
  // Copies the program folder's Help/<message 100> and Help/<message 101> of the language at `base` to
  // the program folder as the generic help files (English messages 10 and 11). A copy that fails is
  // skipped silently and leaves the earlier file as it was. Returns how many files were copied.
  static int InstallHelpFiles(int base);
};

}  // namespace cvn73100
