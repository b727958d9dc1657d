#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <memory>

#include "iolib/IOManager.h"
#include "iolib/SimulatedBus.h"
#include "platform/Interrupt.h"
#include "platform/Os.h"
#include "simulator/InstrumentPort.h"
#include "simulator/PtyServer.h"

namespace cvn73100::io {
namespace {

// Every long wait ends with Interrupted once a check says stop, long before its own limit: a wait that ignored
// the check would end with the I/O library's timeout instead, after a minute.
TEST(InterruptTest, EveryLongWaitEndsWhenACheckSaysStop) {
  sim::Instrument silent;
  silent.SetFaults({.silent = true});
  sim::InstrumentPort port(silent, sim::InstrumentPort::Line::Serial);
  sim::PtyServer pty(port);
  auto bus = std::make_shared<SimulatedBus>();
  auto inProcess = std::make_shared<sim::Instrument>();
  inProcess->SetFaults({.silent = true});
  bus->Attach(7, inProcess);
  IOManager manager(BoardMap::FromText("COM1 = " + pty.DevicePath() + "\nCOM3 = sim\nGPIB0 = sim\n"));
  manager.SetSimulatedBus(0, bus);
  manager.SetSimulatedSerialInstrument(3, inProcess);

  const auto read = [&](const char* address) {
    return [&manager, address] {
      const auto io = manager.Open(address);
      io->SetTimeout(60'000);
      std::string reply;
      io->Enter(reply);
    };
  };
  const struct {
    const char* wait;
    std::function<void()> call;
  } waits[] = {
      {"a pseudo-terminal read", read("COM1")},
      {"an in-process serial read", read("COM3")},
      {"a simulated-bus read", read("GPIB0::7::INSTR")},
      {"a read from an empty bus address", read("GPIB0::9::INSTR")},
      {"a sleep until a tick", [] { Os::Current().SleepUntilTick(Os::Current().GetTickCount() + 60'000); }},
  };
  for (const auto& wait : waits) {
    std::atomic<int> asked{0};
    Interrupt::Scope scope([&asked] { return ++asked > 2; });
    EXPECT_THROW(wait.call(), Interrupted) << wait.wait;
  }
}

TEST(InterruptTest, NoCheckMeansNoInterruption) {
  EXPECT_FALSE(Interrupt::Installed());
  EXPECT_NO_THROW(Interrupt::Check());
  EXPECT_FALSE(Interrupt::Current());
  bool stop = false;
  Interrupt::Scope outer([&stop] { return stop; });
  const Interrupt::Check_t forWorker = Interrupt::Current();
  EXPECT_FALSE(forWorker());
  stop = true;
  EXPECT_TRUE(forWorker());
  EXPECT_THROW(Interrupt::Check(), Interrupted);
}

}  // namespace
}  // namespace cvn73100::io
