#include <CLI/CLI.hpp>
#include <filesystem>
#include <fstream>
#include <memory>
#include <nlohmann/json.hpp>

#include "cli/CliContext.h"
#include "cli/CliText.h"
#include "cli/ConsoleSetupsView.h"
#include "cli/JsonText.h"
#include "cli/OutputFile.h"
#include "cli/TextWidth.h"
#include "cli/ScopeSession.h"
#include "control/Cvn73100Scope.h"
#include "dialogs/Messages.h"
#include "setups/CSetupFile.h"
#include "setups/CWrenfoldFile.h"
#include "setups/Cvn73100PPSetup.h"
#include "setups/SetupCvn73100Scope.h"
#include "setups/SetupsCvn73100Scope.h"

namespace cvn73100 {
namespace {

using nlohmann::json;

// Titles of the boxes in which the Setups page and its form report a failure.
constexpr int MSG_CONTROL_ERROR = 105;
constexpr int MSG_SETUPS_ERROR = 650;
constexpr int MSG_NAME_FORMAT_TITLE = 715;
constexpr int MSG_COMMENT_FORMAT_TITLE = 717;
constexpr std::int32_t FILE_NOT_FOUND = 53;

std::string Absolute(const std::string& path) { return std::filesystem::absolute(path).lexically_normal().string(); }

std::size_t LearnStringLength(const SetupCvn73100Scope& setup) {
  const auto learnString = setup.LearnString();
  return learnString ? learnString->size() : 0;
}

json SetupJson(const SetupCvn73100Scope& setup) {
  return json{{"name", setup.Name()},
              {"comments", setup.Comments()},
              {"model", setup.Model()},
              {"version", setup.Version()},
              {"bytes", LearnStringLength(setup)},
              {"empty", !setup.LearnString().has_value()}};
}

// One setup command: the control from the form, and the Setups page bound to it on a console view. The
// page reports failures in message boxes; the command turns them into its exit status.
class SetupsCommand {
 public:
  explicit SetupsCommand(CliContext& context) : m_context(context), m_session(context), m_page(m_view) {
    ConsoleHost& host = context.host;
    host.SetErrorTitles({Messages::Load(MSG_CONTROL_ERROR), Messages::Load(MSG_SETUPS_ERROR),
                         Messages::Load(MSG_NAME_FORMAT_TITLE), Messages::Load(MSG_COMMENT_FORMAT_TITLE)});
    host.SetQuiet(context.json);
    host.ClearRecord();
    BindSetupsPage(m_page, m_session.Control());
  }
  ~SetupsCommand() { m_page.PropertyPage_Terminate(); }

  ScopeSession& Session() { return m_session; }
  Cvn73100PPSetup& Page() { return m_page; }
  ConsoleSetupsView& View() { return m_view; }

  // Selects the row of setup `name`; an unknown name is an error.
  void Select(const std::string& name) {
    const int row = m_view.RowOf(name);
    if (row < 0)
      throw ScopeError(ERR_INVALID_PROCEDURE_CALL, CLI_SOURCE, CliText(CliMsg::NO_SUCH_SETUP, {name}));
    m_page.ListViewSetup_Click(row);
  }

  // After a page action: false (and the exit status set) when the page showed an error or a question was
  // answered Cancel.
  bool Succeeded() {
    const ConsoleHost& host = m_context.host;
    if (host.ErrorShown()) {
      m_context.exitStatus = ExitStatus::ERROR;
      if (m_context.json) {
        for (const auto& box : host.Boxes()) {
          if (!box.error) continue;
          m_context.out << json{{"error",
                                 {{"source", ConsoleHost::ToTerminal(box.title)},
                                  {"description", ConsoleHost::ToTerminal(box.prompt)}}}}
                               .dump(-1, ' ', false, kReplaceInvalidUtf8)
                        << "\n";
          break;
        }
      }
      return false;
    }
    if (host.Cancelled() > 0) {
      m_context.exitStatus = ExitStatus::CANCELLED;
      if (m_context.json) m_context.out << json{{"cancelled", true}}.dump(-1, ' ', false, kReplaceInvalidUtf8) << "\n";
      return false;
    }
    return true;
  }

