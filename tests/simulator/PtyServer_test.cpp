// An instrument on a pseudo-terminal, reached the way a host reaches a serial port.
#include "simulator/PtyServer.h"

#include <gtest/gtest.h>

#include "HostLine.h"
#include "simulator/InstrumentPort.h"

namespace cvn73100::sim {
namespace {

using namespace std::chrono_literals;
using test::HostLine;

const std::string kIdn = Identity{}.Reply() + "\n";

TEST(PtyServer, AnswersOnTheDeviceNodeAcrossReopens) {
  Instrument scope;
  InstrumentPort port(scope, InstrumentPort::Line::Serial);
  PtyServer pty(port);
  ASSERT_EQ(pty.DevicePath().rfind("/dev/pts/", 0), 0u);
  for (int round = 0; round < 3; ++round) {
    HostLine host = HostLine::OpenSerial(pty.DevicePath());
    ASSERT_TRUE(host.Valid());
    host.Send("*IDN?\n");
    EXPECT_EQ(host.ReadUntil("\n"), kIdn) << round;
  }
  // Pipelined queries over a serial line all get their answers.
  HostLine host = HostLine::OpenSerial(pty.DevicePath());
  host.Send("*OPC?\n:WAV:POIN?\n");
  EXPECT_EQ(host.ReadUntil("1000\n"), "1\n1000\n");
}

TEST(PtyServer, XoffHoldsTheReplyUntilXon) {
  Instrument scope;
  InstrumentPort port(scope, InstrumentPort::Line::Serial);
  PtyServer pty(port);
  HostLine host = HostLine::OpenSerial(pty.DevicePath(), B9600, true);
  host.Send("\x13*IDN?\n");
  EXPECT_EQ(host.ReadUntil("\n", 300ms), "");
  host.Send("\x11");
  EXPECT_EQ(host.ReadUntil("\n"), kIdn);
  EXPECT_TRUE(scope.Errors().empty());  // the flow-control bytes never reached the parser
}

TEST(PtyServer, WrongParameterFaultReadsTheHostsTerminalSettings) {
  InstrumentConfig config;
  config.faults = {.wrongParameter = true, .requiredBaud = 19200, .requiredHandshake = 2};
  Instrument scope(config);
  InstrumentPort port(scope, InstrumentPort::Line::Serial);
  PtyServer pty(port);
  const struct {
    speed_t baud;
    bool xonXoff;
    std::string reply;
  } cases[] = {{B9600, true, ""}, {B19200, false, ""}, {B19200, true, kIdn}};
  for (const auto& c : cases) {
    HostLine host = HostLine::OpenSerial(pty.DevicePath(), c.baud, c.xonXoff);
    host.Send("*IDN?\n");
    EXPECT_EQ(host.ReadUntil("\n", 300ms), c.reply) << c.baud << " " << c.xonXoff;
  }
}

}  // namespace
}  // namespace cvn73100::sim
