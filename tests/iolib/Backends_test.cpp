// What every backend promises alike: it identifies the instrument, honours its timeout against a silent one,
// drops a reply that came too late, and carries binary blocks both ways unchanged.
#include <gtest/gtest.h>

#include "tests/iolib/IoTestSupport.h"

namespace cvn73100::io {
namespace {

class BackendTest : public ::testing::TestWithParam<const char*> {
 protected:
  std::shared_ptr<IInstrumentIO> Open() {
    auto io = rig.manager.Open(GetParam());
    io->SetTimeout(2000);
    io->Clear();
    return io;
  }
  test::Backends rig;
};

TEST_P(BackendTest, Identifies) {
  EXPECT_EQ(test::Query(*Open(), "*IDN?"), "Corvane Technologies,73135D,QX40001234,A.02.10");
}

TEST_P(BackendTest, TimesOutAgainstASilentInstrument) {
  rig.SetFaults({.silent = true});
  test::ExpectSilentTimeout(*Open(), 250);
}

// A message-based bus drops a reply the timeout gave up on; a serial line keeps it until the next write.
using MessageBusTest = BackendTest;
TEST_P(MessageBusTest, DropsALateReply) {
  rig.SetFaults({.lateReplyMs = 150});
  test::ExpectLateReplyDropped(*Open(), 50, 400);
}

TEST_P(BackendTest, BinaryBlocksReadExactlyAndWriteBack) {
  const auto io = Open();
  io->Output(":WAVeform:FORMat WORD;:WAVeform:POINts 1000;:WAVeform:DATA?");
  EXPECT_EQ(test::ReadBlock(*io).size(), 2000u);
  io->Output(":SYSTem:SETup?");
  const Bytes setup = test::ReadBlock(*io);
  ASSERT_FALSE(setup.empty());
  test::ExpectSetupWritesBack(*io, setup);
}

// A bus that sees its listeners knows at once that nobody is at an address; an adapter cannot tell, and times out.
TEST(EmptyAddressTest, NoListenerAtOnceOrATimeout) {
  test::Backends rig;
  const struct {
    const char* address;
    std::int32_t output, enter;
  } cases[] = {{"GPIB0::5::INSTR", IOERR_NO_LISTENER, IOERR_NO_LISTENER},
               {"GPIB3::5::INSTR", IOERR_NO_LISTENER, IOERR_NO_LISTENER},
               {"GPIB1::5::INSTR", 0, IOERR_TIMEOUT}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.address);
    const auto io = rig.manager.Open(c.address);
    io->SetTimeout(300);
    io->Clear();  // a device clear to nobody is not an error, as on a real bus
    std::string reply;
    EXPECT_LT(test::Elapsed([&] {
                EXPECT_EQ(test::ConditionOf([&] { io->Output("*IDN?"); }), c.output);
                if (c.output == 0) {
                  EXPECT_EQ(test::ConditionOf([&] { io->Enter(reply); }), c.enter);
                }
              }).count(),
              c.output == 0 ? 600 : 100);
  }
}

const auto kName = [](const auto& param) { return std::string(param.param).substr(0, 5); };
INSTANTIATE_TEST_SUITE_P(Every, BackendTest, ::testing::ValuesIn(test::Backends::kAddresses), kName);
INSTANTIATE_TEST_SUITE_P(Gpib, MessageBusTest,
                         ::testing::ValuesIn(test::Backends::kAddresses, test::Backends::kAddresses + 4), kName);

}  // namespace
}  // namespace cvn73100::io
