// A full default search (every COM port, GPIB0 addresses 0..30) with one supported instrument on the
// simulated bus at GPIB0::7 and three silent COM ports, through the control and its Search Instruments page.
//
// The identification query waits on purpose: before and after each serial exchange it holds the handshake
// lines down, it pauses after each write, and a silent port costs the full reply time limit. The sum of these
// mandated waits is the floor of the search's wall time; the benchmark reports the wall time against it
// (goal: within 5%) and the CPU time of the whole process against the wall time (goal: under 5% of one core).
#include <benchmark/benchmark.h>
#include <stdlib.h>
#include <time.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "connection/CQueryInstrument.h"
#include "control/Cvn73100Scope.h"
#include "discovery/Cvn73100PPSrchIO.h"
#include "discovery/FrmSearchResults.h"
#include "iolib/BoardMap.h"
#include "iolib/IOManager.h"
#include "platform/Components.h"
#include "server/Cvn73100Server.h"
#include "simulator/Instrument.h"
#include "simulator/SimulatedBus.h"
#include "simulator/SimulatedSerialPort.h"

namespace {

using namespace cvn73100;

constexpr int kSilentComPorts = 3;
constexpr int kListeners = 1;

class QuietView : public ISearchInstrumentsView {
 public:
  WindowHandle Window() const override { return 1; }
  void ShowRows(const std::vector<InstrumentRow>& r, std::int32_t) override { rows = r.size(); }
  void SetWorkingText(const std::string&) override {}
  void SetMessage(const std::string&, bool) override {}
  void EnableTest(bool) override {}
  void SetChanged(bool) override {}
  void ShowSearchResults(FrmSearchResults& dialog) override { dialog.CommandContinue_Click(); }
  std::size_t rows = 0;
};

// What one query mandates, in ms: a silent COM port drops the handshake lines (settle + delay) before and
// after the exchange, pauses after each of its two writes and waits out the reply limit; a GPIB listener
// pauses once after its write; an empty GPIB address refuses the write at once.
double MandatedWaitsMs(std::int32_t txDelay) {
  const double silentCom =
      2.0 * (CQueryInstrument::SETTLE_MS + txDelay) + 2.0 * txDelay + CQueryInstrument::REPLY_TIMEOUT_MS;
  return kSilentComPorts * silentCom + kListeners * txDelay;
}

double ProcessCpuSeconds() {
  timespec ts{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &ts);
  return static_cast<double>(ts.tv_sec) + static_cast<double>(ts.tv_nsec) * 1e-9;
}

// COM1..`ports` of `manager` answer nothing, as a port with no instrument on it.
void AttachSilentPorts(io::IOManager& manager, int ports) {
  sim::Faults silent;
  silent.silent = true;
  for (int port = 1; port <= ports; ++port)
    manager.SetSimulatedSerialPort(port, std::make_shared<sim::SimulatedSerialPort>(
                                             std::make_shared<sim::Instrument>(sim::InstrumentConfig{{}, silent, 0})));
}

// Wall and process CPU time of one Search click on a fresh control and page, added to the totals.
struct SearchTimes {
  double wallMs = 0;
  double cpuMs = 0;
  std::int32_t txDelay = 0;

  template <class CheckRows>
  void Time(benchmark::State& state, bool parallel, CheckRows checkRows) {
    Cvn73100Scope control;
    QuietView view;
    Cvn73100PPSrchIO page(view);
    page.SetParallelSearch(parallel);
    page.PropertyPage_SelectionChanged(&control);
    page.TimerInstrumentDiscovery_Timer();
    txDelay = control.TXDelay();
    const auto start = std::chrono::steady_clock::now();
    const double cpuStart = ProcessCpuSeconds();
    page.Search_Click();
    const double cpu = ProcessCpuSeconds() - cpuStart;
    const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - start;
    state.SetIterationTime(wall.count());
    wallMs += wall.count() * 1e3;
    cpuMs += cpu * 1e3;
    checkRows(page.Rows());
  }
};

void BM_DefaultSearch(benchmark::State& state) {
  auto manager = std::make_shared<io::IOManager>(
      io::BoardMap::FromText("GPIB0 = sim\nCOM1 = sim\nCOM2 = sim\nCOM3 = sim\nCOM4 = none\n", "bench"));
  auto bus = std::make_shared<sim::SimulatedBus>();
  bus->Attach(7, std::make_shared<sim::Instrument>());
  manager->SetSimulatedBus(0, bus);
  AttachSilentPorts(*manager, kSilentComPorts);
  Components::SetIOManagerFactory([manager] { return manager; });

  SearchTimes times;
  for (auto _ : state) {
    times.Time(state, false, [&](const auto& rows) {
      if (rows.size() != 31 || rows[7].supported.empty()) state.SkipWithError("unexpected list");
    });
  }
  const double iterations = static_cast<double>(state.iterations());
  state.counters["mandated_ms"] = MandatedWaitsMs(times.txDelay);
  state.counters["wall_ms"] = times.wallMs / iterations;
  state.counters["wall_over_waits"] = times.wallMs / iterations / MandatedWaitsMs(times.txDelay);
  state.counters["cpu_share"] = times.cpuMs / times.wallMs;
  Components::SetIOManagerFactory(nullptr);
}

// A parallel search of `ports` silent COM ports and nothing else: four should cost what one does.
void BM_ParallelSilentPorts(benchmark::State& state) {
  const auto ports = static_cast<int>(state.range(0));
  std::string map = "GPIB0 = none\n";
  for (int port = 1; port <= 4; ++port)
    map += "COM" + std::to_string(port) + (port <= ports ? " = sim\n" : " = none\n");
  auto manager = std::make_shared<io::IOManager>(io::BoardMap::FromText(map, "bench"));
  AttachSilentPorts(*manager, ports);
  Components::SetIOManagerFactory([manager] { return manager; });

  SearchTimes times;
  for (auto _ : state) {
    times.Time(state, true, [&](const auto& rows) {
      if (!rows.empty()) state.SkipWithError("a silent port was listed");
    });
  }
  state.counters["wall_ms"] = times.wallMs / static_cast<double>(state.iterations());
  state.counters["cpu_share"] = times.cpuMs / times.wallMs;
  Components::SetIOManagerFactory(nullptr);
}

BENCHMARK(BM_ParallelSilentPorts)
    ->ArgName("ports")
    ->Arg(1)
    ->Arg(4)
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Iterations(1)
    ->Repetitions(3);

BENCHMARK(BM_DefaultSearch)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(1)->Repetitions(3);

}  // namespace

int main(int argc, char** argv) {
  static char tempDir[] = "/tmp/cvnsearchbench.XXXXXX";
  if (::mkdtemp(tempDir) != nullptr) ::setenv("TMPDIR", tempDir, 1);  // the control's log goes there
  server::RegisterAutomationServer();
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  std::printf("goals: wall_over_waits <= 1.05, cpu_share < 0.05; parallel 4 silent ports / 1 <= 1.1\n");
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  std::error_code ignored;
  std::filesystem::remove_all(tempDir, ignored);
  return 0;
}
