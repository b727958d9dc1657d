#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "iolib/IOManager.h"
#include "simulator/Instrument.h"
#include "simulator/InstrumentPort.h"
#include "simulator/PtyServer.h"
#include "simulator/SimulatedSerialPort.h"
#include "tests/iolib/IoTestSupport.h"

namespace cvn73100::io {
namespace {

using std::chrono::milliseconds;
using test::ConditionOf;

// The simulated instrument on a pseudo-terminal, COM1 mapped to its device node, COM3 to the in-process instrument.
class SerialTest : public ::testing::Test {
 protected:
  SerialTest()
      : m_port(m_instrument, sim::InstrumentPort::Line::Serial),
        m_pty(std::make_unique<sim::PtyServer>(m_port)),
        m_manager(BoardMap::FromText("COM1 = " + m_pty->DevicePath() + "\nCOM3 = sim\n")) {
    m_manager.SetSimulatedSerialPort(3, std::make_shared<sim::SimulatedSerialPort>(m_inProcess));
  }

  // Opens a COM port with the line settings of the identification query.
  std::shared_ptr<IInstrumentIO> OpenSet(const char* address, std::int32_t baud, std::int16_t handshake) {
    auto io = m_manager.Open(address);
    ISerialIO& serial = *io->Serial();
    serial.SetBaudRate(baud);
    serial.SetDataBits(8);
    serial.SetStopBits(1);
    serial.SetHandshake(handshake);
    io->SetTimeout(1000);
    io->Clear();
    return io;
  }

  sim::Instrument m_instrument;
  sim::InstrumentPort m_port;
  std::unique_ptr<sim::PtyServer> m_pty;
  std::shared_ptr<sim::Instrument> m_inProcess = std::make_shared<sim::Instrument>();
  IOManager m_manager;
};

TEST_F(SerialTest, WrongLineSettingsGetNoAnswerAndTheRightOnesDo) {
  const sim::Faults faults{
      .wrongParameter = true, .requiredBaud = 19200, .requiredHandshake = RS232_HandShake_XON_XOFF};
  m_instrument.SetFaults(faults);
  m_inProcess->SetFaults(faults);
  const struct {
    std::int32_t baud;
    std::int16_t handshake;
    bool answers;
  } cases[] = {
      {9600, RS232_HandShake_XON_XOFF, false},
      {19200, RS232_HandShake_DTR_DSR, false},
      {19200, RS232_HandShake_XON_XOFF, true},
  };
  for (const char* port : {"COM1", "COM3"}) {
    for (const auto& c : cases) {
      SCOPED_TRACE(std::string(port) + " at " + std::to_string(c.baud) + " handshake " + std::to_string(c.handshake));
      const auto io = OpenSet(port, c.baud, c.handshake);
      io->SetTimeout(200);
      std::string reply;
      io->Output("*IDN?");
      EXPECT_EQ(ConditionOf([&] { io->Enter(reply); }), c.answers ? 0 : IOERR_TIMEOUT);
    }
  }
}

TEST_F(SerialTest, StaleBytesNeverAnswerTheNextQuery) {
  const auto io = OpenSet("COM1", 9600, RS232_HandShake_XON_XOFF);
  io->SetTimeout(300);
  // A reply nobody read is dropped by Clear ...
  io->Output("*IDN?");
  std::this_thread::sleep_for(milliseconds(100));
  io->Clear();
  std::string reply;
  EXPECT_EQ(ConditionOf([&] { io->Enter(reply); }), IOERR_TIMEOUT);
  // ... and by the next write.
  io->Output("*IDN?");
  std::this_thread::sleep_for(milliseconds(100));
  EXPECT_EQ(test::Query(*io, "*OPC?"), "1");
}

TEST_F(SerialTest, TheRestOfAMessageCutByTheTimeoutIsDropped) {
  m_instrument.SetFaults({.lineBaud = 1200});  // the 47-byte reply takes about 390 ms
  const auto io = OpenSet("COM1", 9600, RS232_HandShake_XON_XOFF);
  io->SetTimeout(100);
  io->Output("*IDN?");
  std::string reply;
  EXPECT_EQ(ConditionOf([&] { io->Enter(reply); }), IOERR_TIMEOUT);
  io->SetTimeout(1000);
  EXPECT_EQ(test::Query(*io, "*OPC?"), "1");
}

TEST_F(SerialTest, ModemLinesOfAPseudoTerminalAcceptEveryCall) {
  const auto io = OpenSet("COM1", 9600, RS232_HandShake_DTR_DSR);
  ISerialIO& serial = *io->Serial();
  EXPECT_TRUE(serial.DTRState());
  serial.SetHandshake(RS232_HandShake_None);
  serial.SetDTRState(false);
  serial.SetRTSState(false);
  EXPECT_FALSE(serial.DTRState());
  EXPECT_FALSE(serial.RTSState());
  serial.SetDTRState(true);
  serial.SetRTSState(true);
  // DTR/DSR: DSR reads asserted on a pty, so writing does not wait for it.
  serial.SetHandshake(RS232_HandShake_DTR_DSR);
  EXPECT_EQ(test::Query(*io, "*OPC?"), "1");
  EXPECT_EQ(ConditionOf([&] { serial.SetHandshake(3); }), IOERR_BAD_ARGUMENT);
  EXPECT_EQ(ConditionOf([&] { serial.SetDataBits(9); }), IOERR_BAD_ARGUMENT);
  EXPECT_EQ(ConditionOf([&] { serial.SetStopBits(3); }), IOERR_BAD_ARGUMENT);
  EXPECT_EQ(ConditionOf([&] { serial.SetBaudRate(12345); }), IOERR_BAD_ARGUMENT);
  EXPECT_EQ(serial.BaudRate(), 9600);
}

TEST_F(SerialTest, AVanishedDeviceIsReportedAtOnce) {
  const auto io = OpenSet("COM1", 9600, RS232_HandShake_XON_XOFF);
  io->SetTimeout(2000);
  io->Output("*IDN?");
  std::string reply;
  io->Enter(reply);
  m_pty.reset();  // the device node goes away
  EXPECT_LT(test::Elapsed([&] {
              EXPECT_EQ(ConditionOf([&] { io->Enter(reply); }), IOERR_DEVICE_VANISHED);
              EXPECT_EQ(ConditionOf([&] { io->Output("*IDN?"); }), IOERR_DEVICE_VANISHED);
            }).count(),
            200);
  io->Port().Close();
  EXPECT_EQ(ConditionOf([&] { m_manager.Open("COM1"); }), IOERR_OPEN_FAILED);
  EXPECT_TRUE(m_manager.FindResources("COM1").empty());
}

}  // namespace
}  // namespace cvn73100::io
