#include <gtest/gtest.h>

#include "iolib/IOManager.h"
#include "iolib/SimulatedBus.h"
#include "simulator/Instrument.h"
#include "tests/iolib/IoTestSupport.h"

namespace cvn73100::io {
namespace {

using test::ConditionOf;

class SimBusTest : public ::testing::Test {
 protected:
  SimBusTest() : m_manager(BoardMap::FromText("GPIB0 = sim\n")) {
    m_bus->Attach(7, m_instrument);
    m_manager.SetSimulatedBus(0, m_bus);
  }

  std::shared_ptr<sim::Instrument> m_instrument = std::make_shared<sim::Instrument>();
  std::shared_ptr<SimulatedBus> m_bus = std::make_shared<SimulatedBus>();
  IOManager m_manager;
};

TEST_F(SimBusTest, AnswersTheIdentificationQuery) {
  const auto io = m_manager.Open("GPIB0::7::INSTR");
  io->SetTimeout(1000);
  io->Clear();
  io->Output("*IDN?");
  std::string reply;
  io->Enter(reply, "K");
  EXPECT_EQ(reply, "Corvane Technologies,73135D,QX40001234,A.02.10");
}

TEST_F(SimBusTest, AnEmptyAddressHasNoListenerAtOnce) {
  const auto io = m_manager.Open("GPIB0::5::INSTR");
  io->SetTimeout(2000);
  io->Clear();  // a device clear to nobody is not an error, as on a real bus
  EXPECT_LT(test::Elapsed([&] {
              EXPECT_EQ(ConditionOf([&] { io->Output("*IDN?"); }), IOERR_NO_LISTENER);
              EXPECT_EQ(ConditionOf([&] { io->WriteBytes(1, Bytes{'x'}); }), IOERR_NO_LISTENER);
            }).count(),
            100);
}

TEST_F(SimBusTest, ALateReplyIsDroppedByClearAndByTheTimeout) {
  m_instrument->SetFaults({.lateReplyMs = 150});
  const auto io = m_manager.Open("GPIB0::7::INSTR");
  io->SetTimeout(400);
  io->Output("*IDN?");
  io->Clear();
  std::string reply;
  EXPECT_EQ(ConditionOf([&] { io->Enter(reply); }), IOERR_TIMEOUT);
  test::ExpectLateReplyDropped(*io, 50, 400);
}

TEST_F(SimBusTest, TimeoutIsHonouredAgainstASilentInstrument) {
  m_instrument->SetFaults({.silent = true});
  test::ExpectSilentTimeout(*m_manager.Open("GPIB0::7::INSTR"), 200);
}

TEST_F(SimBusTest, BinaryBlocksReadExactlyAndWriteBack) {
  const auto io = m_manager.Open("GPIB0::7::INSTR");
  io->SetTimeout(2000);
  io->Output(":WAVeform:FORMat WORD;:WAVeform:POINts 2000;:WAVeform:DATA?");
  EXPECT_EQ(test::ReadBlock(*io).size(), 4000u);
  io->Output(":SYSTem:SETup?");
  const Bytes setup = test::ReadBlock(*io);
  ASSERT_FALSE(setup.empty());
  test::ExpectSetupWritesBack(*io, setup);
}

}  // namespace
}  // namespace cvn73100::io
