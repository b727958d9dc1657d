#include "dialogs/LanguageSelection.h"

#include <charconv>
#include <filesystem>
#include <system_error>
#include <utility>

#include "diagnostics/CDebug.h"
#include "dialogs/Messages.h"
#include "platform/Enumerations.h"
#include "platform/Os.h"
#include "platform/ScopeError.h"

namespace cvn73100 {
namespace {

constexpr const char* CLASS_NAME = "Cvn73100Scope";
constexpr const char* PROCEDURE = "CountryCode";
constexpr const char* HELP_FOLDER = "Help";
// Used when a catalogue's font size is not a number; it is the control's own initial size.
constexpr std::int16_t FALLBACK_FONT_SIZE = 8;

struct Language {
  std::int32_t countryCode;
  int base;
  int codePage;       // 0: no double-byte code page needed
  const char* label;  // the assertion's case label when the code page is missing
};

constexpr Language LANGUAGES[] = {
    {Cvn73100_Language_English, Messages::ENGLISH, 0, ""},
    {Cvn73100_Language_French, Messages::FRENCH, 0, ""},
    {Cvn73100_Language_Spanish, Messages::SPANISH, 0, ""},
    {Cvn73100_Language_Italian, Messages::ITALIAN, 0, ""},
    {Cvn73100_Language_German, Messages::GERMAN, 0, ""},
    {Cvn73100_Language_Japanese, Messages::JAPANESE, LanguageSelection::CODE_PAGE_JAPANESE,
     "Case Cvn73100_Language_Japanese"},
    {Cvn73100_Language_Korean, Messages::KOREAN, LanguageSelection::CODE_PAGE_KOREAN, "Case Cvn73100_Language_Korean"},
    {Cvn73100_Language_Traditional_Chinese, Messages::TRADITIONAL_CHINESE,
     LanguageSelection::CODE_PAGE_TRADITIONAL_CHINESE, "Case Cvn73100_Language_Taiwanese"},
};

const Language* FindLanguage(std::int32_t countryCode) {
  for (const Language& language : LANGUAGES) {
    if (language.countryCode == countryCode) return &language;
  }
  return nullptr;
}

std::int16_t ParseFontSize(const std::string& text) {
  int size = 0;
  const char* end = text.data() + text.size();
  const auto [ptr, ec] = std::from_chars(text.data(), end, size);
  if (ec != std::errc() || ptr != end || size <= 0 || size > 0x7FFF) return FALLBACK_FONT_SIZE;
  return static_cast<std::int16_t>(size);
}

// Copies through a temporary name and renames, so a failed copy never leaves a half-written help file.
bool CopyWhole(const std::filesystem::path& from, const std::filesystem::path& to) {
  namespace fs = std::filesystem;
  std::error_code ec;
  if (!fs::is_regular_file(from, ec)) return false;
  fs::path partial = to;
  partial += ".part";
  fs::copy_file(from, partial, fs::copy_options::overwrite_existing, ec);
  if (!ec) fs::rename(partial, to, ec);
  if (ec) {
    std::error_code ignored;
    fs::remove(partial, ignored);
    return false;
  }
  return true;
}

}  // namespace

std::optional<int> LanguageSelection::BaseOfCountry(std::int32_t countryCode) {
  if (const Language* language = FindLanguage(countryCode)) return language->base;
  return std::nullopt;
}

int LanguageSelection::CodePageOfBase(int base) {
  for (const Language& language : LANGUAGES) {
    if (language.base == base) return language.codePage;
  }
  return 0;
}

LanguageChoice LanguageSelection::Check(std::int32_t countryCode) {
  const Language* language = FindLanguage(countryCode);
  if (language == nullptr) {
    CDebug::Instance().Assert(false, "False", CLASS_NAME, PROCEDURE, "Case Else");
    throw CatalogueError(ERR_INVALID_PROPERTY_VALUE, 104, 106);
  }
  if (language->codePage != 0 && !Os::Current().CodePageIsDoubleByte(language->codePage)) {
    CDebug::Instance().Assert(false, "False", CLASS_NAME, PROCEDURE, language->label);
    throw CatalogueError(ERR_INVALID_PROPERTY_VALUE, 104, 107);
  }
  LanguageChoice choice;
  choice.countryCode = countryCode;
  choice.base = language->base;
  choice.fontName = Messages::LoadIn(language->base, 102);
  choice.fontSize = ParseFontSize(Messages::LoadIn(language->base, 103));
  return choice;
}

LanguageChoice LanguageSelection::Select(std::int32_t countryCode) {
  LanguageChoice choice = Check(countryCode);
  SetLanguage(choice.base);
  return choice;
}

void LanguageSelection::SetLanguage(int base) {
  Messages::SetLanguageBase(base);
  InstallHelpFiles(base);
}

int LanguageSelection::InstallHelpFiles(int base) {
  const std::filesystem::path folder = Os::Current().ProgramFolder();
  int copied = 0;
  // (localized file, generic name): the help file 100 -> 10 and its contents file 101 -> 11.
  for (const auto& [localized, generic] : {std::pair{100, 10}, std::pair{101, 11}}) {
    const std::string from = Messages::LoadIn(base, localized);
    const std::string to = Messages::LoadIn(Messages::ENGLISH, generic);
    if (from.empty() || to.empty()) continue;
    if (CopyWhole(folder / HELP_FOLDER / from, folder / to)) ++copied;
  }
  return copied;
}

}  // namespace cvn73100
