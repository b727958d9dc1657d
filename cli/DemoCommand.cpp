#include <CLI/CLI.hpp>
#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>

#include "cli/AtomicFile.h"
#include "cli/Capture.h"
#include "cli/CliContext.h"
#include "cli/CliText.h"
#include "cli/ConsoleSearchView.h"
#include "cli/ConsoleSetupsView.h"
#include "cli/JsonText.h"
#include "cli/PngPlot.h"
#include "cli/ScopeSession.h"
#include "cli/SearchResultsFile.h"
#include "cli/TextWidth.h"
#include "control/Cvn73100Scope.h"
#include "dialogs/Messages.h"
#include "discovery/Cvn73100PPSrchIO.h"
#include "iolib/IOManager.h"
#include "platform/Components.h"
#include "setups/Cvn73100PPSetup.h"
#include "setups/SetupCvn73100Scope.h"
#include "setups/SetupsCvn73100Scope.h"

namespace cvn73100 {
namespace {

using nlohmann::json;

constexpr const char* SETUP_NAME = "DemoSetup";
constexpr std::int32_t DEMO_CHANNEL = 1;
constexpr std::int32_t DEMO_POINTS = 1000;

std::string Absolute(const std::filesystem::path& path) { return std::filesystem::absolute(path).lexically_normal().string(); }

// Each step says what it does on the error stream, so that standard output keeps the summary (or JSON).
void Step(CliContext& context, int number, const std::string& text) {
  context.err << "[" << number << "/6] " << text << "\n";
}

ScopeError DemoError(const std::string& description) { return ScopeError(ERR_INVALID_PROCEDURE_CALL, CLI_SOURCE, description); }

}  // namespace

void RegisterDemoCommand(CLI::App& app, CliContext& context) {
  struct Options {
    std::string output = "demo-output";
    bool excludeSilent = false;
  };
  auto o = std::make_shared<Options>();
  auto* demo = app.add_subcommand("demo", CliText(CliMsg::DEMO_COMMAND));
  demo->add_option("--output,-o", o->output, CliText(CliMsg::DEMO_OUTPUT_OPTION))->capture_default_str();
  demo->add_flag("--exclude-silent", o->excludeSilent, CliText(CliMsg::EXCLUDE_SILENT_FLAG));
  demo->callback([&context, o] {
    const std::filesystem::path out = std::filesystem::absolute(o->output).lexically_normal();
    std::filesystem::create_directories(out);
    const std::string formPath = context.formGiven ? context.formPath : (out / "form.json").string();
    const std::filesystem::path csvPath = out / "waveform-ch1.csv";
    const std::filesystem::path plotPath = out / "waveform-ch1.png";
    const std::filesystem::path screenPath = out / "screen.gif";
    const std::filesystem::path setupPath = out / (std::string(SETUP_NAME) + ".scp");
    // This run's files replace the last run's without asking.
    for (const auto& path : {csvPath, plotPath, screenPath, setupPath}) std::filesystem::remove(path);

    // The embedded simulated bus even where io.conf maps hardware: the demo needs none. Without a config
    // file the process's map is kept, with its environment overrides of the COM ports.
    if (!io::BoardMap::Load().UsingEmbeddedDefault()) {
      Components::SetIOManagerFactory(
          [] { return std::make_shared<io::IOManager>(io::BoardMap::EmbeddedDefault()); });
    }

    ScopeSession session(context, ScopeSession::Options{formPath, true});
    Cvn73100Scope& control = session.Control();
    ConsoleHost& host = context.host;
    host.SetQuiet(context.json);
    host.ClearRecord();

    // 1. Search.
    Step(context, 1, CliText(CliMsg::DEMO_STEP_SEARCH));
    ConsoleSearchView searchView(context, o->excludeSilent ? ConsoleSearchView::SilentPorts::Exclude
                                                           : ConsoleSearchView::SilentPorts::Keep);
    Cvn73100PPSrchIO searchPage(searchView);
    RunSearch(searchPage, control);
    const std::vector<TableRow> table = TableRows(searchPage.Rows(), false);
    SearchResultsFile(formPath).Save(table);
    std::size_t silent = 0;
    for (const auto& row : searchPage.Rows()) silent += row.reply.empty() ? 1 : 0;
    if (!context.json) {
      context.out << ConsoleHost::ToTerminal(Cvn73100PPSrchIO::PageCaption()) << "\n";
      PrintSearchTable(context.out, table, silent, false);
      context.out << "\n";
    }

    // 2. Choose the supported instrument and apply it.
    const TableRow* chosen = nullptr;
    for (const auto& entry : table)
      if (!entry.row.supported.empty()) {
        chosen = &entry;
        break;
      }
    if (!chosen) throw DemoError(CliText(CliMsg::DEMO_NO_SUPPORTED));
    Step(context, 2,
         CliText(CliMsg::DEMO_STEP_CHOOSE, {std::to_string(chosen->number), chosen->row.model, chosen->fullAddress}));
    std::int32_t pageRow = 0;
    for (std::size_t i = 0; i < searchPage.Rows().size(); ++i)
      if (searchPage.Rows()[i].address == chosen->row.address) pageRow = static_cast<std::int32_t>(i) + 1;
    searchPage.ListViewInstruments_ItemClick(pageRow);
    searchPage.PropertyPage_ApplyChanges();
    searchPage.PropertyPage_Terminate();

    // 3. Initialize.
    Step(context, 3, CliText(CliMsg::DEMO_STEP_INITIALIZE, {control.Address()}));
    control.Initialize();
    const std::string identity = control.AddressInstrumentID();

    // 4. Waveform and plot.
    Step(context, 4,
         CliText(CliMsg::DEMO_STEP_CAPTURE, {std::to_string(DEMO_POINTS), std::to_string(DEMO_CHANNEL)}));
    const WaveformCapture capture = CaptureWaveform(control, DEMO_CHANNEL, DEMO_POINTS);
    WriteFileAtomically(csvPath.string(), WaveformCsv(capture), CliText(CliMsg::WHAT_CSV_FILE));
    PngPlot(capture.seconds, capture.volts,
            "CH1  " + std::to_string(capture.seconds.size()) + " POINTS  " + chosen->row.model)
        .Save(plotPath.string());

    // 5. Screen image.
    Step(context, 5, CliText(CliMsg::DEMO_STEP_SCREEN));
    const Picture picture = control.GetScreenImage(Cvn73100_ImageFormat_GIF);
    WriteFileAtomically(screenPath.string(), std::string(picture.data.begin(), picture.data.end()),
                        CliText(CliMsg::WHAT_SCREEN_IMAGE));

    // 6. A setup, fetched and saved through the Setups page.
    Step(context, 6, CliText(CliMsg::DEMO_STEP_SETUP, {SETUP_NAME}));
    host.SetErrorTitles({Messages::Load(105), Messages::Load(650), Messages::Load(715), Messages::Load(717)});
    ConsoleSetupsView setupsView;
    Cvn73100PPSetup setupsPage(setupsView);
    BindSetupsPage(setupsPage, control);
    setupsView.PrepareForm(SETUP_NAME, "Fetched by cvnscope demo", true);
    setupsPage.CommandAdd_Click();
    setupsPage.ListViewSetup_Click(setupsView.RowOf(SETUP_NAME));
    host.SetFileAnswer(setupPath.string());
    setupsPage.CommandSendToFile_Click();
    if (host.ErrorShown()) throw DemoError(CliText(CliMsg::DEMO_SETUPS_ERROR));
    setupsPage.PropertyPage_ApplyChanges();
    const auto setup = setupsPage.WorkingSetups()->item(SETUP_NAME);
    setupsPage.PropertyPage_Terminate();
    const std::size_t setupBytes = setup->LearnString() ? setup->LearnString()->size() : 0;

    session.Finish(true);

    if (context.json) {
      context.out << json{{"instrument", {{"address", control.Address()}, {"identity", identity}}},
                          {"search", {{"rows", table.size()}, {"silentAddresses", silent}}},
                          {"waveform", {{"csv", Absolute(csvPath)}, {"points", capture.seconds.size()}}},
                          {"plot", Absolute(plotPath)},
                          {"screen", {{"file", Absolute(screenPath)}, {"width", picture.width}, {"height", picture.height}}},
                          {"setup",
                           {{"name", SETUP_NAME},
                            {"file", Absolute(setupPath)},
                            {"model", setup->Model()},
                            {"version", setup->Version()},
                            {"bytes", setupBytes}}},
                          {"form", Absolute(formPath)}}
                         .dump(2, ' ', false, kReplaceInvalidUtf8)
                  << "\n";
      return;
    }
    context.out << CliText(CliMsg::DEMO_SUMMARY) << "\n";
    PrintFields(context.out,
                {{CliText(CliMsg::FIELD_INSTRUMENT), control.Address() + "  " + identity},
                 {CliText(CliMsg::FIELD_WAVEFORM),
                  Absolute(csvPath) + "  " +
                      CliText(CliMsg::DEMO_WAVEFORM_DETAIL,
                              {std::to_string(capture.seconds.size()), std::to_string(DEMO_CHANNEL)})},
                 {CliText(CliMsg::FIELD_PLOT), Absolute(plotPath)},
                 {CliText(CliMsg::WHAT_SCREEN_IMAGE),
                  Absolute(screenPath) + "  " +
                      CliText(CliMsg::DEMO_SCREEN_DETAIL, {std::to_string(picture.width), std::to_string(picture.height)})},
                 {CliText(CliMsg::WHAT_SETUP_FILE),
                  Absolute(setupPath) + "  " +
                      CliText(CliMsg::DEMO_SETUP_DETAIL,
                              {SETUP_NAME, setup->Model(), setup->Version(), std::to_string(setupBytes)})},
                 {CliText(CliMsg::FIELD_FORM), Absolute(formPath)}},
                "  ");
    context.out << CliText(CliMsg::DEMO_NEXT, {Absolute(formPath)}) << "\n";
  });
}

}  // namespace cvn73100
