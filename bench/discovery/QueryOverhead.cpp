// What one RS-232 identification query costs above the waits it must make, and above the system calls that
// its exchange needs at the least.
//
// Every wait of the query ends on the first tick of the millisecond counter after its start + its length. An
// Os installed here records, for each wait, the instant it read the counter and the instant of the tick that
// ends it, so the mandated time of each query is known to the nanosecond; the rest is the query's "overhead".
// Two floors are timed on the same node in the same run, with bare system calls and nothing else:
// - the query's own sequence (open, raw 8N1 settings, flush, CR LF, "*IDN?", read the reply, close) with the same
//   waits, its time outside the waits being the least any implementation of the query can spend;
// - a plain open, "*IDN?", read, close with no waits: the least a peer that only asks "*IDN?" can spend;
// - "*IDN?" and its reply on a port kept open.
//
//   query_overhead ADDRESS NODE [CYCLES] [TX_DELAY_MS]
//
// ADDRESS is the control's serial address of NODE, e.g. "COM1::Baud=9600,Handshake=DTR_DSR" with the board map
// pointing COM1 at NODE. Prints one JSON object of medians over CYCLES rounds, in seconds; `above_floor_s` is the
// median of each round's overhead less the floor timed in the same round, both having seen the same moment.
#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "connection/CQueryInstrument.h"
#include "ioconfig/CIOconfiguration.h"
#include "iolib/IOLibrary.h"
#include "platform/Components.h"
#include "platform/Os.h"

namespace {

using namespace cvn73100;

std::int64_t NowNs() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<std::int64_t>(now.tv_sec) * 1'000'000'000 + now.tv_nsec;
}

// The real clock and sleep, with the time each wait is owed added up.
class WaitRecordingOs : public RealOs {
 public:
  std::int32_t GetTickCount() override {
    m_lastReadNs = NowNs();
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(m_lastReadNs / 1'000'000));
  }
  void SleepUntilTick(std::int32_t tick) override {
    const std::int64_t readMs = m_lastReadNs / 1'000'000;
    const auto ahead = static_cast<std::int32_t>(static_cast<std::uint32_t>(tick) - static_cast<std::uint32_t>(readMs));
    if (ahead > 0) m_mandatedNs += (readMs + ahead) * 1'000'000 - m_lastReadNs;
    RealOs::SleepUntilTick(tick);
  }
  // A wait as the query makes it: until the counter passes its start + `ms`.
  void Wait(std::int32_t ms) { SleepUntilTick(GetTickCount() + ms + 1); }
  std::int64_t TakeMandatedNs() { return std::exchange(m_mandatedNs, 0); }

 private:
  std::int64_t m_lastReadNs = 0;
  std::int64_t m_mandatedNs = 0;
};

double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  const std::size_t n = values.size();
  return n % 2 ? values[n / 2] : (values[n / 2 - 1] + values[n / 2]) / 2;
}

constexpr int OPEN_PORT_ROUNDS = 1000;

void Check(bool ok, const char* what) {
  if (!ok) throw std::runtime_error(what);
}

void ReadLine(int fd) {
  char reply[256];
  std::size_t got = 0;
  while (got == 0 || reply[got - 1] != '\n') {
    pollfd ready{fd, POLLIN, 0};
    Check(::poll(&ready, 1, 2500) == 1, "poll");
    const ssize_t n = ::read(fd, reply + got, sizeof reply - got);
    Check(n > 0, "read");
    got += static_cast<std::size_t>(n);
  }
}