  // Apply: the page's working copy becomes the control's setups; the form is saved.
  void Apply() {
    m_page.PropertyPage_ApplyChanges();
    m_session.Finish();
  }

  std::shared_ptr<SetupCvn73100Scope> Setup(const std::string& name) { return m_page.WorkingSetups()->item(name); }

  // `action` goes into JSON as it is; `actionText` (a CliMsg number) says it in the run's language.
  void Report(const std::string& action, int actionText, const SetupCvn73100Scope& setup, const std::string& file = "") {
    if (m_context.json) {
      json result = SetupJson(setup);
      result["action"] = action;
      if (!file.empty()) result["file"] = file;
      m_context.out << result.dump(-1, ' ', false, kReplaceInvalidUtf8) << "\n";
      return;
    }
    m_context.out << CliText(actionText, {setup.Name()});
    if (!file.empty()) m_context.out << ": " << file;
    const std::string data = setup.LearnString() ? CliText(CliMsg::N_BYTES, {std::to_string(LearnStringLength(setup))})
                                                 : CliText(CliMsg::NO_SETUP_DATA);
    m_context.out << "\n  "
                  << CliText(CliMsg::SETUP_SUMMARY, {setup.Model().empty() ? "-" : setup.Model(),
                                                     setup.Version().empty() ? "-" : setup.Version(), data})
                  << "\n";
  }

