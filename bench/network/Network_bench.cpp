// VXI-11 through the I/O library, reported as ratios:
// - Vxi11Query: one *IDN? round trip on an open link (bench/vxi11_compare.py sets CVN73100_BENCH_VXI11=HOST:PORT
//   to time it on the simulator's gateway, where PyVISA-py is timed too; otherwise on a gateway in this process).
// - Vxi11Block: the screen image as a BMP block (640 x 480 x 24 bits, 0.88 MiB) read from an instrument that has it
//   ready: bytes per second / a plain loopback TCP copy of the same size (goal: 0.5 or more).
// - Rfc2217PacedLine: an ASCII waveform from an instrument that sends at 9600 baud on a pseudo-terminal which
//   ser2net serves with RFC 2217: bytes per second / line rate (goal: 0.95 or more).
#include <arpa/inet.h>
#include <benchmark/benchmark.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <future>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "iolib/IOManager.h"
#include "simulator/Instrument.h"
#include "simulator/InstrumentPort.h"
#include "simulator/PtyServer.h"
#include "simulator/Vxi11Gateway.h"
#include "tests/network/NetworkPeers.h"

namespace cvn73100::io {
namespace {

using Clock = std::chrono::steady_clock;

struct Gateway {
  Gateway() {
    std::array<sim::Instrument*, 31> behind{};
    behind[7] = &instrument;
    gateway = std::make_unique<sim::Vxi11Gateway>(behind, 0, false);
  }
  static std::shared_ptr<IInstrumentIO> Open(const std::string& endpoint) {
    IOManager manager(BoardMap::FromText("GPIB1 = vxi11:" + endpoint));
    auto io = manager.Open("GPIB1::7::INSTR");
    io->SetTimeout(5000);
    return io;
  }
  std::string Endpoint() const { return "127.0.0.1:" + std::to_string(gateway->Port()); }

  sim::Instrument instrument;
  std::unique_ptr<sim::Vxi11Gateway> gateway;
};

void Vxi11Query(benchmark::State& state) {
  const char* outside = std::getenv("CVN73100_BENCH_VXI11");
  std::unique_ptr<Gateway> own;
  if (outside == nullptr) own = std::make_unique<Gateway>();
  const auto io = Gateway::Open(own ? own->Endpoint() : outside);
  for (auto _ : state) {
    io->Output("*IDN?");
    std::string reply;
    io->Enter(reply);
    benchmark::DoNotOptimize(reply);
  }
  state.SetLabel(outside ? std::string("gateway at ") + outside : "gateway in this process");
}
BENCHMARK(Vxi11Query)->UseRealTime()->Unit(benchmark::kMicrosecond);

// Seconds to copy `size` bytes over a loopback TCP connection (writer thread, reader here).
double TcpCopySeconds(std::size_t size) {
  const int listener = ::socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof address;
  if (::bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 || ::listen(listener, 1) != 0)
    throw std::runtime_error("no loopback listener");
  ::getsockname(listener, reinterpret_cast<sockaddr*>(&address), &length);
  const int reader = ::socket(AF_INET, SOCK_STREAM, 0);
  ::connect(reader, reinterpret_cast<sockaddr*>(&address), sizeof address);
  const int writer = ::accept(listener, nullptr, nullptr);
  std::vector<char> out(size, 'x'), in(64u << 10);
  std::promise<void> go;
  std::thread send([&, started = go.get_future()]() mutable {
    started.wait();  // the thread is running before the clock starts
    for (std::size_t done = 0; done < size;)
      done += static_cast<std::size_t>(::send(writer, out.data() + done, size - done, 0));
  });
  const auto start = Clock::now();
  go.set_value();
  for (std::size_t done = 0; done < size;) done += static_cast<std::size_t>(::recv(reader, in.data(), in.size(), 0));
  const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
  send.join();
  ::close(writer);
  ::close(reader);
  ::close(listener);
  return seconds;
}

void Vxi11Block(benchmark::State& state) {
  Gateway gateway;
  const auto io = gateway.Open(gateway.Endpoint());
  Bytes block;
  double copySeconds = 0;
  for (auto _ : state) {
    state.PauseTiming();
    io->Output(":DISPlay:DATA? BMP");
    gateway.instrument.WaitReadable(std::chrono::seconds(5));  // rendered and queued: from here on it is transport
    state.ResumeTiming();
    io->ReadBytes(2 << 20, block);  // ends at END, after the block's LF
    state.PauseTiming();
    copySeconds += TcpCopySeconds(block.size());
    state.ResumeTiming();
  }
  const double bytes = static_cast<double>(block.size()) * static_cast<double>(state.iterations());
  state.counters["block_B"] = static_cast<double>(block.size());
  state.counters["bytes_per_second"] = benchmark::Counter(bytes, benchmark::Counter::kIsRate);
  state.counters["tcp_copy_bytes_per_second"] = bytes / copySeconds;
}
BENCHMARK(Vxi11Block)->UseRealTime()->Unit(benchmark::kMillisecond);

void Rfc2217PacedLine(benchmark::State& state) {
  if (!network::Ser2net::Installed()) return state.SkipWithError("ser2net is not installed");
  constexpr int kBaud = 9600;
  sim::Instrument instrument;
  sim::Faults faults;
  faults.lineBaud = kBaud;
  instrument.SetFaults(faults);
  sim::InstrumentPort port(instrument, sim::InstrumentPort::Line::Serial);
  sim::PtyServer pty(port);
  char pattern[] = "/tmp/cvnbench.XXXXXX";
  const std::string directory = ::mkdtemp(pattern);
  double bytes = 0, wall = 0;
  {
    network::Ser2net server(pty.DevicePath(), directory);
    if (!server.ready) return state.SkipWithError("ser2net did not start");
    IOManager manager(BoardMap::FromText("COM1 = rfc2217:127.0.0.1:" + std::to_string(server.rfc2217Port)));
    const auto io = manager.Open("COM1");
    io->Serial()->SetBaudRate(kBaud);
    io->SetTimeout(60'000);
    io->Output(":WAVeform:FORMat ASCii;:WAVeform:POINts 1000");
    for (auto _ : state) {
      const auto start = Clock::now();
      io->Output(":WAVeform:DATA?");
      std::string reply;
      io->Enter(reply);
      wall += std::chrono::duration<double>(Clock::now() - start).count();
      bytes += static_cast<double>(reply.size() + 1);
    }
  }
  std::filesystem::remove_all(directory);
  state.counters["bytes"] = bytes / static_cast<double>(state.iterations());
  state.counters["fraction_of_line_rate"] = bytes / wall / (kBaud / 10.0);
}
BENCHMARK(Rfc2217PacedLine)->Iterations(1)->UseRealTime()->Unit(benchmark::kSecond);

}  // namespace
}  // namespace cvn73100::io

BENCHMARK_MAIN();
