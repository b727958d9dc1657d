// The Search Instruments page driven as a front end drives it, against the real I/O library: a simulated GPIB
// bus and simulated instruments behind COM ports, in this process.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <chrono>
#include <functional>
#include <set>

#include "control/Cvn73100Scope.h"
#include "dialogs/Messages.h"
#include "discovery/Cvn73100PPSrchIO.h"
#include "discovery/FrmSearchResults.h"
#include "ioconfig/CIOconfiguration.h"
#include "iolib/BoardMap.h"
#include "iolib/IOManager.h"
#include "platform/Components.h"
#include "platform/Interrupt.h"
#include "server/Cvn73100Server.h"
#include "simulator/Instrument.h"
#include "simulator/SimulatedBus.h"
#include "simulator/SimulatedSerialPort.h"
#include "tests/support/ScriptedHost.h"
#include "tests/support/TempDir.h"

namespace cvn73100 {
namespace {

constexpr std::int32_t kInvalidPropertyValue = -2147221124;
constexpr WindowHandle kPageWindow = 42;
const sim::Identity kSupported{"Corvane Technologies", "73135D", "QX40001234", "A.02.10"};
const sim::Identity kUnsupported{"Corvane Technologies", "73199B", "QX40005678", "A.01.04"};
const sim::Identity kOtherFamily{"Corvane Technologies", "44210A", "QX40009012", "B.03.01"};
const sim::Identity kModelWord{"ABC", "MODEL 73135D", "123", "A.01"};

class RecordingView : public ISearchInstrumentsView {
 public:
  std::vector<InstrumentRow> rows;
  std::vector<std::string> workingTexts;
  std::vector<std::pair<int, int>> progress;
  std::set<SearchPageTimer> timers;
  std::vector<std::array<int, 4>> results;           // per results dialog: -1 disabled, else the box's value
  std::function<void(FrmSearchResults&)> onResults;  // the user's ticks before Continue

  WindowHandle Window() const override { return kPageWindow; }
  void ShowRows(const std::vector<InstrumentRow>& r, std::int32_t) override { rows = r; }
  void SetWorkingText(const std::string& text) override { workingTexts.push_back(text); }
  void SetMessage(const std::string&, bool) override {}
  void EnableTest(bool) override {}
  void SetChanged(bool) override {}
  void SetTimer(SearchPageTimer timer, bool enabled, std::int32_t) override {
    enabled ? (void)timers.insert(timer) : (void)timers.erase(timer);
  }
  void ShowProgress(std::int32_t step, std::int32_t total) override { progress.emplace_back(step, total); }
  void ShowSearchResults(FrmSearchResults& dialog) override {
    std::array<int, 4> seen{};
    for (int i = 0; i < 4; ++i) seen[static_cast<std::size_t>(i)] = dialog.CheckEnabled(i) ? dialog.CheckValue(i) : -1;
    results.push_back(seen);
    if (onResults) onResults(dialog);
    dialog.CommandContinue_Click();
  }
};

std::vector<std::string> Column(const std::vector<InstrumentRow>& rows, std::string InstrumentRow::*field) {
  std::vector<std::string> values;
  for (const auto& row : rows) values.push_back(row.*field);
  return values;
}

class SearchInstrumentsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    Messages::SetLanguageBase(Messages::ENGLISH);
    server::RegisterAutomationServer();
    for (const auto& [address, identity] :
         {std::pair{1, kSupported}, {3, kUnsupported}, {5, kModelWord}, {12, kOtherFamily}})
      bus->Attach(address, Make(identity));
    manager->SetSimulatedBus(0, bus);
    sim::Faults garbage, silent;
    garbage.garbage = true;
    silent.silent = true;
    manager->SetSimulatedSerialPort(1, std::make_shared<sim::SimulatedSerialPort>(Make(kSupported)));
    manager->SetSimulatedSerialPort(2, std::make_shared<sim::SimulatedSerialPort>(Make(kSupported, garbage)));
    manager->SetSimulatedSerialPort(3, std::make_shared<sim::SimulatedSerialPort>(Make(kSupported, silent)));
    Components::SetIOManagerFactory([m = manager] { return m; });
  }
  void TearDown() override {
    page.reset();
    control.reset();
    Components::SetIOManagerFactory(nullptr);
  }

