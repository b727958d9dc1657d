#pragma once
#include <cstdint>
#include <optional>
#include <string>

#include "platform/ScopeError.h"

namespace cvn73100 {

// The message catalogue: every text the control shows, by number, in the current language.
class Messages {
 public:
  // Language bases.
  static constexpr int ENGLISH = 0;
  static constexpr int FRENCH = 1000;
  static constexpr int SPANISH = 2000;
  static constexpr int ITALIAN = 3000;
  static constexpr int GERMAN = 4000;
  static constexpr int JAPANESE = 5000;
  static constexpr int KOREAN = 6000;
  static constexpr int TRADITIONAL_CHINESE = 7000;
  // Identifiers per language: the control's message numbers run from 0 to LANGUAGE_SPAN - 1.
  static constexpr int LANGUAGE_SPAN = 1000;
  // The command-line tool's texts: numbers CLI_FIRST..CLI_END - 1 in every language. The table keeps them
  // at CLI_TABLE_OFFSET + base + number, clear of the control's identifiers.
  static constexpr int CLI_FIRST = 2000;
  static constexpr int CLI_END = 3000;
  static constexpr int CLI_TABLE_OFFSET = 100000;

  // A number of the control's range or of the command line's.
  static bool IsMessageNumber(int number);
  // Where the table keeps message `number` of the language at `base`.
  static int TableId(int base, int number);

  // The text of `number` in the current language. A number that the current language lacks (Japanese
  // holds only 100-107 of the control's) yields the English text, so no dialog is ever blank; an unknown
  // number, or one outside both ranges, yields "".
  static std::string Load(int number);
  // The text of `number` in the language at `base`, with the same fallback to English.
  static std::string LoadIn(int base, int number);
  // The text stored under the absolute identifier (base + number), if any.
  static std::optional<std::string> Find(int id);

  static int LanguageBase();
  // Stores the base (process-wide); installing the help files is the language selection's job.
  static void SetLanguageBase(int base);
};

// An error whose source and description are catalogue messages in the current language.
ScopeError CatalogueError(std::int32_t code, int sourceMessage, int descriptionMessage);
// Error 380 over the object-error base: source message 104, description message 106.
ScopeError InvalidPropertyValue();

}  // namespace cvn73100
