#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cstdio>

#include "iolib/IOManager.h"
#include "iolib/PrologixConnection.h"
#include "simulator/Instrument.h"
#include "simulator/PrologixAdapter.h"
#include "simulator/PtyServer.h"
#include "simulator/TcpServer.h"
#include "tests/iolib/IoTestSupport.h"

namespace cvn73100::io {
namespace {

using test::ConditionOf;

TEST(PrologixEscapeTest, EscapesTheBytesTheAdapterWouldInterpret) {
  const struct {
    Bytes in;
    Bytes out;
  } cases[] = {
      {{}, {}},
      {{'*', 'I', 'D', 'N', '?'}, {'*', 'I', 'D', 'N', '?'}},
      {{0, 1, 2, 13, 3, 10, 4, 27, 5, 43, 6}, {0, 1, 2, 27, 13, 3, 27, 10, 4, 27, 27, 5, 27, 43, 6}},
      {{'+', '+', 'c', 'l', 'r'}, {27, '+', 27, '+', 'c', 'l', 'r'}},
      {{10}, {27, 10}},
      {{0xFF, 0x80, 11, 12}, {0xFF, 0x80, 11, 12}},
  };
  for (const auto& c : cases) EXPECT_EQ(PrologixConnection::Escape(c.in.data(), c.in.size()), c.out);
}

// Instruments at 7 and 9 behind a simulated adapter, reached over loopback TCP (GPIB1) and a pty (GPIB2).
class PrologixTest : public ::testing::Test {
 protected:
  PrologixTest()
      : m_second(SecondConfig()),
        m_ethernet(sim::PrologixAdapter::Model::Ethernet),
        m_usb(sim::PrologixAdapter::Model::Usb) {
    for (auto* adapter : {&m_ethernet, &m_usb}) {
      adapter->Attach(7, m_first);
      adapter->Attach(9, m_second);
    }
    m_tcp = std::make_unique<sim::TcpServer>(m_ethernet, 0);
    m_pty = std::make_unique<sim::PtyServer>(m_usb);
    m_manager = std::make_unique<IOManager>(
        BoardMap::FromText("GPIB1 = prologix-tcp:127.0.0.1:" + std::to_string(m_tcp->Port()) +
                           "\nGPIB2 = prologix-serial:" + m_pty->DevicePath() + "\n"));
  }

  static sim::InstrumentConfig SecondConfig() {
    sim::InstrumentConfig config;
    config.identity.model = "73137A";
    config.gpibAddress = 9;
    return config;
  }

  sim::Instrument m_first;
  sim::Instrument m_second;
  sim::PrologixAdapter m_ethernet;
  sim::PrologixAdapter m_usb;
  std::unique_ptr<sim::TcpServer> m_tcp;
  std::unique_ptr<sim::PtyServer> m_pty;
  std::unique_ptr<IOManager> m_manager;
};

TEST_F(PrologixTest, ListsOnlyTheInterfaceOfAnAdapterThatAnswers) {
  EXPECT_EQ(m_manager->FindResources("GPIB*"), (std::vector<std::string>{"GPIB1::INTFC", "GPIB2::INTFC"}));
  m_tcp.reset();
  EXPECT_EQ(m_manager->FindResources("GPIB*"), (std::vector<std::string>{"GPIB2::INTFC"}));
  EXPECT_EQ(ConditionOf([&] { m_manager->Open("GPIB1::7::INSTR"); }), IOERR_OPEN_FAILED);
}

TEST_F(PrologixTest, TalksToSeveralAddressesOverTcpAndSerial) {
  for (const char* board : {"GPIB1", "GPIB2"}) {
    SCOPED_TRACE(board);
    const auto first = m_manager->Open(std::string(board) + "::7::INSTR");
    const auto second = m_manager->Open(std::string(board) + "::9::INSTR");
    for (auto* io : {first.get(), second.get()}) {
      io->SetTimeout(1000);
      io->Clear();
    }
    for (int round = 0; round < 3; ++round) {
      EXPECT_EQ(test::Query(*first, "*IDN?"), "Corvane Technologies,73135D,QX40001234,A.02.10");
      EXPECT_EQ(test::Query(*second, "*IDN?"), "Corvane Technologies,73137A,QX40001234,A.02.10");
    }
    first->Port().Close();
    EXPECT_EQ(test::Query(*second, "*OPC?"), "1");
  }
}

TEST_F(PrologixTest, TheAdaptersOwnBytesCrossItUnchanged) {
  const auto io = m_manager->Open("GPIB1::7::INSTR");
  io->SetTimeout(2000);
  // A set-up whose learn string holds every byte the adapter would otherwise take as its own (CR and LF end a
  // line, ESC escapes, '+' starts a command): a time base whose IEEE-754 image carries them.
  char command[64];
  std::snprintf(command, sizeof command, ":TIMebase:RANGe %.17g", std::bit_cast<double>(0x3F0A2B0D1B0A2B0Dull));
  io->Output(command);
  io->Output(":SYSTem:SETup?");
  const Bytes setup = test::ReadBlock(*io);
  const std::uint8_t specials[] = {'\r', '\n', 27, '+'};
  for (std::uint8_t special : specials)
    EXPECT_NE(std::find(setup.begin(), setup.end(), special), setup.end()) << int{special};
  test::ExpectSetupWritesBack(*io, setup);
}

}  // namespace
}  // namespace cvn73100::io