  static std::shared_ptr<sim::Instrument> Make(const sim::Identity& identity, const sim::Faults& faults = {}) {
    return std::make_shared<sim::Instrument>(sim::InstrumentConfig{identity, faults, 0});
  }

  // A new control at `address` whose search visits the COM ports `com` and the GPIB0 addresses `gpib`, and
  // a page bound to it as a front end binds it.
  void Bind(const std::string& address, std::set<int> com, std::set<int> gpib, bool initialSearch = false,
            const std::function<void(CIOconfiguration&)>& adjust = {}) {
    page.reset();
    control = std::make_unique<Cvn73100Scope>();
    control->SetTXDelay(1);
    control->SetAddress(address);
    control->SetInitialSearchMode(initialSearch);
    CIOconfiguration& config = *control->IOConfiguration();
    for (int port = 1; port <= 4; ++port) config.SetRS232PortIncluded(port, com.count(port) > 0);
    for (int a = 0; a <= 30; ++a) config.SetGPIBPortIncludes(0, a, gpib.count(a) > 0);
    if (adjust) adjust(config);
    page = std::make_unique<Cvn73100PPSrchIO>(view);
    page->PropertyPage_Paint();
    page->PropertyPage_SelectionChanged(control.get());
    page->TimerInstrumentDiscovery_Timer();
    host.ClearRecords();
  }
  std::int32_t RowOf(const std::string& address) const {
    const auto addresses = Column(page->Rows(), &InstrumentRow::address);
    const auto it = std::find(addresses.begin(), addresses.end(), address);
    return it == addresses.end() ? -1 : static_cast<std::int32_t>(it - addresses.begin()) + 1;
  }
  std::string ConnectedAddress() const {
    for (const auto& row : page->Rows())
      if (row.icon == "ConnectedInstrument") return row.address;
    return "";
  }

  test::ScriptedHost host;
  test::ScopedHost scopedHost{host};
  std::shared_ptr<sim::SimulatedBus> bus = std::make_shared<sim::SimulatedBus>();
  std::shared_ptr<io::IOManager> manager = std::make_shared<io::IOManager>(
      io::BoardMap::FromText("GPIB0 = sim\nCOM1 = sim\nCOM2 = sim\nCOM3 = sim\nCOM4 = none\n", "test"));
  RecordingView view;
  std::unique_ptr<Cvn73100Scope> control;
  std::unique_ptr<Cvn73100PPSrchIO> page;
};

