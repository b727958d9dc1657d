#include <CLI/CLI.hpp>
#include <algorithm>
#include <exception>
#include <optional>
#include <string_view>
#include <unistd.h>

#include "cli/CliContext.h"
#include "cli/Completion.h"
#include "cli/SimulatorState.h"
#include "form/FormFile.h"
#include "iolib/IOLibrary.h"
#include "platform/Host.h"
#include "server/Cvn73100Server.h"
#include "simulator/Backend.h"

using namespace cvn73100;

int main(int argc, char** argv) {
  CliContext context;
  context.outIsTerminal = ::isatty(STDOUT_FILENO) != 0;
  CLI::App app{"cvnscope: find, test and control 73100-family oscilloscopes over GPIB and RS-232.\n"
               "With no I/O configuration the built-in simulated instrument answers on GPIB0.\n"
               "Exit status: 0 done, 1 error, 2 usage, 3 cancelled at a question, 10+code for `test`."};
  app.name("cvnscope");
  app.require_subcommand(1);
  app.fallthrough();  // global options may follow the command: cvnscope message 106 --country 49
  app.set_help_all_flag("--help-all", "Show the help of every command");
  app.set_version_flag("--version", "cvnscope " CVN_VERSION);
  try {
    context.formPath = FormFile::DefaultPath();
  } catch (const ScopeError&) {
    // No home folder: a command that needs the form says so when it opens it; --form may name one.
  }
  auto* form = app.add_option("--form", context.formPath, "The form file that keeps the control's properties")
                   ->capture_default_str();
  app.add_flag("--json", context.json, "Print results as JSON for scripts");
  app.add_flag("--yes,-y", context.assumeYes, "Answer OK to every question");
  app.add_flag("--parents", context.parents, "Create the missing folders of output files");
  app.add_flag("--progress", context.progress, "Draw progress even when standard error is not a terminal");
  app.add_option("--country", context.countryCode,
                 "Language of this run's messages by country code (1, 33, 34, 39, 49, 81, 82, 886); "
                 "`config set --language` changes the form's");

  RegisterBasicCommands(app, context);
  RegisterSearchCommands(app, context);
  RegisterInstrumentCommands(app, context);
  RegisterSetupCommands(app, context);
  RegisterConfigCommands(app, context);
  RegisterDemoCommand(app, context);
  RegisterDoctorCommand(app, context);
  auto* completion = app.add_subcommand("completion", "Print a completion script for bash, zsh or fish");
  std::string shell;
  completion->add_option("SHELL", shell, "bash, zsh or fish")->required()->check(CLI::IsMember({"bash", "zsh", "fish"}));
  completion->callback([&] { context.out << CompletionScript(app, shell); });

  // The simulated instruments keep their settings between commands; the demo starts from its own.
  std::optional<SimulatorState> simulator;
  auto* sim = app.add_subcommand("sim", "The built-in simulated instruments");
  sim->require_subcommand(1);
  sim->add_subcommand("reset", "Forget the settings the simulated instruments kept: they start afresh")
      ->callback([&] {
        simulator->Reset();
        simulator.reset();
      });

  // The control's separate components: the I/O library with the simulated instruments as one of its backends,
  // and the automation server of the 73100 family.
  io::RegisterIOLibrary();
  sim::RegisterBackend();
  server::RegisterAutomationServer();
  Host::SetCurrent(&context.host);
  app.parse_complete_callback([&] {
    context.host.SetAssumeYes(context.assumeYes);
    context.host.SetJson(context.json);
    context.formGiven = form->count() > 0;
    if (!app.got_subcommand("demo") && !context.formPath.empty()) {
      simulator.emplace(context.formPath);
      simulator->Load();
    }
  });
  int status = ExitStatus::OK;
  try {
    app.parse(argc, argv);
    status = context.exitStatus;
  } catch (const CLI::ParseError& e) {
    // --json may not have been taken yet when the command line is wrong.
    const bool json = context.json || std::find(argv + 1, argv + argc, std::string_view("--json")) != argv + argc;
    if (json && e.get_exit_code() != 0) {
      context.out << "{\"error\": {\"usage\": " << JsonString(e.what()) << "}}\n";
      status = ExitStatus::USAGE;
    } else {
      status = app.exit(e) == 0 ? ExitStatus::OK : ExitStatus::USAGE;
    }
  } catch (const ScopeError& error) {
    status = ReportError(context, error);
  } catch (const std::exception& error) {
    status = ReportError(context, ScopeError(ERR_INVALID_PROCEDURE_CALL, CLI_SOURCE, error.what()));
  }
  if (simulator) simulator->Save();
  Host::SetCurrent(nullptr);
  return status;
}
