// Block transfers through the automation server: unpaced over the in-process simulated bus (the server's
// own cost), and over a pseudo-terminal from an instrument whose line is paced at 9600 and 57600 baud,
// where the figure that matters is the share of the line rate the transfer reaches.
#include <benchmark/benchmark.h>

#include <chrono>
#include <memory>
#include <string>

#include "iolib/IOManager.h"
#include "server/Cvn73100Server.h"
#include "simulator/Instrument.h"
#include "simulator/InstrumentPort.h"
#include "simulator/PtyServer.h"
#include "simulator/SimulatedBus.h"

namespace cvn73100 {
namespace {

using Clock = std::chrono::steady_clock;

enum Transfer { kSetup, kWaveform, kImageBmp, kImageGif };

const char* Query(Transfer transfer) {
  switch (transfer) {
    case kSetup:
      return ":SYSTem:SETup?";
    case kWaveform:
      return ":WAVeform:DATA?";
    case kImageBmp:
      return ":DISPlay:DATA? BMP";
    case kImageGif:
      return ":DISPlay:DATA? GIF";
  }
  return "";
}

// One block transfer through the server's raw path (the block reader), returning the payload size.
std::size_t TransferBlock(server::Cvn73100Server& server, Transfer transfer) {
  server.Output(Variant(Query(transfer)));
  Variant block;
  server.Enter(block, Variant("B"));
  return block.AsBytes().size();
}

// Bytes on the wire for a block of `payload` bytes: "#<n><length>", the data and the LF.
double WireBytes(std::size_t payload) { return 2.0 + std::to_string(payload).size() + payload + 1.0; }

void PrepareWaveform(server::Cvn73100Server& server) {
  server.Output(Variant(":WAVeform:SOURce CHANnel1;:WAVeform:FORMat WORD;:WAVeform:POINts 1000"));
}

void BM_Unpaced(benchmark::State& state) {
  const auto transfer = static_cast<Transfer>(state.range(0));
  auto manager = std::make_shared<io::IOManager>(io::BoardMap::EmbeddedDefault());
  auto bus = std::make_shared<sim::SimulatedBus>();
  bus->Attach(7, std::make_shared<sim::Instrument>());
  manager->SetSimulatedBus(0, bus);
  server::Cvn73100Server server(manager);
  server.OpenConnection("GPIB0::7::INSTR");
  PrepareWaveform(server);
  std::size_t bytes = 0;
  for (auto _ : state) bytes += TransferBlock(server, transfer);
  state.SetBytesProcessed(static_cast<std::int64_t>(bytes));
}
BENCHMARK(BM_Unpaced)->ArgName("transfer")->DenseRange(kSetup, kImageGif)->Unit(benchmark::kMillisecond);

// Whole operations, each with its preamble and settings round trips.
void BM_UnpacedOperations(benchmark::State& state) {
  auto manager = std::make_shared<io::IOManager>(io::BoardMap::EmbeddedDefault());
  auto bus = std::make_shared<sim::SimulatedBus>();
  bus->Attach(7, std::make_shared<sim::Instrument>());
  manager->SetSimulatedBus(0, bus);
  server::Cvn73100Server server(manager);
  server.OpenConnection("GPIB0::7::INSTR");
  for (auto _ : state) {
    switch (state.range(0)) {
      case 0: {
        Variant time, volts;
        server.GetWaveformData(Cvn73100_Channel_1, Cvn73100_DataPoints_2000, time, volts);
        break;
      }
      case 1:
        benchmark::DoNotOptimize(server.Utilities().ReadStateData());
        break;
      default:
        benchmark::DoNotOptimize(server.GetScreenImage(Cvn73100_ImageFormat_BMP));
        break;
    }
  }
}
BENCHMARK(BM_UnpacedOperations)
    ->ArgName("GetWaveform2000_ReadStateData_GetScreenImageBmp")
    ->DenseRange(0, 2)
    ->Unit(benchmark::kMillisecond);

// An instrument whose output leaves at `baud` / 10 bytes a second, served on a pseudo-terminal mapped to COM1.
void BM_Paced(benchmark::State& state) {
  const auto transfer = static_cast<Transfer>(state.range(0));
  const auto baud = static_cast<int>(state.range(1));
  sim::InstrumentConfig config;
  config.faults.lineBaud = baud;
  sim::Instrument instrument(config);
  sim::InstrumentPort port(instrument, sim::InstrumentPort::Line::Serial);
  sim::PtyServer pty(port);
  io::BoardMap map = io::BoardMap::EmbeddedDefault();
  map.SetCom(1, io::BoardMap::ComTarget{io::BoardMap::ComKind::Node, pty.DevicePath(), "bench"});
  server::Cvn73100Server server(std::make_shared<io::IOManager>(map));
  // DTR/DSR: XON/XOFF flow control would take the 0x11 and 0x13 bytes out of binary blocks.
  server.OpenConnection("COM1::Baud=" + std::to_string(baud) + ",Handshake=DTR_DSR");
  PrepareWaveform(server);

  double payload = 0;
  double wire = 0;
  Clock::duration elapsed{};
  for (auto _ : state) {
    const auto start = Clock::now();
    const std::size_t n = TransferBlock(server, transfer);
    elapsed += Clock::now() - start;
    payload += static_cast<double>(n);
    wire += WireBytes(n);
  }
  const double seconds = std::chrono::duration<double>(elapsed).count();
  const double lineBytesPerSecond = baud / 10.0;
  state.counters["payload_B"] = payload / static_cast<double>(state.iterations());
  state.counters["line_ratio"] = wire / seconds / lineBytesPerSecond;
  state.counters["payload_ratio"] = payload / seconds / lineBytesPerSecond;
}
BENCHMARK(BM_Paced)
    ->ArgNames({"transfer", "baud"})
    ->Args({kSetup, 9600})
    ->Args({kWaveform, 9600})
    ->Args({kImageGif, 9600})
    ->Args({kSetup, 57600})
    ->Args({kWaveform, 57600})
    ->Args({kImageGif, 57600})
    ->Iterations(2)
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

// A settings write through the server checks the instrument's error queue afterwards. Over an unpaced serial
// line this measures what the check adds, in round trips: (checked write - bare write) / one query.
void BM_SettingsWriteCheck(benchmark::State& state) {
  sim::Instrument instrument;
  sim::InstrumentPort port(instrument, sim::InstrumentPort::Line::Serial);
  sim::PtyServer pty(port);
  io::BoardMap map = io::BoardMap::EmbeddedDefault();
  map.SetCom(1, io::BoardMap::ComTarget{io::BoardMap::ComKind::Node, pty.DevicePath(), "bench"});
  server::Cvn73100Server server(std::make_shared<io::IOManager>(map));
  server.OpenConnection("COM1::Baud=115200,Handshake=DTR_DSR");
  const auto timed = [](auto&& action) {
    const auto start = Clock::now();
    action();
    return std::chrono::duration<double, std::micro>(Clock::now() - start).count();
  };
  double bare = 0, checked = 0, query = 0;
  Variant reply;
  for (auto _ : state) {
    // The bare write is followed by an untimed query so that its bytes are consumed before the next step.
    bare += timed([&] { server.Output(Variant(":TIMebase:RANGe 1E-3")); });
    server.Output(Variant("*OPC?"));
    server.Enter(reply, Variant("K"));
    checked += timed([&] { server.Timebase().SetRange(1e-3); });
    query += timed([&] {
      server.Output(Variant("*OPC?"));
      server.Enter(reply, Variant("K"));
    });
  }
  const auto n = static_cast<double>(state.iterations());
  state.counters["bare_us"] = bare / n;
  state.counters["checked_us"] = checked / n;
  state.counters["query_us"] = query / n;
  state.counters["checked_per_bare"] = checked / bare;
  state.counters["extra_round_trips"] = (checked - bare) / query;
}
BENCHMARK(BM_SettingsWriteCheck)->Iterations(200)->UseRealTime()->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace cvn73100

BENCHMARK_MAIN();
