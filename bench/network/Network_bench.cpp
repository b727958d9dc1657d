// VXI-11 through the I/O library, reported as ratios:
// - Vxi11Query: one *IDN? round trip on an open link (bench/vxi11_compare.py sets CVN73100_BENCH_VXI11=HOST:PORT
//   to time it on the simulator's gateway, where PyVISA-py is timed too; otherwise on a gateway in this process).
// - Vxi11Block: the screen image as a BMP block (640 x 480 x 24 bits, 0.88 MiB) read from an instrument that has it
//   ready: bytes per second / a plain loopback TCP copy of the same size (goal: 0.5 or more).
#include <arpa/inet.h>
#include <benchmark/benchmark.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "iolib/IOManager.h"
#include "simulator/Instrument.h"
#include "simulator/Vxi11Gateway.h"

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
  ::bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address);
  ::listen(listener, 1);
  ::getsockname(listener, reinterpret_cast<sockaddr*>(&address), &length);
  const int reader = ::socket(AF_INET, SOCK_STREAM, 0);
  ::connect(reader, reinterpret_cast<sockaddr*>(&address), sizeof address);
  const int writer = ::accept(listener, nullptr, nullptr);
  std::vector<char> out(size, 'x'), in(64u << 10);
  const auto start = Clock::now();
  std::thread send([&] {
    for (std::size_t done = 0; done < size;)
      done += static_cast<std::size_t>(::send(writer, out.data() + done, size - done, 0));
  });
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

}  // namespace
}  // namespace cvn73100::io

BENCHMARK_MAIN();
