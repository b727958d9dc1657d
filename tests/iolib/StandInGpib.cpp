// A stand-in for the linux-gpib user library, built only for the tests: it exports the C entry points the
// I/O library loads with dlopen and serves them from simulated instruments in this process, so the dlopen
// path runs end to end without GPIB hardware. The cvn_standin_* functions let a test place instruments.
#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

#include "simulator/Instrument.h"

#define STANDIN_EXPORT extern "C" __attribute__((visibility("default")))

namespace {

constexpr int ERR = 0x8000, TIMO = 0x4000, END = 0x2000, CMPL = 0x0100;
constexpr int ENOL = 2, EARG = 4, EABO = 6, ENEB = 7;
constexpr int REOS = 0x0400, BIN = 0x1000;
constexpr int IbaPAD = 0x1;
constexpr std::uint16_t NOADDR = 0xFFFF;
constexpr int kFirstDevice = 16;
constexpr std::int64_t kStepMicroseconds[] = {0,       10,       30,       100,       300,       1000,
                                              3000,    10000,    30000,    100000,    300000,    1000000,
                                              3000000, 10000000, 30000000, 100000000, 300000000, 1000000000};

struct Descriptor {
  int board = 0, pad = 0, step = 12, eos = 0;
  bool eot = true;
};

struct Bus {
  std::mutex mutex;
  std::map<int, bool> boards;                                                             // board index -> present
  std::map<std::pair<int, int>, std::shared_ptr<cvn73100::sim::Instrument>> instruments;  // (board, pad)
  std::map<int, Descriptor> descriptors;
  int next = kFirstDevice;
};

Bus& TheBus() {
  static Bus bus;
  return bus;
}

thread_local int t_iberr = 0;
thread_local long t_ibcntl = 0;
thread_local int t_ibsta = 0;

int Done(int status, int err = 0, long count = 0) {
  t_ibsta = status;
  t_iberr = err;
  t_ibcntl = count;
  return status;
}

int Fail(int err, long count = 0, int extra = 0) { return Done(ERR | extra, err, count); }

// An open descriptor and the instrument at its address (null when nobody is there).
struct Device {
  Descriptor descriptor;
  std::shared_ptr<cvn73100::sim::Instrument> instrument;
};

std::optional<Device> Lookup(int ud) {
  Bus& bus = TheBus();
  std::lock_guard lock(bus.mutex);
  const auto found = bus.descriptors.find(ud);
  if (found == bus.descriptors.end()) return std::nullopt;
  const auto device = bus.instruments.find({found->second.board, found->second.pad});
  return Device{found->second, device == bus.instruments.end() ? nullptr : device->second};
}

}  // namespace

// Test control: a board with no instruments, an instrument at (board, pad) with optional faults, everything removed.
STANDIN_EXPORT void cvn_standin_add_board(int board) {
  std::lock_guard lock(TheBus().mutex);
  TheBus().boards[board] = true;
}

STANDIN_EXPORT void cvn_standin_attach(int board, int pad, int silent, int lateReplyMs) {
  cvn73100::sim::InstrumentConfig config{};
  config.faults.silent = silent != 0;
  config.faults.lateReplyMs = lateReplyMs;
  config.gpibAddress = pad;
  auto instrument = std::make_shared<cvn73100::sim::Instrument>(config);
  std::lock_guard lock(TheBus().mutex);
  TheBus().boards[board] = true;
  TheBus().instruments[{board, pad}] = std::move(instrument);
}

STANDIN_EXPORT void cvn_standin_reset() {
  std::lock_guard lock(TheBus().mutex);
  TheBus().boards.clear();
  TheBus().instruments.clear();
}

// Device descriptors currently open (ibdev without ibonl 0).
STANDIN_EXPORT int cvn_standin_open_descriptors() {
  std::lock_guard lock(TheBus().mutex);
  return static_cast<int>(TheBus().descriptors.size());
}

STANDIN_EXPORT int ibdev(int board, int pad, int, int timo, int sendEoi, int eos) {
  Bus& bus = TheBus();
  std::lock_guard lock(bus.mutex);
  if (!bus.boards.count(board) || pad < 0 || pad > 30) {
    Fail(bus.boards.count(board) ? EARG : ENEB);
    return -1;
  }
  const int ud = bus.next++;
  bus.descriptors[ud] = Descriptor{board, pad, timo >= 0 && timo <= 17 ? timo : 0, eos, sendEoi != 0};
  Done(CMPL);
  return ud;
}

