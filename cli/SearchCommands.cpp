#include <CLI/CLI.hpp>
#include <algorithm>
#include <cctype>
#include <memory>
#include <nlohmann/json.hpp>

#include "cli/CliContext.h"
#include "cli/CliText.h"
#include "cli/ConsoleSearchView.h"
#include "cli/JsonText.h"
#include "cli/ScopeSession.h"
#include "cli/SearchResultsFile.h"
#include "cli/StopOnSignal.h"
#include "control/Cvn73100Scope.h"
#include "connection/CQueryInstrument.h"
#include "discovery/Cvn73100PPSrchIO.h"
#include "ioconfig/CIOconfiguration.h"
#include "iolib/IOManager.h"

namespace cvn73100 {
namespace {

using nlohmann::json;

json BoxesJson(const ConsoleHost& host) {
  json boxes = json::array();
  for (const auto& box : host.Boxes())
    boxes.push_back(json{{"title", ConsoleHost::ToTerminal(box.title)}, {"text", ConsoleHost::ToTerminal(box.prompt)}});
  return boxes;
}

json RowJson(const TableRow& entry) {
  return json{{"row", entry.number},
              {"model", entry.row.model},
              {"supported", !entry.row.supported.empty()},
              {"address", entry.row.address},
              {"fullAddress", entry.fullAddress},
              {"manufacturer", entry.row.manufacturer},
              {"reply", entry.row.reply},
              {"connected", entry.row.icon == Cvn73100PPSrchIO::CONNECTED_INSTRUMENT_ICON}};
}

bool IsRowNumber(const std::string& text) {
  return !text.empty() && text.size() <= 6 &&
         std::all_of(text.begin(), text.end(), [](unsigned char c) { return std::isdigit(c) != 0; });
}

void RegisterResources(CLI::App& app, CliContext& context) {
  auto pattern = std::make_shared<std::string>("?*");
  auto* resources = app.add_subcommand("resources", CliText(CliMsg::RESOURCES_COMMAND));
  resources->add_option("PATTERN", *pattern, "COM*, COM3, GPIB*, GPIB0, GPIB0::?*::INSTR ...")->capture_default_str();
  resources->callback([&context, pattern] {
    const auto manager = io::IOManager::FromEnvironment();
    const std::vector<std::string> names = manager->FindResources(*pattern);
    const bool embedded = manager->UsingEmbeddedDefault();
    if (context.json) {
      context.out << json{{"embeddedDefault", embedded},
                          {"configFile", manager->Map().ConfigPath()},
                          {"boardMap", manager->DescribeBoardMap()},
                          {"resources", names}}
                         .dump(-1, ' ', false, kReplaceInvalidUtf8)
                  << "\n";
      return;
    }
    // The description says where the map came from and when the embedded simulated bus answers.
    const std::string map = manager->DescribeBoardMap();
    context.out << map << (!map.empty() && map.back() != '\n' ? "\n" : "");
    context.out << "\n" << CliText(CliMsg::RESOURCES_MATCHING, {*pattern}) << "\n";
    if (names.empty()) context.out << "  " << CliText(CliMsg::NONE_FOUND) << "\n";
    for (const auto& name : names) context.out << "  " << name << "\n";
  });
}

void RegisterTest(CLI::App& app, CliContext& context) {
  auto address = std::make_shared<std::string>();
  auto* test =
      app.add_subcommand("test", CliText(CliMsg::TEST_COMMAND) + "\n" + CliText(CliMsg::TEST_EXIT_STATUS));
  test->add_option("ADDRESS", *address, "GPIB0::7::INSTR, COM1, COM2::Baud=19200,Handshake=DTR_DSR ...")->required();
  test->callback([&context, address] {
    ScopeSession session(context);
    Cvn73100Scope& control = session.Control();
    // A copy of the control's I/O configuration: the address's keywords set its port's line settings for
    // this test only.
    const auto configuration = control.IOConfigurationPropertyPage();
    NamingTheProperty("ADDRESS", *address, CliText(CliMsg::ALLOWED_ADDRESS),
                      [&] { configuration->SetActiveAddressString(*address); });
    CQueryInstrument query;
    query.Initialize(control.TXDelay(), configuration, control.IOManager());
    context.host.SetQuiet(context.json);
    context.host.ClearRecord();
    std::string reply;
    const std::int16_t code = query.Test(CONSOLE_WINDOW, configuration->ActiveAddressString(), reply);
    if (context.json) {
      const auto& boxes = context.host.Boxes();
      context.out << json{{"address", configuration->ActiveAddressString()},
                          {"code", code},
                          {"reply", reply},
                          {"title", boxes.empty() ? "" : ConsoleHost::ToTerminal(boxes.back().title)},
                          {"message", boxes.empty() ? "" : ConsoleHost::ToTerminal(boxes.back().prompt)}}
                         .dump(-1, ' ', false, kReplaceInvalidUtf8)
                  << "\n";
    }
    context.exitStatus = code == IDNSupported ? ExitStatus::OK : ExitStatus::TEST_BASE + code;
  });
}

void RegisterSearch(CLI::App& app, CliContext& context) {
  struct Options {
    bool excludeSilent = false;
    bool keepSilent = false;
    bool all = false;
    bool parallel = false;
  };
  auto options = std::make_shared<Options>();
  auto* search = app.add_subcommand("search", CliText(CliMsg::SEARCH_COMMAND));
  auto* exclude =
      search->add_flag("--exclude-silent", options->excludeSilent, CliText(CliMsg::EXCLUDE_SILENT_FLAG));
  auto* keep = search->add_flag("--keep-silent", options->keepSilent, CliText(CliMsg::KEEP_SILENT_FLAG));
  exclude->excludes(keep);
  search->add_flag("--all", options->all, CliText(CliMsg::ALL_FLAG));
  search->add_flag("--parallel", options->parallel, CliText(CliMsg::PARALLEL_FLAG));
  search->callback([&context, options] {
    ScopeSession session(context);
    Cvn73100Scope& control = session.Control();
    const auto silent = options->excludeSilent ? ConsoleSearchView::SilentPorts::Exclude
                        : options->keepSilent  ? ConsoleSearchView::SilentPorts::Keep
                                               : ConsoleSearchView::SilentPorts::Ask;
    ConsoleSearchView view(context, silent);
    context.host.SetQuiet(context.json);
    context.host.ClearRecord();
    Cvn73100PPSrchIO page(view);
    page.SetParallelSearch(options->parallel);
    try {
      const StopOnSignal stopOnSignal;
      RunSearch(page, control);
    } catch (const Interrupted&) {
      // Stopped: the rows so far are shown; nothing reaches the form or the table `use` reads.
      page.PropertyPage_Terminate();
      const std::vector<TableRow> table = TableRows(page.Rows(), options->all);
      if (context.json) {
        json rows = json::array();
        for (const auto& entry : table) rows.push_back(RowJson(entry));
        context.out << json{{"rows", rows}, {"stopped", true}}.dump(-1, ' ', false, kReplaceInvalidUtf8) << "\n";
      } else {
        PrintSearchTable(context.out, table, 0, true);
        context.err << CliText(CliMsg::SEARCH_STOPPED) << "\n";
      }
      context.exitStatus = 128 + (StopOnSignal::Received() != 0 ? StopOnSignal::Received() : SIGINT);
      return;
    }
    // As OK on the property frame: the ports found and the exclusions go to the control; the address stays
    // unless this is the control's first search (`use` changes it).
    page.PropertyPage_ApplyChanges();
    page.PropertyPage_Terminate();

    const std::vector<TableRow> table = TableRows(page.Rows(), options->all);
    SearchResultsFile(session.FormPath()).Save(table);
    std::vector<std::string> silentAddresses;
    for (const auto& row : page.Rows())
      if (row.reply.empty()) silentAddresses.push_back(row.address);

    if (context.json) {
      json rows = json::array();
      for (const auto& entry : table) rows.push_back(RowJson(entry));
      context.out << json{{"rows", rows},
                          {"silent", silentAddresses},
                          {"message", ConsoleHost::ToTerminal(view.Message())},
                          {"excludedPorts", view.ExcludedPorts()},
                          {"address", control.Address()},
                          {"boxes", BoxesJson(context.host)}}
                         .dump(-1, ' ', false, kReplaceInvalidUtf8)
                  << "\n";
    } else {
      context.out << ConsoleHost::ToTerminal(Cvn73100PPSrchIO::PageCaption()) << "\n";
      PrintSearchTable(context.out, table, options->all ? 0 : silentAddresses.size(), options->all);
      if (!view.Message().empty()) context.out << ConsoleHost::ToTerminal(view.Message()) << "\n";
    }
    session.Finish();
  });
}

void RegisterUse(CLI::App& app, CliContext& context) {
  auto target = std::make_shared<std::string>();
  auto* use = app.add_subcommand("use", CliText(CliMsg::USE_COMMAND));
  use->add_option("ROW|ADDRESS", *target, CliText(CliMsg::USE_TARGET_ARGUMENT))->required();
  use->callback([&context, target] {
    ScopeSession session(context);
    Cvn73100Scope& control = session.Control();
    const std::string addressBefore = control.Address();
    const std::vector<TableRow> table = SearchResultsFile(session.FormPath()).Load();

    const TableRow* chosen = nullptr;
    std::string address;
    if (IsRowNumber(*target)) {
      const long number = std::stol(*target);
      if (table.empty())
        throw ScopeError(ERR_SUBSCRIPT_OUT_OF_RANGE, CLI_SOURCE, CliText(CliMsg::NO_SEARCH_RESULTS));
      if (number < 1 || number > static_cast<long>(table.size()))
        throw ScopeError(ERR_SUBSCRIPT_OUT_OF_RANGE, CLI_SOURCE,
                         CliText(CliMsg::ROW_NOT_IN_TABLE, {*target, std::to_string(table.size())}));
      chosen = &table[static_cast<std::size_t>(number - 1)];
      address = chosen->fullAddress;
    } else {
      CIOconfiguration parsed;
      NamingTheProperty("ADDRESS", *target, CliText(CliMsg::ALLOWED_USE_TARGET),
                        [&] { parsed.SetActiveAddressString(*target); });
      address = parsed.ActivePortIsGPIB() ? parsed.ActiveAddressString() : parsed.ActiveIOPort();
      for (const auto& entry : table)
        if (entry.fullAddress == address) chosen = &entry;
      // A serial address brings its line settings: they become its port's settings before the page binds.
      if (!parsed.ActivePortIsGPIB()) control.SetAddress(parsed.ActiveAddressString());
    }

    ConsoleSearchView view(context, ConsoleSearchView::SilentPorts::Keep);
    context.host.SetQuiet(context.json);
    context.host.ClearRecord();
    Cvn73100PPSrchIO page(view);
    page.PropertyPage_SelectionChanged(&control);
    page.TimerInstrumentDiscovery_Timer();
    page.AddInstrumentToList(chosen ? chosen->row.reply : std::string(), address, -1);
    page.ListViewInstruments_ItemClick(1);
    if (!chosen) page.Test_Click();
    page.PropertyPage_ApplyChanges();
    page.PropertyPage_Terminate();
    // A question answered Cancel (at the prompt, or for want of a terminal) leaves the form as it was.
    if (context.host.Cancelled() > 0) {
      context.exitStatus = ExitStatus::CANCELLED;
      if (context.json) context.out << json{{"cancelled", true}}.dump(-1, ' ', false, kReplaceInvalidUtf8) << "\n";
      else context.err << CliText(CliMsg::CANCELLED_ADDRESS_STAYS, {addressBefore}) << "\n";
      return;
    }

    if (context.json) {
      context.out << json{{"address", control.Address()},
                          {"identity", control.AddressInstrumentID()},
                          {"boxes", BoxesJson(context.host)}}
                         .dump(-1, ' ', false, kReplaceInvalidUtf8)
                  << "\n";
    } else {
      context.out << CliText(CliMsg::FIELD_ADDRESS) << ": " << control.Address() << "\n";
      if (!control.AddressInstrumentID().empty())
        context.out << CliText(CliMsg::FIELD_INSTRUMENT) << ": " << Reply(context, control.AddressInstrumentID()) << "\n";
    }
    session.Finish();
  });
}

}  // namespace

void RegisterSearchCommands(CLI::App& app, CliContext& context) {
  RegisterResources(app, context);
  RegisterTest(app, context);
  RegisterSearch(app, context);
  RegisterUse(app, context);
}

}  // namespace cvn73100
