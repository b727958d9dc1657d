#include <dlfcn.h>
#include <gtest/gtest.h>

#include "iolib/IOManager.h"
#include "iolib/SimulatedBus.h"
#include "simulator/Instrument.h"
#include "simulator/InstrumentPort.h"
#include "simulator/PrologixAdapter.h"
#include "simulator/PtyServer.h"
#include "simulator/TcpServer.h"
#include "tests/iolib/IoTestSupport.h"

namespace cvn73100::io {
namespace {

// Open and close paired on every path: many cycles, some with a query, some failing, leave no descriptor behind.
TEST(OpenCloseTest, ManyCyclesLeaveNoDescriptorBehind) {
  void* standIn = ::dlopen(CVN_STANDIN_GPIB, RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(standIn, nullptr);
  reinterpret_cast<void (*)(int, int, int, int)>(::dlsym(standIn, "cvn_standin_attach"))(3, 7, 0, 0);

  sim::Instrument serialInstrument;
  sim::InstrumentPort port(serialInstrument, sim::InstrumentPort::Line::Serial);
  sim::PtyServer pty(port);
  sim::Instrument gpibInstrument;
  sim::PrologixAdapter adapter(sim::PrologixAdapter::Model::Ethernet);
  adapter.Attach(7, gpibInstrument);
  sim::TcpServer tcp(adapter, 0);
  BoardMap map = BoardMap::FromText("COM1 = " + pty.DevicePath() + "\nCOM2 = /dev/cvn-no-such-node\n" +
                                    "GPIB0 = sim\nGPIB1 = prologix-tcp:127.0.0.1:" + std::to_string(tcp.Port()) +
                                    "\nGPIB3 = linux-gpib:3\nLIBGPIB = " + CVN_STANDIN_GPIB + "\n");
  IOManager manager(map);
  auto bus = std::make_shared<SimulatedBus>();
  bus->Attach(7, std::make_shared<sim::Instrument>());
  manager.SetSimulatedBus(0, bus);

  auto query = [](IInstrumentIO& io) {
    io.SetTimeout(1000);
    EXPECT_EQ(test::Query(io, "*OPC?"), "1");
  };
  // Warm up once so that lazily made things (the loaded library, the simulator threads) are counted as base.
  const char* addresses[] = {"COM1", "GPIB0::7::INSTR", "GPIB3::7::INSTR", "GPIB1::7::INSTR"};
  for (const char* address : addresses) query(*manager.Open(address));
  const int before = test::OpenDescriptorCount();

  for (const char* address : addresses) {
    SCOPED_TRACE(address);
    for (int i = 0; i < 10000; ++i) {
      const auto io = manager.Open(address);
      if (i % 1000 == 0) query(*io);
      if (i % 2 == 0) io->Port().Close();  // the other half close by release
    }
    EXPECT_EQ(test::OpenDescriptorCount(), before);
  }
  for (int i = 0; i < 1000; ++i) EXPECT_EQ(test::ConditionOf([&] { manager.Open("COM2"); }), IOERR_OPEN_FAILED);
  EXPECT_EQ(test::OpenDescriptorCount(), before);
}

}  // namespace
}  // namespace cvn73100::io
