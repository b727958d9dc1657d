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

// What every cvnscope command shares: the global options, the console host and the output streams.
struct CliContext {
  std::string formPath;
  bool json = false;
  bool assumeYes = false;
  int countryCode = 0;  // 0: the form's language
  std::ostream& out = std::cout;
  std::ostream& err = std::cerr;
  ConsoleHost host{out, err};
};

// Each command group registers its subcommands on the application.
using CommandRegistrar = std::function<void(CLI::App& app, CliContext& context)>;

void RegisterBasicCommands(CLI::App& app, CliContext& context);

// Prints an error as number, source and description (or as JSON) and gives the exit status.
int ReportError(CliContext& context, const ScopeError& error);

// Quotes a text for JSON output.
std::string JsonString(const std::string& text);

}  // namespace cvn73100
