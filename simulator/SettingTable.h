#pragma once

#include <span>
#include <string>
#include <string_view>

#include "platform/ScpiMnemonics.h"
#include "simulator/MessageParser.h"
#include "simulator/ScopeState.h"

namespace cvn73100::sim {

// One allowed value of an enumerated setting: the number and, where there is one, its SCPI keyword
// ("CHANnel1" carries its numeric suffix in the keyword). A setting whose every value has a keyword takes
// character data only and answers the keyword's short form; the others take and answer numbers.
using Choice = scpi::Mnemonic;

enum class SettingKind { Bool, Enumerated, Number };

// A setting with a command and a query form. The one table of these drives the commands, the learn string
// and the validation of both, so a setting added here is settable, queryable and saved at once.
struct SettingDef {
  std::string_view header;  // ":CHANnel#:RANGe"; '#' marks the node that takes the numeric suffix
  SettingKind kind = SettingKind::Number;
  std::span<const Choice> choices{};
  double min = 0.0, max = 0.0;  // Number only
  int suffixMin = 0, suffixMax = 0;
  int* (*intField)(ScopeState&, int suffix) = nullptr;        // Bool and Choice
  double* (*numberField)(ScopeState&, int suffix) = nullptr;  // Number
};

class SettingTable {
 public:
  static std::span<const SettingDef> All();

  // Converts a command argument to the setting's value; returns 0 or the negative error number.
  static int Parse(const SettingDef& def, const Argument& arg, double& value);
  // True when `value` may be stored in the setting (used for learn strings too).
  static bool IsValid(const SettingDef& def, double value);
  static double Get(const SettingDef& def, const ScopeState& state, int suffix);
  static void Set(const SettingDef& def, ScopeState& state, int suffix, double value);
  // Appends the query reply for the setting's current value.
  static void AppendReply(const SettingDef& def, const ScopeState& state, int suffix, std::string& out);
  // True when every choice has a keyword: numbers are then the wrong data type.
  static bool IsMnemonicOnly(std::span<const Choice> choices);
  // Finds the choice an argument names (keyword or number); nullptr when none.
  static const Choice* FindChoice(std::span<const Choice> choices, const Argument& arg);
};

// Appends a real number in NR3 form, shortest text that reads back to the same value ("1E-03").
void AppendReal(std::string& out, double value);
void AppendInteger(std::string& out, long long value);

}  // namespace cvn73100::sim
