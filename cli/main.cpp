#include <CLI/CLI.hpp>

#include "cli/CliContext.h"
#include "cli/FormFile.h"
#include "platform/Host.h"

using namespace cvn73100;

int main(int argc, char** argv) {
  CliContext context;
  CLI::App app{"cvnscope: find, test and control 73100-family oscilloscopes over GPIB and RS-232.\n"
               "With no I/O configuration the built-in simulated instrument answers on GPIB0."};
  app.require_subcommand(1);
  app.fallthrough();  // global options may follow the command: cvnscope message 106 --country 49
  app.set_help_all_flag("--help-all", "Show the help of every command");
  context.formPath = FormFile::DefaultPath();
  app.add_option("--form", context.formPath, "The form file that keeps the control's properties")
      ->capture_default_str();
  app.add_flag("--json", context.json, "Print results as JSON for scripts");
  app.add_flag("--yes,-y", context.assumeYes, "Answer OK to every question");
  app.add_option("--country", context.countryCode, "Language of the messages by country code (1, 33, 34, 39, 49, 81, 82, 886)");

  RegisterBasicCommands(app, context);

  Host::SetCurrent(&context.host);
  app.parse_complete_callback([&] { context.host.SetAssumeYes(context.assumeYes); });
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& e) {
    return app.exit(e);
  } catch (const ScopeError& error) {
    return ReportError(context, error);
  }
  return 0;
}
