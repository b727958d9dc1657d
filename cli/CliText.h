#pragma once
#include <initializer_list>
#include <string>

#include "cli/CliMessages.h"

namespace cvn73100 {

// The command line's text `number` (a CliMsg number) in the current language, with {1}, {2}... replaced
// by `args` in order. Translations may place the arguments in any order.
std::string CliText(int number, std::initializer_list<std::string> args = {});

// The catalogue language of this run, known before the command line is parsed so that the help speaks it
// too: --country when it names a language this computer can show, else the form's (--form, else
// `defaultForm`), else English. Reading the form here changes nothing, not even a damaged one.
int RunLanguageBase(int argc, const char* const* argv, const std::string& defaultForm);

}  // namespace cvn73100