TEST_F(SearchInstrumentsTest, SearchListsEveryAnswerAndOffersToExcludeSilentPorts) {
  Bind("GPIB0::12::INSTR", {1, 2, 3, 4}, {1, 3, 5, 12, 20});
  view.onResults = [](FrmSearchResults& dialog) { dialog.CheckCOM1_Click(2, FrmSearchResults::CHECKED); };
  page->Search_Click();

  using V = std::vector<std::string>;
  const auto& rows = page->Rows();
  EXPECT_EQ(Column(rows, &InstrumentRow::address),
            (V{"COM1", "COM2", "GPIB0::1", "GPIB0::3", "GPIB0::5", "GPIB0::12", "GPIB0::20"}));
  EXPECT_EQ(Column(rows, &InstrumentRow::model),
            (V{"73135D", "Unknown", "73135D", "73199B", "73135D", "44210A", "Unknown"}));
  EXPECT_EQ(view.rows, rows);
  // GPIB0::1 is listed before GPIB0::12 and is a prefix of GPIB0::12::INSTR: it is taken as connected.
  EXPECT_EQ(ConnectedAddress(), "GPIB0::1");
  EXPECT_EQ(page->SelectedIndex(), 3);
  EXPECT_EQ(page->MessageText(), "Search Complete.");

  // Nothing was installed, so the ports were found first; COM4 has no port and is not probed.
  for (const char* text : {"Finding installed I/O Ports", "Searching I/O Ports", "COM3", "GPIB0::20::INSTR"})
    EXPECT_NE(std::find(view.workingTexts.begin(), view.workingTexts.end(), text), view.workingTexts.end()) << text;
  EXPECT_EQ(view.progress.back(), std::make_pair(8, 8));
  EXPECT_TRUE(std::is_sorted(view.progress.begin(), view.progress.end()));
  EXPECT_EQ(page->MousePointer(), 0);

  // COM3 gave no reply, so only it may be excluded (COM4 has no device); the user excluded COM3.
  EXPECT_EQ(page->InstrumentFoundOnCOM(), (std::array<bool, 4>{true, true, false, false}));
  EXPECT_EQ(view.results, (std::vector<std::array<int, 4>>{{-1, -1, 0, -1}}));
  EXPECT_FALSE(page->Configuration()->RS232PortIncluded(3));
  EXPECT_TRUE(page->Changed());
  EXPECT_TRUE(control->IOConfiguration()->RS232PortIncluded(3)) << "the control changes only on Apply";
}

TEST_F(SearchInstrumentsTest, ApplyMakesTheChosenRowTheControlsAddress) {
  struct Case {
    const char* row;
    const char* port;
    const char* identity;
    std::size_t warnings;  // handshake warnings shown
  };
  const Case cases[] = {
      {"GPIB0::5", "GPIB0", "ABC,MODEL 73135D,123,A.01", 0},
      {"COM1", "COM1", "Corvane Technologies,73135D,QX40001234,A.02.10", 1},
      {"GPIB0::20", "GPIB0", "", 0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.row);
    Bind("GPIB0::12::INSTR", {1}, {5, 12, 20});
    page->Search_Click();
    page->ListViewInstruments_ItemClick(RowOf(c.row));
    page->PropertyPage_ApplyChanges();

    EXPECT_EQ(control->IOConfiguration()->ActiveIOPort(), c.port);
    EXPECT_EQ(control->Address().rfind(std::string(c.row) + (c.port[0] == 'G' ? "::INSTR" : ""), 0), 0u);
    EXPECT_EQ(control->AddressInstrumentID(), c.identity);
    EXPECT_EQ(ConnectedAddress(), c.row);
    EXPECT_EQ(host.optionDialogs.size(), c.warnings);
    EXPECT_EQ(*page->Configuration(), *control->IOConfiguration());
  }

  // While a page flag is raised Apply stands back.
  page->ListViewInstruments_ItemClick(RowOf("GPIB0::5"));
  control->SetSetIOExists(true);
  page->PropertyPage_ApplyChanges();
  EXPECT_EQ(control->Address(), "GPIB0::20::INSTR");
}

TEST_F(SearchInstrumentsTest, ConnectedRowIsTheFirstPrefixOfTheActiveAddress) {
  const std::pair<const char*, const char*> cases[] = {
      {"GPIB0::3::INSTR", "GPIB0::3"}, {"GPIB0::7::INSTR", ""}, {"COM1::Baud=19200", "COM1"}};
  for (const auto& [active, connected] : cases) {
    SCOPED_TRACE(active);
    Bind(active, {1}, {1, 3, 12});
    page->Search_Click();
    EXPECT_EQ(ConnectedAddress(), connected);
    EXPECT_EQ(page->SelectedIndex(), RowOf(connected));
    EXPECT_EQ(page->TestEnabled(), *connected != '\0');
  }
}