 private:
  CliContext& m_context;
  ScopeSession m_session;
  ConsoleSetupsView m_view;
  Cvn73100PPSetup m_page;
};

void RegisterGet(CLI::App& setup, CliContext& context) {
  struct Options {
    std::string name;
    std::string comments;
  };
  auto options = std::make_shared<Options>();
  auto* get = setup.add_subcommand("get", CliText(CliMsg::SETUP_GET_COMMAND));
  get->add_option("NAME", options->name, CliText(CliMsg::SETUP_NAME_ARGUMENT))->required();
  get->add_option("--comments", options->comments, CliText(CliMsg::SETUP_COMMENTS_OPTION));
  get->callback([&context, options] {
    SetupsCommand command(context);
    command.Session().Connect();
    if (command.View().RowOf(options->name) < 0) {
      command.View().PrepareForm(options->name, options->comments, true);
      command.Page().CommandAdd_Click();
    } else {
      command.Select(options->name);
      command.Page().CommandGetFromInstrument_Click();
    }
    if (!command.Succeeded()) return;
    command.Apply();
    command.Report("Fetched", CliMsg::SETUP_FETCHED, *command.Setup(options->name));
  });
}

void RegisterSend(CLI::App& setup, CliContext& context) {
  auto name = std::make_shared<std::string>();
  auto* send = setup.add_subcommand("send", CliText(CliMsg::SETUP_SEND_COMMAND));
  send->add_option("NAME", *name, CliText(CliMsg::SETUP_NAME))->required();
  send->callback([&context, name] {
    SetupsCommand command(context);
    command.Select(*name);
    command.Session().Connect();
    command.Page().CommandSendToInstrument_Click();
    if (!command.Succeeded()) return;
    command.Apply();
    command.Report("Sent", CliMsg::SETUP_SENT, *command.Setup(*name));
  });
}

void RegisterSave(CLI::App& setup, CliContext& context) {
  struct Options {
    std::string name;
    std::string file;
  };
  auto options = std::make_shared<Options>();
  auto* save = setup.add_subcommand("save", CliText(CliMsg::SETUP_SAVE_COMMAND));
  save->add_option("NAME", options->name, CliText(CliMsg::SETUP_NAME))->required();
  save->add_option("FILE", options->file, CliText(CliMsg::SETUP_SAVE_FILE_ARGUMENT))->required();
  save->callback([&context, options] {
    const bool toStdout = IsStandardStream(options->file);
    PrepareOutputFolder(context, options->file, CliText(CliMsg::WHAT_SETUP_FILE));
    const ScratchFolder scratch;
    const std::string file = toStdout ? scratch.PathOf(options->name + Cvn73100PPSetup::DEFAULT_EXTENSION) : options->file;
    SetupsCommand command(context);
    command.Select(options->name);
    context.host.SetFileAnswer(file);
    command.Page().CommandSendToFile_Click();
    if (!command.Succeeded()) return;
    command.Apply();
    if (toStdout) {
      std::ifstream saved(file, std::ios::binary);
      context.out << saved.rdbuf() << std::flush;
      return;
    }
    std::filesystem::path path = Absolute(file);
    if (!path.has_extension()) path += Cvn73100PPSetup::DEFAULT_EXTENSION;
    command.Report("Saved", CliMsg::SETUP_SAVED, *command.Setup(options->name), path.string());
  });
}

void RegisterOpen(CLI::App& setup, CliContext& context) {
  struct Options {
    std::string file;
    std::string name;
  };
  auto options = std::make_shared<Options>();
  auto* open = setup.add_subcommand("open", CliText(CliMsg::SETUP_OPEN_COMMAND));
  open->add_option("FILE", options->file, CliText(CliMsg::SETUP_OPEN_FILE_ARGUMENT))->required();
  open->add_option("NAME", options->name, CliText(CliMsg::SETUP_OPEN_NAME_ARGUMENT));
  open->callback([&context, options] {
    const ScratchFolder scratch;
    std::string file = options->file;
    const std::string& name = options->name;
    if (name.find('/') != std::string::npos) throw CLI::ValidationError("NAME", CliText(CliMsg::NAME_HOLDS_NO_SLASH));
    if (IsStandardStream(file)) {
      if (name.empty()) throw CLI::ValidationError("NAME", CliText(CliMsg::STDIN_NEEDS_NAME));
      file = scratch.FromStandardInput(name + Cvn73100PPSetup::DEFAULT_EXTENSION);
    }
    std::error_code ec;
    if (!std::filesystem::is_regular_file(file, ec))
      throw ScopeError(FILE_NOT_FOUND, CLI_SOURCE, CliText(CliMsg::FILE_NOT_FOUND, {Absolute(file)}));
    // The page names a setup after its file: under another NAME, a copy of that name is opened, so that
    // the setup named after the original file is never touched.
    if (!name.empty() && std::filesystem::path(file).stem() != name) {
      const std::string copy = scratch.PathOf(name + std::filesystem::path(file).extension().string());
      std::filesystem::copy_file(file, copy, std::filesystem::copy_options::overwrite_existing);
      file = copy;
    }
    SetupsCommand command(context);
    context.host.SetFileAnswer(file);
    command.Page().CommandGetFromFile_Click();
    if (!command.Succeeded()) return;
    command.Apply();
    const std::string opened = std::filesystem::path(file).stem().string();
    command.Report("Opened", CliMsg::SETUP_OPENED, *command.Setup(opened), IsStandardStream(options->file) ? "-" : Absolute(options->file));
  });
}

void RegisterShow(CLI::App& setup, CliContext& context) {
  auto fileOption = std::make_shared<std::string>();
  auto* show = setup.add_subcommand("show", CliText(CliMsg::SETUP_SHOW_COMMAND));
  show->add_option("FILE", *fileOption, CliText(CliMsg::SETUP_SHOW_FILE_ARGUMENT))->required();
  show->callback([&context, fileOption] {
    ScopeSession session(context);
    const ScratchFolder scratch;
    const auto file = std::make_shared<std::string>(
        IsStandardStream(*fileOption) ? scratch.FromStandardInput("standard-input") : *fileOption);
    const std::string shownPath = IsStandardStream(*fileOption) ? "-" : Absolute(*file);
    std::error_code ec;
    if (!std::filesystem::is_regular_file(*file, ec))
      throw ScopeError(FILE_NOT_FOUND, CLI_SOURCE, CliText(CliMsg::FILE_NOT_FOUND, {Absolute(*file)}));
    SetupCvn73100Scope read;
    read.ReadFromFile(*file);
    // ReadFromFile took the first format that recognised the file, the native one first.
    const bool native = CSetupFile().IsACompatibleFile(*file);
    const std::string format = native ? "scp" : "stp";
    const std::string formatName = CliText(native ? CliMsg::FORMAT_NATIVE : CliMsg::FORMAT_WRENFOLD);
    if (context.json) {
      context.out << json{{"file", shownPath},
                          {"format", format},
                          {"model", read.Model()},
                          {"version", read.Version()},
                          {"comments", read.Comments()},
                          {"bytes", LearnStringLength(read)},
                          {"empty", !read.LearnString().has_value()}}
                         .dump(-1, ' ', false, kReplaceInvalidUtf8)
                  << "\n";
      return;
    }
    PrintFields(context.out,
                {{CliText(CliMsg::FIELD_FILE), shownPath},
                 {CliText(CliMsg::FIELD_FORMAT), formatName},
                 {CliText(CliMsg::FIELD_MODEL), ConsoleHost::ToTerminal(read.Model())},
                 {CliText(CliMsg::FIELD_VERSION), read.Version()},
                 {CliText(CliMsg::FIELD_COMMENTS), ConsoleHost::ToTerminal(read.Comments())},
                 {CliText(CliMsg::FIELD_DATA_LENGTH),
                  read.LearnString() ? CliText(CliMsg::N_BYTES, {std::to_string(LearnStringLength(read))})
                                     : CliText(CliMsg::NO_BYTES_EMPTY)}});
  });
}

void RegisterList(CLI::App& setup, CliContext& context) {
  auto* list = setup.add_subcommand("list", CliText(CliMsg::SETUP_LIST_COMMAND));
  list->callback([&context] {
    SetupsCommand command(context);
    const auto& rows = command.View().Rows();
    if (context.json) {
      json setups = json::array();
      for (const auto& row : rows) {
        json entry = SetupJson(*command.Setup(row.name));
        entry["current"] = row.icon == Cvn73100PPSetup::CURRENT_SETUP_ICON;
        setups.push_back(entry);
      }
      context.out << json{{"setups", setups}}.dump(-1, ' ', false, kReplaceInvalidUtf8) << "\n";
      return;
    }
    const SetupsPageCaptions captions = SetupsPageCaptions::Load();
    if (rows.empty()) {
      context.out << CliText(CliMsg::NO_SETUPS) << "\n";
      return;
    }
    TextTable table;
    table.Add({"  " + captions.nameColumn, Messages::Load(201), CliText(CliMsg::FIELD_VERSION),
               CliText(CliMsg::COLUMN_BYTES), captions.commentsColumn});
    for (const auto& row : rows) {
      const auto item = command.Setup(row.name);
      table.Add({(row.icon == Cvn73100PPSetup::CURRENT_SETUP_ICON ? "* " : "  ") + row.name, item->Model(), item->Version(),
                 item->LearnString() ? std::to_string(LearnStringLength(*item)) : std::string("-"), row.comments});
    }
    table.Print(context.out);
  });
}

void RegisterRemove(CLI::App& setup, CliContext& context) {
  auto name = std::make_shared<std::string>();
  auto* remove = setup.add_subcommand("remove", CliText(CliMsg::SETUP_REMOVE_COMMAND));
  remove->add_option("NAME", *name, CliText(CliMsg::SETUP_NAME))->required();
  remove->callback([&context, name] {
    SetupsCommand command(context);
    command.Select(*name);
    command.Page().CommandRemove_Click();
    if (!command.Succeeded()) return;
    command.Apply();
    if (context.json)
      context.out << json{{"removed", *name}}.dump(-1, ' ', false, kReplaceInvalidUtf8) << "\n";
    else
      context.out << CliText(CliMsg::SETUP_REMOVED, {*name}) << "\n";
  });
}

}  // namespace

void RegisterSetupCommands(CLI::App& app, CliContext& context) {
  auto* setup = app.add_subcommand("setup", CliText(CliMsg::SETUP_COMMAND));
  setup->require_subcommand(1);
  RegisterGet(*setup, context);
  RegisterSend(*setup, context);
  RegisterSave(*setup, context);
  RegisterOpen(*setup, context);
  RegisterShow(*setup, context);
  RegisterList(*setup, context);
  RegisterRemove(*setup, context);
}

}  // namespace cvn73100
