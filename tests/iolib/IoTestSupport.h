#pragma once
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <string>

#include "iolib/IOManager.h"
#include "platform/InstrumentIO.h"
#include "simulator/Instrument.h"
#include "simulator/InstrumentPort.h"
#include "simulator/PrologixAdapter.h"
#include "simulator/PtyServer.h"
#include "simulator/SimulatedBus.h"
#include "simulator/SimulatedSerialPort.h"
#include "simulator/TcpServer.h"
#include "tests/support/Process.h"
#include "tests/support/TempDir.h"

namespace cvn73100::io::test {

using cvn73100::test::ErrorOf;
using cvn73100::test::OpenDescriptorCount;
using cvn73100::test::ScopedEnv;

// The I/O condition a call raises, or 0 when it returns normally.
inline std::int32_t ConditionOf(const std::function<void()>& call) { return IOErrorCondition(ErrorOf(call)); }

// How long a call takes.
inline std::chrono::milliseconds Elapsed(const std::function<void()>& call) {
  const auto start = std::chrono::steady_clock::now();
  call();
  return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start);
}

inline std::string Query(IInstrumentIO& io, const std::string& message) {
  io.Output(message);
  std::string reply;
  io.Enter(reply);
  return reply;
}

// A query to a silent instrument times out after `timeoutMs`, neither early nor much late.
inline void ExpectSilentTimeout(IInstrumentIO& io, int timeoutMs) {
  io.SetTimeout(timeoutMs);
  io.Output("*IDN?");
  std::string reply;
  const auto elapsed = Elapsed([&] { EXPECT_EQ(ConditionOf([&] { io.Enter(reply); }), IOERR_TIMEOUT); });
  EXPECT_GE(elapsed.count(), timeoutMs - 10);
  EXPECT_LT(elapsed.count(), timeoutMs + 150);
}

// An instrument that answers `lateMs` after a query, with `shortMs` < `lateMs` < `longMs`: the reply the timeout
// gave up on must be gone, so the next wait sees nothing and the next query gets its own answer.
inline void ExpectLateReplyDropped(IInstrumentIO& io, int shortMs, int longMs) {
  io.SetTimeout(shortMs);
  io.Output("*IDN?");
  std::string reply;
  EXPECT_EQ(ConditionOf([&] { io.Enter(reply); }), IOERR_TIMEOUT);
  io.SetTimeout(longMs);
  EXPECT_EQ(ConditionOf([&] { io.Enter(reply); }), IOERR_TIMEOUT) << reply;
  EXPECT_EQ(Query(io, "*OPC?"), "1");
}

// Reads one definite-length block reply ("#NDDD<bytes>" and its LF) with ReadBytes.
inline Bytes ReadBlock(IInstrumentIO& io) {
  Bytes head;
  io.ReadBytes(2, head);
  EXPECT_EQ(head[0], '#');
  const int digits = head[1] - '0';
  Bytes length;
  io.ReadBytes(digits, length);
  Bytes data;
  io.ReadBytes(std::stoi(std::string(length.begin(), length.end())), data);
  Bytes end;
  io.ReadBytes(1, end);
  EXPECT_EQ(end[0], '\n');
  return data;
}

// "<header> #<n><length><data>" and LF: a program message carrying a definite-length block.
inline Bytes BlockMessage(const std::string& header, const Bytes& data) {
  const std::string length = std::to_string(data.size());
  const std::string head = header + " #" + std::to_string(length.size()) + length;
  Bytes message(head.begin(), head.end());
  message.insert(message.end(), data.begin(), data.end());
  message.push_back('\n');
  return message;
}

// Writes `setup` back as a definite-length block over a changed time base: it reads back unchanged, error-free.
inline void ExpectSetupWritesBack(IInstrumentIO& io, const Bytes& setup) {
  io.Output(":TIMebase:RANGe 1");
  const Bytes message = BlockMessage(":SYSTem:SETup", setup);
  io.WriteBytes(static_cast<std::int32_t>(message.size()), message);
  io.Output(":SYSTem:SETup?");
  EXPECT_EQ(ReadBlock(io), setup);
  EXPECT_EQ(std::stoi(Query(io, ":SYSTem:ERRor?")), 0);
}