TEST_F(SearchInstrumentsTest, OnlyTheFirstSearchFallsBackToTheFirstRow) {
  Bind("GPIB0::7::INSTR", {}, {3, 12}, true);
  EXPECT_EQ(page->MessageText(), "Click [Search] to find all instruments.");
  page->Search_Click();
  EXPECT_EQ(ConnectedAddress(), "GPIB0::3");
  EXPECT_EQ(page->SelectedIndex(), 1);
  EXPECT_TRUE(page->Changed());
  page->Search_Click();
  EXPECT_EQ(page->SelectedIndex(), -1);
}

TEST_F(SearchInstrumentsTest, NothingIncludedListsNothingAndStillOffersTheResults) {
  Bind("GPIB0::7::INSTR", {}, {});
  page->Search_Click();
  EXPECT_TRUE(page->Rows().empty());
  EXPECT_NE(page->MessageText(), "Search Complete.");
  // Every port with a device may be excluded, and the excluded ones show their tick.
  EXPECT_EQ(view.results, (std::vector<std::array<int, 4>>{{1, 1, 1, -1}}));
}

TEST_F(SearchInstrumentsTest, PortThatCannotBeOpenedIsReportedAndTheSearchGoesOn) {
  // Marked installed by hand: COM4 and GPIB1 have nothing behind them.
  Bind("GPIB0::7::INSTR", {4}, {1}, false, [](CIOconfiguration& config) {
    config.SetRS232PortInstalled(4, true);
    config.SetGPIBPortInstalled(0, true);
    config.SetGPIBPortInstalled(1, true);
  });
  page->Search_Click();
  ASSERT_EQ(host.boxes.size(), 2u);
  EXPECT_EQ(host.boxes[0].prompt.rfind("Could not open I/O port.\r\n\r\nAt address:\r\n\r\n    COM4\r\n", 0), 0u);
  EXPECT_NE(host.boxes[1].prompt.find("    GPIB1\r\n"), std::string::npos);
  EXPECT_EQ(Column(page->Rows(), &InstrumentRow::address), std::vector<std::string>{"GPIB0::1"});
}

TEST_F(SearchInstrumentsTest, TestQueriesTheRowAgainAndRelistsItInPlace) {
  Bind("GPIB0::12::INSTR", {}, {1, 3, 12});
  page->Search_Click();
  bus->Listener(3)->SetIdentity(kSupported);
  page->ListViewInstruments_ItemClick(2);
  page->Test_Click();

  ASSERT_EQ(host.boxes.size(), 1u);
  EXPECT_EQ(host.boxes[0].prompt.rfind("Success", 0), 0u);
  EXPECT_NE(host.boxes[0].prompt.find("    GPIB0::3::INSTR"), std::string::npos) << "queried at the full address";
  EXPECT_EQ(Column(page->Rows(), &InstrumentRow::model), (std::vector<std::string>{"73135D", "73135D", "44210A"}));
  EXPECT_EQ(page->Rows()[1].supported, "X");
  EXPECT_EQ(page->SelectedIndex(), 2);
  EXPECT_EQ(ConnectedAddress(), "GPIB0::1");
}

TEST_F(SearchInstrumentsTest, BindingIsAwaitedForAtMostMaxDiscoveryDelay) {
  test::SupportLog support;
  page = std::make_unique<Cvn73100PPSrchIO>(view);
  page->PropertyPage_Paint();
  EXPECT_TRUE(view.timers.count(SearchPageTimer::InstrumentDiscovery));
  for (int i = 0; i < Cvn73100PPSrchIO::MAX_DISCOVERY_DELAY / Cvn73100PPSrchIO::DISCOVERY_TIMER_INTERVAL; ++i)
    EXPECT_NO_THROW(page->TimerInstrumentDiscovery_Timer());
  EXPECT_EQ(support.blocks.size(), 1u) << "reported once the delay reaches the limit";
  const ScopeError error = test::ErrorOf([&] { page->TimerInstrumentDiscovery_Timer(); });
  EXPECT_EQ(error.Number(), kInvalidPropertyValue);
  EXPECT_EQ(error.Description(), "Instrument Discovery failure.");
  EXPECT_FALSE(view.timers.count(SearchPageTimer::InstrumentDiscovery));

  Bind("GPIB0::7::INSTR", {}, {});
  EXPECT_EQ(page->MessageText(),
            "Click [Test] to check instrument connection.\r\nClick [Search] to find all instruments.");
  EXPECT_EQ(view.timers, std::set<SearchPageTimer>{SearchPageTimer::IdleProcessing});
}

