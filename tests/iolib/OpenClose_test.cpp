#include <gtest/gtest.h>

#include "tests/iolib/IoTestSupport.h"

namespace cvn73100::io {
namespace {

// Open and close paired on every path: many cycles, some with a query, some failing, leave no descriptor behind.
TEST(OpenCloseTest, ManyCyclesLeaveNoDescriptorBehind) {
  test::Backends rig;
  auto query = [](IInstrumentIO& io) {
    io.SetTimeout(1000);
    EXPECT_EQ(test::Query(io, "*OPC?"), "1");
  };
  // Warm up once so that lazily made things (the loaded library, the simulator threads) are counted as base.
  const char* addresses[] = {"COM1", "GPIB0::7::INSTR", "GPIB3::7::INSTR", "GPIB1::7::INSTR"};
  for (const char* address : addresses) query(*rig.manager.Open(address));
  const int before = test::OpenDescriptorCount();

  for (const char* address : addresses) {
    SCOPED_TRACE(address);
    for (int i = 0; i < 10000; ++i) {
      const auto io = rig.manager.Open(address);
      if (i % 1000 == 0) query(*io);
      if (i % 2 == 0) io->Port().Close();  // the other half close by release
    }
    EXPECT_EQ(test::OpenDescriptorCount(), before);
  }
  for (int i = 0; i < 1000; ++i) EXPECT_EQ(test::ConditionOf([&] { rig.manager.Open("COM2"); }), IOERR_OPEN_FAILED);
  EXPECT_EQ(test::OpenDescriptorCount(), before);
  EXPECT_EQ(rig.standIn.openDescriptors(), 0);
}

}  // namespace
}  // namespace cvn73100::io
