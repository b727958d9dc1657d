#include <CLI/CLI.hpp>
#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>

#include "cli/AtomicFile.h"
#include "cli/Capture.h"
#include "cli/CliContext.h"
#include "cli/ConsoleSearchView.h"
#include "cli/ConsoleSetupsView.h"
#include "cli/JsonText.h"
#include "cli/PngPlot.h"
#include "cli/ScopeSession.h"
#include "cli/SearchResultsFile.h"
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
  auto* demo = app.add_subcommand(
      "demo",
      "The main job against the built-in simulated instrument, from a fresh form: search, choose the supported\n"
      "instrument, initialize, capture a waveform with its plot, save a screen image, fetch a setup and save it as a\n"
      ".scp file. The form is written to --form if given, else OUTPUT/form.json");
  demo->add_option("--output,-o", o->output, "Folder for the results")->capture_default_str();
  demo->add_flag("--exclude-silent", o->excludeSilent, "Exclude the COM ports without an instrument from future searches");
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
    Step(context, 1, "Searching every port (the Search Instruments page)");
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
    if (!chosen) throw DemoError("The search found no supported instrument.");
    Step(context, 2, "Choosing row " + std::to_string(chosen->number) + " (" + chosen->row.model + " at " +
                         chosen->fullAddress + ") and applying it");
    std::int32_t pageRow = 0;
    for (std::size_t i = 0; i < searchPage.Rows().size(); ++i)
      if (searchPage.Rows()[i].address == chosen->row.address) pageRow = static_cast<std::int32_t>(i) + 1;
    searchPage.ListViewInstruments_ItemClick(pageRow);
    searchPage.PropertyPage_ApplyChanges();
    searchPage.PropertyPage_Terminate();

    // 3. Initialize.
    Step(context, 3, "Initializing the connection to " + control.Address());
    control.Initialize();
    const std::string identity = control.AddressInstrumentID();

    // 4. Waveform and plot.
    Step(context, 4, "Capturing " + std::to_string(DEMO_POINTS) + " points of channel " + std::to_string(DEMO_CHANNEL));
    const WaveformCapture capture = CaptureWaveform(control, DEMO_CHANNEL, DEMO_POINTS);
    WriteFileAtomically(csvPath.string(), WaveformCsv(capture), "CSV file");
    PngPlot(capture.seconds, capture.volts,
            "CH1  " + std::to_string(capture.seconds.size()) + " POINTS  " + chosen->row.model)
        .Save(plotPath.string());

    // 5. Screen image.
    Step(context, 5, "Saving the instrument's screen");
    const Picture picture = control.GetScreenImage(Cvn73100_ImageFormat_GIF);
    WriteFileAtomically(screenPath.string(), std::string(picture.data.begin(), picture.data.end()), "Screen image");

    // 6. A setup, fetched and saved through the Setups page.
    Step(context, 6, std::string("Fetching the instrument's setup as ") + SETUP_NAME + " and saving it");
    host.SetErrorTitles({Messages::Load(105), Messages::Load(650), Messages::Load(715), Messages::Load(717)});
    ConsoleSetupsView setupsView;
    Cvn73100PPSetup setupsPage(setupsView);
    BindSetupsPage(setupsPage, control);
    setupsView.PrepareForm(SETUP_NAME, "Fetched by cvnscope demo", true);
    setupsPage.CommandAdd_Click();
    setupsPage.ListViewSetup_Click(setupsView.RowOf(SETUP_NAME));
    host.SetFileAnswer(setupPath.string());
    setupsPage.CommandSendToFile_Click();
    if (host.ErrorShown()) throw DemoError("The Setups page reported an error (shown above).");
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
    context.out << "Demo summary\n"
                << "  Instrument:    " << control.Address() << "  " << identity << "\n"
                << "  Waveform:      " << Absolute(csvPath) << "  (" << capture.seconds.size()
                << " points of channel 1, time in s, volts in V)\n"
                << "  Plot:          " << Absolute(plotPath) << "\n"
                << "  Screen image:  " << Absolute(screenPath) << "  (" << picture.width << " x " << picture.height
                << " GIF)\n"
                << "  Setup file:    " << Absolute(setupPath) << "  (" << SETUP_NAME << ": model " << setup->Model()
                << ", firmware " << setup->Version() << ", " << setupBytes << " bytes)\n"
                << "  Form:          " << Absolute(formPath) << "\n"
                << "Next: cvnscope --form " << Absolute(formPath) << " idn\n";
  });
}

}  // namespace cvn73100