int OpenRaw(const std::string& node) {
  const int fd = ::open(node.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
  Check(fd >= 0, "open");
  termios settings{};
  Check(::tcgetattr(fd, &settings) == 0, "tcgetattr");
  ::cfmakeraw(&settings);
  ::cfsetispeed(&settings, B9600);
  ::cfsetospeed(&settings, B9600);
  Check(::tcsetattr(fd, TCSANOW, &settings) == 0, "tcsetattr");
  return fd;
}

// The bare system calls of an exchange on `node`; `os` is given for the query's waits, null for none.
void BareExchange(const std::string& node, WaitRecordingOs* os, std::int32_t txDelay) {
  const int fd = OpenRaw(node);
  if (os) {
    Check(::tcflush(fd, TCIFLUSH) == 0, "tcflush");
    os->Wait(CQueryInstrument::SETTLE_MS);
    if (txDelay > 0) os->Wait(txDelay);
    Check(::write(fd, "\r\n", 2) == 2, "write");
    os->Wait(txDelay);
  }
  Check(::write(fd, "*IDN?\n", 6) == 6, "write");
  if (os) os->Wait(txDelay);
  ReadLine(fd);
  if (os) {
    os->Wait(CQueryInstrument::SETTLE_MS);
    if (txDelay > 0) os->Wait(txDelay);
  }
  ::close(fd);
}

}  // namespace

int main(int argc, char** argv) try {
  if (argc < 3 || argc > 5) {
    std::fprintf(stderr, "usage: %s ADDRESS NODE [CYCLES] [TX_DELAY_MS]\n", argv[0]);
    return 2;
  }
  const std::string address = argv[1];
  const std::string node = argv[2];
  const int cycles = argc > 3 ? std::max(1, std::atoi(argv[3])) : 40;
  const std::int32_t txDelay = argc > 4 ? std::atoi(argv[4]) : CQueryInstrument::DEFAULT_TX_DELAY;

  io::RegisterIOLibrary();
  auto configuration = std::make_shared<CIOconfiguration>();
  configuration->SetActiveAddressString(address);
  CQueryInstrument query;
  query.Initialize(txDelay, configuration, Components::CreateIOManager());

  WaitRecordingOs os;
  ScopedOs scoped(os);
  std::vector<double> totals, mandated, overheads, queryFloors, aboveFloors, exchangeFloors;
  std::string reply;
  for (int i = 0; i < cycles; ++i) {
    // Interleaved, so that the three see the same machine.
    reply.clear();
    os.TakeMandatedNs();
    std::int64_t start = NowNs();
    const std::int16_t code = query.RS232IDNQuery(configuration->ActiveAddressString(), reply);
    const std::int64_t total = NowNs() - start;
    const std::int64_t waits = os.TakeMandatedNs();
    if (code != IDNSupported && code != IDNUnsupportedModel && code != IDNNotFamily) {
      std::fprintf(stderr, "query %d on %s: result %d, reply \"%s\"\n", i, address.c_str(), code, reply.c_str());
      return 1;
    }
    totals.push_back(static_cast<double>(total) * 1e-9);
    mandated.push_back(static_cast<double>(waits) * 1e-9);
    overheads.push_back(static_cast<double>(total - waits) * 1e-9);

    start = NowNs();
    BareExchange(node, &os, txDelay);
    queryFloors.push_back(static_cast<double>(NowNs() - start - os.TakeMandatedNs()) * 1e-9);
    aboveFloors.push_back(overheads.back() - queryFloors.back());

    start = NowNs();
    BareExchange(node, nullptr, txDelay);
    exchangeFloors.push_back(static_cast<double>(NowNs() - start) * 1e-9);
  }
  // And "*IDN?" on a port kept open: write, read, nothing else.
  std::vector<double> openFloors;
  const int fd = OpenRaw(node);
  for (int i = 0; i < OPEN_PORT_ROUNDS; ++i) {
    const std::int64_t start = NowNs();
    Check(::write(fd, "*IDN?\n", 6) == 6, "write");
    ReadLine(fd);
    openFloors.push_back(static_cast<double>(NowNs() - start) * 1e-9);
  }
  ::close(fd);
  std::printf(
      "{\"cycles\": %d, \"tx_delay_ms\": %d, \"total_s\": %.9f, \"mandated_s\": %.9f, \"overhead_s\": %.9f, "
      "\"query_floor_s\": %.9f, \"above_floor_s\": %.9f, \"exchange_floor_s\": %.9f, \"open_port_floor_s\": %.9f}\n",
      cycles, txDelay, Median(totals), Median(mandated), Median(overheads), Median(queryFloors), Median(aboveFloors),
      Median(exchangeFloors), Median(openFloors));
  return 0;
} catch (const std::exception& error) {
  std::fprintf(stderr, "query_overhead: %s\n", error.what());
  return 1;
}