TEST_F(SearchInstrumentsTest, IdleTimerFollowsAnAddressChangedElsewhere) {
  Bind("GPIB0::12::INSTR", {}, {1, 3, 12});
  page->Search_Click();
  control->SetAddress("GPIB0::3::INSTR");
  page->TimerIdleProcessing_Timer();
  EXPECT_EQ(ConnectedAddress(), "GPIB0::3");
  EXPECT_EQ(page->MessageText(), Messages::Load(274));
}

// COM1 a pseudo-terminal nobody answers, COM2 speaking garbage, COM3 a supported instrument, COM4 a device node
// that is not there, and the simulated bus.
class MixedPortsTest : public SearchInstrumentsTest {
 protected:
  void SetUp() override {
    SearchInstrumentsTest::SetUp();
    master = ::posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_GE(master, 0);
    ::grantpt(master);
    ::unlockpt(master);
    manager = std::make_shared<io::IOManager>(io::BoardMap::FromText(
        "GPIB0 = sim\nCOM1 = " + std::string(::ptsname(master)) + "\nCOM2 = sim\nCOM3 = sim\nCOM4 = /dev/cvn-none\n",
        "test"));
    manager->SetSimulatedBus(0, bus);
    sim::Faults garbage;
    garbage.garbage = true;
    manager->SetSimulatedSerialPort(2, std::make_shared<sim::SimulatedSerialPort>(Make(kSupported, garbage)));
    manager->SetSimulatedSerialPort(3, std::make_shared<sim::SimulatedSerialPort>(Make(kSupported)));
    Components::SetIOManagerFactory([m = manager] { return m; });
  }
  void TearDown() override {
    SearchInstrumentsTest::TearDown();
    ::close(master);
  }
  void BindAll(bool parallel) {
    Bind("GPIB0::12::INSTR", {1, 2, 3, 4}, {1, 3, 5, 12, 20}, false, [](CIOconfiguration& config) {
      for (int port = 1; port <= 4; ++port) config.SetRS232PortInstalled(port, true);
      config.SetGPIBPortInstalled(0, true);
    });
    page->SetParallelSearch(parallel);
    view.results.clear();
  }
  int master = -1;
};

TEST_F(MixedPortsTest, ParallelSearchListsExactlyWhatTheSequentialOneLists) {
  struct Outcome {
    std::vector<InstrumentRow> rows;
    std::vector<std::string> boxes;
    std::vector<std::array<int, 4>> results;
  };
  std::vector<Outcome> outcomes;
  for (const bool parallel : {false, true}) {
    BindAll(parallel);
    page->Search_Click();
    Outcome outcome{page->Rows(), {}, view.results};
    outcome.rows.front().reply.clear();  // the garbage differs from one search to the next
    for (const auto& box : host.boxes) outcome.boxes.push_back(box.prompt);
    outcomes.push_back(outcome);
  }
  EXPECT_EQ(Column(outcomes[0].rows, &InstrumentRow::address),
            (std::vector<std::string>{"COM2", "COM3", "GPIB0::1", "GPIB0::3", "GPIB0::5", "GPIB0::12", "GPIB0::20"}));
  // The missing node is named with the system's cause and left out of the results dialog.
  ASSERT_EQ(outcomes[0].boxes.size(), 1u);
  EXPECT_NE(outcomes[0].boxes[0].find("    COM4\r\n\r\nCould not open the I/O resource. (/dev/cvn-none: No such file"),
            std::string::npos)
      << outcomes[0].boxes[0];
  EXPECT_EQ(outcomes[0].results, (std::vector<std::array<int, 4>>{{0, -1, -1, -1}}));
  EXPECT_EQ(outcomes[1].rows, outcomes[0].rows);
  EXPECT_EQ(outcomes[1].boxes, outcomes[0].boxes);
  EXPECT_EQ(outcomes[1].results, outcomes[0].results);
}

