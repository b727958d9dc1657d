// The I/O library's costs, reported as ratios:
// - WaitCpu: CPU time of the waiting thread over the wall time of a read that times out against a silent
//   instrument (goal: under 0.02 of one core over a 2.5 s timeout).
// - PacedLine: a ~108 kB reply over a pseudo-terminal whose instrument sends at a fixed baud rate, as a fraction of
//   that line rate (goal: 0.95 or more).
// - Query: one *IDN? round trip with no delays, per backend, for comparison with other I/O stacks.
#include <benchmark/benchmark.h>
#include <sys/resource.h>
#include <time.h>

#include <chrono>
#include <memory>

#include "iolib/IOManager.h"
#include "simulator/Instrument.h"
#include "simulator/InstrumentPort.h"
#include "simulator/PrologixAdapter.h"
#include "simulator/PtyServer.h"
#include "simulator/SimulatedBus.h"
#include "simulator/TcpServer.h"

namespace cvn73100::io {
namespace {

using Clock = std::chrono::steady_clock;

double ThreadCpuSeconds() {
  timespec now{};
  ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

double ProcessCpuSeconds() {
  rusage usage{};
  ::getrusage(RUSAGE_SELF, &usage);
  auto seconds = [](const timeval& t) { return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_usec) * 1e-6; };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

enum Backend { kPty = 0, kSimBus = 1, kPrologixTcp = 2 };
const char* const kBackendNames[] = {"COM on a pty", "simulated GPIB bus", "Prologix adapter over TCP"};

// The same instrument three times (each transport reads its own output queue): COM1 on a pty, GPIB0::7 on the
// simulated bus, GPIB1::7 behind an adapter.
struct Bench {
  explicit Bench(const sim::Faults& faults) {
    instrument.SetFaults(faults);
    adapterInstrument.SetFaults(faults);
    pty = std::make_unique<sim::PtyServer>(port);
    adapter.Attach(7, adapterInstrument);
    tcp = std::make_unique<sim::TcpServer>(adapter, 0);
    manager = std::make_unique<IOManager>(
        BoardMap::FromText("COM1 = " + pty->DevicePath() + "\nGPIB0 = sim\n" +
                           "GPIB1 = prologix-tcp:127.0.0.1:" + std::to_string(tcp->Port()) + "\n"));
    auto bus = std::make_shared<sim::SimulatedBus>();
    bus->Attach(7, busInstrument);
    busInstrument->SetFaults(faults);
    manager->SetSimulatedBus(0, bus);
  }

  std::shared_ptr<IInstrumentIO> Open(int backend) {
    static const char* const kAddresses[] = {"COM1", "GPIB0::7::INSTR", "GPIB1::7::INSTR"};
    auto io = manager->Open(kAddresses[backend]);
    if (ISerialIO* serial = io->Serial()) {
      serial->SetBaudRate(9600);
      serial->SetHandshake(RS232_HandShake_XON_XOFF);
    }
    return io;
  }

  sim::Instrument instrument;
  sim::InstrumentPort port{instrument, sim::InstrumentPort::Line::Serial};
  std::unique_ptr<sim::PtyServer> pty;
  sim::Instrument adapterInstrument;
  sim::PrologixAdapter adapter{sim::PrologixAdapter::Model::Ethernet};
  std::unique_ptr<sim::TcpServer> tcp;
  std::shared_ptr<sim::Instrument> busInstrument = std::make_shared<sim::Instrument>();
  std::unique_ptr<IOManager> manager;
};

void WaitCpu(benchmark::State& state) {
  sim::Faults faults;
  faults.silent = true;
  Bench bench(faults);
  const auto io = bench.Open(static_cast<int>(state.range(0)));
  io->SetTimeout(static_cast<std::int32_t>(state.range(1)));
  double cpu = 0, processCpu = 0, wall = 0;
  for (auto _ : state) {
    io->Output("*IDN?");
    const double cpu0 = ThreadCpuSeconds(), process0 = ProcessCpuSeconds();
    const auto start = Clock::now();
    std::string reply;
    try {
      io->Enter(reply);
      state.SkipWithError("a silent instrument answered");
    } catch (const ScopeError&) {
    }
    wall += std::chrono::duration<double>(Clock::now() - start).count();
    cpu += ThreadCpuSeconds() - cpu0;
    processCpu += ProcessCpuSeconds() - process0;
  }
  state.SetLabel(kBackendNames[state.range(0)]);
  state.counters["cpu_per_wall"] = cpu / wall;
  state.counters["process_cpu_per_wall"] = processCpu / wall;
}
BENCHMARK(WaitCpu)
    ->ArgsProduct({{kPty, kSimBus, kPrologixTcp}, {2500}})
    ->ArgNames({"backend", "timeout_ms"})
    ->Iterations(1)
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

void PacedLine(benchmark::State& state) {
  const auto baud = static_cast<std::int32_t>(state.range(0));
  sim::Faults faults;
  faults.lineBaud = baud;
  Bench bench(faults);
  const auto io = bench.Open(kPty);
  io->Serial()->SetBaudRate(baud);
  io->SetTimeout(static_cast<std::int32_t>(1000.0 * 200'000 * 10 / baud));  // room for 200 kB
  io->Output(":WAVeform:FORMat ASCii;:WAVeform:POINts MAXimum");
  double bytes = 0, wall = 0, cpu = 0;
  for (auto _ : state) {
    const double cpu0 = ThreadCpuSeconds();
    const auto start = Clock::now();
    // Two ASCII records in one reply message: about 108 kB, no LF before the end.
    io->Output(":WAVeform:DATA?;:WAVeform:DATA?");
    std::string reply;
    io->Enter(reply);
    wall += std::chrono::duration<double>(Clock::now() - start).count();
    cpu += ThreadCpuSeconds() - cpu0;
    bytes += static_cast<double>(reply.size() + 1);
  }
  const double lineBytesPerSecond = baud / 10.0;
  state.counters["bytes"] = bytes / static_cast<double>(state.iterations());
  state.counters["fraction_of_line_rate"] = bytes / wall / lineBytesPerSecond;
  state.counters["cpu_per_wall"] = cpu / wall;
}
BENCHMARK(PacedLine)->Arg(57600)->Arg(9600)->ArgName("baud")->Iterations(1)->UseRealTime()->Unit(benchmark::kSecond);

void Query(benchmark::State& state) {
  Bench bench(sim::Faults{});
  const auto io = bench.Open(static_cast<int>(state.range(0)));
  io->SetTimeout(2000);
  io->Clear();
  for (auto _ : state) {
    io->Output("*IDN?");
    std::string reply;
    io->Enter(reply);
    benchmark::DoNotOptimize(reply);
  }
  state.SetLabel(kBackendNames[state.range(0)]);
}
BENCHMARK(Query)->DenseRange(kPty, kPrologixTcp)->ArgName("backend")->UseRealTime()->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace cvn73100::io

BENCHMARK_MAIN();
