#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "iolib/IOManager.h"
#include "iolib/SimulatedBus.h"
#include "simulator/Instrument.h"
#include "tests/iolib/IoTestSupport.h"

namespace cvn73100::io {
namespace {

using std::chrono::milliseconds;
using test::ConditionOf;
using Clock = std::chrono::steady_clock;

class SimBusTest : public ::testing::Test {
 protected:
  SimBusTest() : m_manager(BoardMap::FromText("GPIB0 = sim\n")) {
    m_bus = std::make_shared<SimulatedBus>();
    m_bus->Attach(7, m_instrument);
    m_manager.SetSimulatedBus(0, m_bus);
  }

  std::shared_ptr<IInstrumentIO> Open(const char* address = "GPIB0::7::INSTR") { return m_manager.Open(address); }
  void SetFaults(const sim::Faults& faults) { m_instrument->SetFaults(faults); }

  std::shared_ptr<sim::Instrument> m_instrument = std::make_shared<sim::Instrument>();
  std::shared_ptr<SimulatedBus> m_bus;
  IOManager m_manager;
};

TEST_F(SimBusTest, AnswersTheIdentificationQuery) {
  const auto io = Open();
  io->SetTimeout(1000);
  io->Clear();
  io->Output("*IDN?");
  std::string reply;
  io->Enter(reply, "K");
  EXPECT_EQ(reply, "Corvane Technologies,73135D,QX40001234,A.02.10");
}

TEST_F(SimBusTest, AnEmptyAddressHasNoListenerAtOnce) {
  const auto io = Open("GPIB0::5::INSTR");
  io->SetTimeout(2000);
  io->Clear();  // a device clear to nobody is not an error, as on a real bus
  const auto start = Clock::now();
  EXPECT_EQ(ConditionOf([&] { io->Output("*IDN?"); }), IOERR_NO_LISTENER);
  EXPECT_EQ(ConditionOf([&] { io->WriteBytes(1, Bytes{'x'}); }), IOERR_NO_LISTENER);
  EXPECT_LT(Clock::now() - start, milliseconds(100));
}

TEST_F(SimBusTest, ClearDropsAReplyThatIsStillComing) {
  sim::Faults faults;
  faults.lateReplyMs = 150;
  SetFaults(faults);
  const auto io = Open();
  io->SetTimeout(400);
  io->Output("*IDN?");
  io->Clear();
  std::string reply;
  EXPECT_EQ(ConditionOf([&] { io->Enter(reply); }), IOERR_TIMEOUT);
}

TEST_F(SimBusTest, ALateReplyIsNeverTakenForTheNextOne) {
  sim::Faults faults;
  faults.lateReplyMs = 150;
  SetFaults(faults);
  const auto io = Open();
  io->SetTimeout(50);
  io->Output("*IDN?");
  std::string reply;
  EXPECT_EQ(ConditionOf([&] { io->Enter(reply); }), IOERR_TIMEOUT);
  // The reply to *IDN? would be readable during this wait if the timeout had left it in the instrument.
  io->SetTimeout(400);
  EXPECT_EQ(ConditionOf([&] { io->Enter(reply); }), IOERR_TIMEOUT);
  io->Output("*OPC?");
  io->Enter(reply);
  EXPECT_EQ(reply, "1");
}

TEST_F(SimBusTest, TimeoutIsHonouredAgainstASilentInstrument) {
  sim::Faults faults;
  faults.silent = true;
  SetFaults(faults);
  const auto io = Open();
  io->SetTimeout(200);
  io->Output("*IDN?");
  const auto start = Clock::now();
  std::string reply;
  EXPECT_EQ(ConditionOf([&] { io->Enter(reply); }), IOERR_TIMEOUT);
  const auto elapsed = Clock::now() - start;
  EXPECT_GE(elapsed, milliseconds(200));
  EXPECT_LT(elapsed, milliseconds(350));
}

TEST_F(SimBusTest, BinaryBlocksReadExactlyAndWriteBack) {
  const auto io = Open();
  io->SetTimeout(2000);
  io->Output(":WAVeform:FORMat WORD;:WAVeform:POINts 2000;:WAVeform:DATA?");
  const Bytes data = test::ReadBlock(*io);
  EXPECT_EQ(data.size(), 4000u);

  io->Output(":SYSTem:SETup?");
  const Bytes setup = test::ReadBlock(*io);
  ASSERT_FALSE(setup.empty());
  io->Output(":TIMebase:RANGe 1E-3");
  const Bytes message = test::BlockMessage(":SYSTem:SETup", setup);
  io->WriteBytes(static_cast<std::int32_t>(message.size()), message);
  io->Output(":SYSTem:SETup?");
  EXPECT_EQ(test::ReadBlock(*io), setup);
  io->Output(":SYSTem:ERRor?");
  std::string reply;
  io->Enter(reply);
  EXPECT_EQ(std::stoi(reply), 0) << reply;
}

}  // namespace
}  // namespace cvn73100::io