// The stand-in linux-gpib library's test controls (the I/O library loads the same copy by its path).
struct StandIn {
  StandIn() : handle(::dlopen(CVN_STANDIN_GPIB, RTLD_NOW | RTLD_LOCAL)) {
    if (!handle) return;
    reset = reinterpret_cast<void (*)()>(::dlsym(handle, "cvn_standin_reset"));
    addBoard = reinterpret_cast<void (*)(int)>(::dlsym(handle, "cvn_standin_add_board"));
    attach = reinterpret_cast<void (*)(int, int, int, int)>(::dlsym(handle, "cvn_standin_attach"));
    openDescriptors = reinterpret_cast<int (*)()>(::dlsym(handle, "cvn_standin_open_descriptors"));
  }
  void* handle;
  void (*reset)() = nullptr;
  void (*addBoard)(int) = nullptr;
  void (*attach)(int board, int pad, int silent, int lateReplyMs) = nullptr;
  int (*openDescriptors)() = nullptr;
};

// The simulated instrument behind every backend: GPIB0 the in-process bus, GPIB1 an adapter over loopback TCP,
// GPIB2 an adapter over a pseudo-terminal, GPIB3 the stand-in linux-gpib library, all at address 7; COM1 a
// pseudo-terminal, COM2 a missing device node, COM3 the in-process serial line.
class Backends {
 public:
  static constexpr const char* kAddresses[] = {
      "GPIB0::7::INSTR", "GPIB1::7::INSTR", "GPIB2::7::INSTR", "GPIB3::7::INSTR", "COM1", "COM3"};

  Backends() {
    for (auto* adapter : {&m_ethernet, &m_usb}) adapter->Attach(7, m_adapterInstrument);
    standIn.reset();
    standIn.attach(3, 7, 0, 0);
    bus->Attach(7, m_busInstrument);
    manager.SetSimulatedBus(0, bus);
    manager.SetSimulatedSerialPort(3, std::make_shared<sim::SimulatedSerialPort>(m_serialInstrument));
  }
  ~Backends() { standIn.reset(); }

  // Gives every instrument `faults` (the stand-in knows only silence and late replies).
  void SetFaults(const sim::Faults& faults) {
    for (sim::Instrument* i : {&m_ptyInstrument, &m_adapterInstrument, m_busInstrument.get(), m_serialInstrument.get()})
      i->SetFaults(faults);
    standIn.attach(3, 7, faults.silent ? 1 : 0, faults.lateReplyMs);
  }

  StandIn standIn;
  std::shared_ptr<sim::SimulatedBus> bus = std::make_shared<sim::SimulatedBus>();
  std::shared_ptr<sim::Instrument> m_busInstrument = std::make_shared<sim::Instrument>();
  std::shared_ptr<sim::Instrument> m_serialInstrument = std::make_shared<sim::Instrument>();
  sim::Instrument m_ptyInstrument;
  sim::InstrumentPort m_ptyPort{m_ptyInstrument, sim::InstrumentPort::Line::Serial};
  sim::Instrument m_adapterInstrument;
  sim::PrologixAdapter m_ethernet{sim::PrologixAdapter::Model::Ethernet};
  sim::PrologixAdapter m_usb{sim::PrologixAdapter::Model::Usb};
  sim::PtyServer pty{m_ptyPort};
  sim::TcpServer tcp{m_ethernet, 0};
  sim::PtyServer adapterPty{m_usb};
  IOManager manager{BoardMap::FromText(
      "GPIB0 = sim\nGPIB1 = prologix-tcp:127.0.0.1:" + std::to_string(tcp.Port()) +
      "\nGPIB2 = prologix-serial:" + adapterPty.DevicePath() + "\nGPIB3 = linux-gpib:3\nLIBGPIB = " + CVN_STANDIN_GPIB +
      "\nCOM1 = " + pty.DevicePath() + "\nCOM2 = /dev/cvn-no-such-node\nCOM3 = sim\n")};
};

}  // namespace cvn73100::io::test
