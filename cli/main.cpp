#include <CLI/CLI.hpp>
#include <algorithm>
#include <exception>
#include <optional>
#include <string_view>
#include <unistd.h>

#include "cli/CliContext.h"
#include "cli/CliText.h"
#include "dialogs/Messages.h"
#include "cli/Completion.h"
#include "cli/SimulatorState.h"
#include "form/FormFile.h"
#include "iolib/IOLibrary.h"
#include "platform/Host.h"
#include "server/Cvn73100Server.h"
#include "simulator/Backend.h"

using namespace cvn73100;

namespace {

// CLI11's own words in the help, and the help flags every command inherits, in the run's language.
void SpeakTheRunLanguage(CLI::App& app) {
  const auto formatter = app.get_formatter();
  formatter->label("Usage", CliText(CliMsg::LABEL_USAGE));
  formatter->label("Positionals", CliText(CliMsg::LABEL_ARGUMENTS));
  formatter->label("REQUIRED", CliText(CliMsg::LABEL_REQUIRED));
  formatter->label("OPTIONS", CliText(CliMsg::LABEL_OPTIONS_BADGE));
  formatter->label("SUBCOMMAND", CliText(CliMsg::LABEL_COMMAND_BADGE));
  formatter->label("SUBCOMMANDS", CliText(CliMsg::LABEL_COMMAND_BADGE));
  formatter->label("Excludes", CliText(CliMsg::LABEL_EXCLUDES));
  formatter->label("Needs", CliText(CliMsg::LABEL_NEEDS));
  app.option_defaults()->group(CliText(CliMsg::LABEL_OPTIONS));
  app.group(CliText(CliMsg::LABEL_COMMANDS));
  app.set_help_flag("-h,--help", CliText(CliMsg::HELP_FLAG));
  app.set_help_all_flag("--help-all", CliText(CliMsg::HELP_ALL_FLAG));
  app.failure_message([](const CLI::App*, const CLI::Error& e) {
    return CliText(CliMsg::USAGE_ERROR, {e.what()}) + "\n" + CliText(CliMsg::MORE_INFORMATION) + "\n";
  });
}

// CLI11 gives every command's own help flags the group "Options", whatever the defaults say; they belong
// with the command's other options.
void GroupHelpFlags(CLI::App& app, const std::string& group) {
  for (CLI::App* command : app.get_subcommands([](CLI::App*) { return true; })) {
    for (const char* name : {"--help", "--help-all"})
      if (CLI::Option* flag = command->get_option_no_throw(name)) flag->group(group);
    GroupHelpFlags(*command, group);
  }
}

}  // namespace

int main(int argc, char** argv) {
  CliContext context;
  context.outIsTerminal = ::isatty(STDOUT_FILENO) != 0;
  try {
    context.formPath = FormFile::DefaultPath();
  } catch (const ScopeError&) {
    // No home folder: a command that needs the form says so when it opens it; --form may name one.
  }
  Messages::SetLanguageBase(RunLanguageBase(argc, argv, context.formPath));
  CLI::App app{CliText(CliMsg::APP_DESCRIPTION) + "\n" + CliText(CliMsg::APP_SIMULATED) + "\n" +
               CliText(CliMsg::APP_EXIT_STATUS)};
  app.name("cvnscope");
  SpeakTheRunLanguage(app);
  app.require_subcommand(1);
  app.fallthrough();  // global options may follow the command: cvnscope message 106 --country 49
  app.set_version_flag("--version", "cvnscope " CVN_VERSION, CliText(CliMsg::VERSION_FLAG));
  auto* form = app.add_option("--form", context.formPath, CliText(CliMsg::FORM_OPTION))->capture_default_str();
  app.add_flag("--json", context.json, CliText(CliMsg::JSON_OPTION));
  app.add_flag("--yes,-y", context.assumeYes, CliText(CliMsg::YES_OPTION));
  app.add_flag("--parents", context.parents, CliText(CliMsg::PARENTS_OPTION));
  app.add_flag("--progress", context.progress, CliText(CliMsg::PROGRESS_OPTION));
  app.add_option("--country", context.countryCode, CliText(CliMsg::COUNTRY_OPTION));

  RegisterBasicCommands(app, context);
  RegisterSearchCommands(app, context);
  RegisterInstrumentCommands(app, context);
  RegisterSetupCommands(app, context);
  RegisterConfigCommands(app, context);
  RegisterDemoCommand(app, context);
  RegisterDoctorCommand(app, context);
  auto* completion = app.add_subcommand("completion", CliText(CliMsg::COMPLETION_COMMAND));
  std::string shell;
  completion->add_option("SHELL", shell, CliText(CliMsg::SHELL_ARGUMENT))->required()->check(CLI::IsMember({"bash", "zsh", "fish"}));
  completion->callback([&] { context.out << CompletionScript(app, shell); });
  GroupHelpFlags(app, CliText(CliMsg::LABEL_OPTIONS));

  // The simulated instruments keep their settings between commands; the demo starts from its own.
  std::optional<SimulatorState> simulator;
  auto* sim = app.add_subcommand("sim", CliText(CliMsg::SIM_COMMAND));
  sim->require_subcommand(1);
  sim->add_subcommand("reset", CliText(CliMsg::SIM_RESET_COMMAND))
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