TEST_F(MixedPortsTest, StopEndsTheSearchSoonWithTheRowsFoundSoFar) {
  using Clock = std::chrono::steady_clock;
  // Sequentially the silent COM1 still holds the search when it is stopped; in parallel every other port is done.
  const std::pair<bool, std::size_t> cases[] = {{false, 0}, {true, 7}};
  for (const auto& [parallel, rows] : cases) {
    SCOPED_TRACE(parallel ? "parallel" : "sequential");
    BindAll(parallel);
    const Clock::time_point stopAt = Clock::now() + std::chrono::milliseconds(600);
    const Interrupt::Scope stop([stopAt] { return Clock::now() >= stopAt; });
    EXPECT_THROW(page->Search_Click(), Interrupted);
    // Well before the silent port's 2.5 s reply limit.
    EXPECT_LT(Clock::now() - stopAt, std::chrono::milliseconds(500));
    EXPECT_EQ(page->Rows().size(), rows);
    EXPECT_FALSE(page->Searching());
    EXPECT_FALSE(page->Changed());
    EXPECT_TRUE(view.results.empty()) << "nothing offered";
  }
}

TEST(AddInstrumentToList, RowsFollowTheReplysFields) {
  Messages::SetLanguageBase(Messages::ENGLISH);
  struct Case {
    const char* reply;
    const char* address;
    InstrumentRow row;
  };
  const Case cases[] = {
      {"ABC,MODEL 73135D,123,A.01", "GPIB0::5::INSTR", {"73135D", "X", "GPIB0::5", "ABC", "", ""}},
      {" ACME , 73199B ,1,A", "COM2", {"73199B", "", "COM2", "ACME", "", ""}},
      {"ACME,73105B", "GPIB1::30::INSTR", {"Unknown", "", "GPIB1::30", "ACME", "", ""}},
      {"GARBAGE", "COM3", {"Unknown", "", "COM3", "Unknown", "", ""}},
      {"", "GPIB0::20::INSTR", {"Unknown", "", "GPIB0::20", "Unknown", "", ""}},
  };
  RecordingView view;
  Cvn73100PPSrchIO page(view);
  for (const Case& c : cases) page.AddInstrumentToList(c.reply, c.address, -1);
  ASSERT_EQ(page.Rows().size(), std::size(cases));
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    InstrumentRow expected = cases[i].row;
    expected.reply = cases[i].reply;
    EXPECT_EQ(page.Rows()[i], expected) << cases[i].reply;
  }
  page.AddInstrumentToList("A,73105B,1,2", "COM4", 2);
  EXPECT_EQ(Column(page.Rows(), &InstrumentRow::address)[1], "COM4");

  const auto size = static_cast<std::int32_t>(page.Rows().size());
  for (const auto& [address, position] :
       {std::pair{"", -1}, {"GPIB0", -1}, {"GPIB0::5", -1}, {"COM1", 0}, {"COM1", size + 2}}) {
    EXPECT_EQ(test::ErrorOf([&] { page.AddInstrumentToList("A,B,C,D", address, position); }).Number(),
              kInvalidPropertyValue)
        << address << " at " << position;
  }
  EXPECT_EQ(page.Rows().size(), std::size(cases) + 1);
}

}  // namespace
}  // namespace cvn73100