STANDIN_EXPORT int ibonl(int ud, int online) {
  Bus& bus = TheBus();
  std::lock_guard lock(bus.mutex);
  if (!bus.descriptors.count(ud)) return Fail(EARG);
  if (online == 0) bus.descriptors.erase(ud);
  return Done(CMPL);
}

STANDIN_EXPORT int ibtmo(int ud, int step) {
  Bus& bus = TheBus();
  std::lock_guard lock(bus.mutex);
  const auto found = bus.descriptors.find(ud);
  if (found == bus.descriptors.end() || step < 0 || step > 17) return Fail(EARG);
  found->second.step = step;
  return Done(CMPL);
}

STANDIN_EXPORT int ibeos(int ud, int mode) {
  Bus& bus = TheBus();
  std::lock_guard lock(bus.mutex);
  const auto found = bus.descriptors.find(ud);
  if (found == bus.descriptors.end()) return Fail(EARG);
  found->second.eos = mode;
  return Done(CMPL);
}

STANDIN_EXPORT int ibwrt(int ud, const void* data, long count) {
  const auto device = Lookup(ud);
  if (!device) return Fail(EARG);
  const auto& [descriptor, instrument] = *device;
  if (!instrument) return Fail(ENOL);  // nobody accepts the listen address
  instrument->Write(static_cast<const std::uint8_t*>(data), static_cast<std::size_t>(count), descriptor.eot);
  return Done(CMPL, 0, count);
}

STANDIN_EXPORT int ibrd(int ud, void* data, long count) {
  const auto device = Lookup(ud);
  if (!device) return Fail(EARG);
  const auto& [descriptor, instrument] = *device;
  const auto timeout = std::chrono::microseconds(kStepMicroseconds[descriptor.step]);
  const auto deadline = std::chrono::steady_clock::now() + timeout;
  if (!instrument) {
    std::this_thread::sleep_until(deadline);
    return Fail(EABO, 0, TIMO);
  }
  auto* bytes = static_cast<std::uint8_t*>(data);
  const bool stopAtEos = (descriptor.eos & REOS) != 0;
  const auto eosByte = static_cast<std::uint8_t>(descriptor.eos & 0xFF);
  long got = 0;
  while (got < count) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    if (left.count() <= 0) return Fail(EABO, got, TIMO);
    bool end = false;
    // With an EOS byte, take one byte at a time so the read stops right after it.
    const std::size_t want = stopAtEos ? 1 : static_cast<std::size_t>(count - got);
    const std::size_t n = instrument->Read(bytes + got, want, left, end);
    got += static_cast<long>(n);
    const bool eosSeen =
        stopAtEos && n > 0 &&
        ((descriptor.eos & BIN) ? bytes[got - 1] == eosByte : (bytes[got - 1] & 0x7F) == (eosByte & 0x7F));
    if (end || eosSeen) return Done(CMPL | END, 0, got);
  }
  return Done(CMPL, 0, got);
}

STANDIN_EXPORT int ibclr(int ud) {
  const auto device = Lookup(ud);
  if (!device) return Fail(EARG);
  if (device->instrument) device->instrument->DeviceClear();
  return Done(CMPL);
}

STANDIN_EXPORT int ibloc(int ud) { return Lookup(ud) ? Done(CMPL) : Fail(EARG); }

STANDIN_EXPORT int ibask(int ud, int option, int* value) {
  Bus& bus = TheBus();
  std::lock_guard lock(bus.mutex);
  if (ud < kFirstDevice && !bus.boards.count(ud)) return Fail(ENEB);
  if (option != IbaPAD) return Fail(EARG);
  *value = 0;  // the board's own address
  return Done(CMPL);
}

STANDIN_EXPORT void FindLstn(int board, const std::uint16_t* pads, std::uint16_t* results, int max) {
  Bus& bus = TheBus();
  std::lock_guard lock(bus.mutex);
  if (!bus.boards.count(board)) {
    Fail(ENEB);
    return;
  }
  int found = 0;
  for (; *pads != NOADDR; ++pads) {
    if (!bus.instruments.count({board, *pads})) continue;
    if (found == max) {
      Fail(20, found);  // ETAB
      return;
    }
    results[found++] = *pads;
  }
  if (found < max) results[found] = NOADDR;
  Done(CMPL, 0, found);
}

STANDIN_EXPORT int ThreadIbsta() { return t_ibsta; }
STANDIN_EXPORT int ThreadIberr() { return t_iberr; }
STANDIN_EXPORT int ThreadIbcnt() { return static_cast<int>(t_ibcntl); }
STANDIN_EXPORT long ThreadIbcntl() { return t_ibcntl; }
