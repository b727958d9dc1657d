#pragma once
#include <functional>
#include <iostream>
#include <string>

#include "cli/ConsoleHost.h"
#include "platform/ScopeError.h"

namespace CLI {
class App;
}

namespace cvn73100 {

// cvnscope's exit statuses.
namespace ExitStatus {
inline constexpr int OK = 0;
// A ScopeError (printed as number, source and description), or an error box of a page.
inline constexpr int ERROR = 1;
// The command line itself was wrong.
inline constexpr int USAGE = 2;
// A question was answered Cancel (at the prompt, or for want of a terminal without --yes): nothing done.
inline constexpr int CANCELLED = 3;
// `test`: TEST_BASE + the identification result code, for codes 1..5 (code 0 gives OK).
inline constexpr int TEST_BASE = 10;
}  // namespace ExitStatus

// What every cvnscope command shares: the global options, the console host and the output streams.
struct CliContext {
  std::string formPath;
  bool formGiven = false;  // --form was on the command line
  bool json = false;
  bool assumeYes = false;
  int countryCode = 0;  // 0: the form's language
  int exitStatus = ExitStatus::OK;
  bool outIsTerminal = false;
  bool parents = false;   // --parents: output folders that are missing are created
  bool progress = false;  // --progress: progress is drawn even when standard error is not a terminal  // standard
                          // output is a terminal: instrument replies are made safe to show
  std::ostream& out = std::cout;
  std::ostream& err = std::cerr;
  ConsoleHost host{out, err};
};

// Each command group registers its subcommands on the application.
using CommandRegistrar = std::function<void(CLI::App& app, CliContext& context)>;

void RegisterBasicCommands(CLI::App& app, CliContext& context);
void RegisterSearchCommands(CLI::App& app, CliContext& context);
void RegisterInstrumentCommands(CLI::App& app, CliContext& context);
void RegisterSetupCommands(CLI::App& app, CliContext& context);
void RegisterConfigCommands(CLI::App& app, CliContext& context);
void RegisterDemoCommand(CLI::App& app, CliContext& context);
void RegisterDoctorCommand(CLI::App& app, CliContext& context);

// An instrument's reply as `out` should carry it: raw into a pipe or file, made safe on a terminal.
std::string Reply(const CliContext& context, const std::string& text);

// Runs `change`; a property error it raises comes back naming the option, the value given and what is allowed.
void NamingTheProperty(const std::string& option, const std::string& value, const std::string& allowed,
                       const std::function<void()>& change);

// Prints an error as number, source and description (or as JSON) and gives the exit status.
int ReportError(CliContext& context, const ScopeError& error);

// Quotes a text for JSON output.
std::string JsonString(const std::string& text);

// The window handle the console front ends give the pages: the terminal stands for the page window.
inline constexpr WindowHandle CONSOLE_WINDOW = 1;

// Source text of the errors cvnscope raises itself.
inline constexpr const char* CLI_SOURCE = "cvnscope";

}  // namespace cvn73100
