// An instrument on its raw SCPI socket and on a pseudo-terminal, reached the way hosts reach them.
#include <gtest/gtest.h>

#include "HostLine.h"
#include "simulator/Block.h"
#include "simulator/InstrumentPort.h"
#include "simulator/PtyServer.h"
#include "simulator/TcpServer.h"

namespace cvn73100::sim {
namespace {

using namespace std::chrono_literals;
using test::HostLine;

TEST(TcpServer, AnswersPipelinedQueriesInOrder) {
  Instrument scope;
  InstrumentPort port(scope, InstrumentPort::Line::Socket);
  TcpServer server(port, 0);
  ASSERT_NE(server.Port(), 0);
  HostLine host = HostLine::Connect(server.Port());
  host.Send("*IDN?\n:WAV:POIN 100;:WAV:DATA?\n*OPC?\n");
  EXPECT_EQ(host.ReadUntil("\n"), Identity{}.Reply() + "\n");
  const std::string data = host.ReadUntil("", 1000ms, 2 + 3 + 100 + 1);
  const auto block = Block::Parse(data);
  ASSERT_TRUE(block.has_value()) << data;
  EXPECT_EQ(block->size(), 100u);
  EXPECT_EQ(host.ReadUntil("\n"), "1\n");
}

TEST(TcpServer, NewConnectionReplacesTheOldAndStartsClean) {
  Instrument scope;
  InstrumentPort port(scope, InstrumentPort::Line::Socket);
  TcpServer server(port, 0);
  HostLine first = HostLine::Connect(server.Port());
  first.Send(":CHAN1:RA");  // an unfinished message the next host must not inherit
  first.ReadUntil("", 100ms, 1);
  HostLine second = HostLine::Connect(server.Port());
  EXPECT_EQ(first.ReadUntil("", 1000ms, 1), "");  // closed by the server
  second.Send("NG 2\n*IDN?\n");
  EXPECT_EQ(second.ReadUntil("\n"), Identity{}.Reply() + "\n");
  EXPECT_EQ(scope.State().channel[0].range, 8.0);
}

TEST(TcpServer, RefusesAPortInUse) {
  Instrument scope;
  InstrumentPort port(scope, InstrumentPort::Line::Socket);
  TcpServer server(port, 0);
  EXPECT_THROW(TcpServer(port, server.Port()), std::system_error);
}

TEST(PtyServer, XoffHoldsTheReplyUntilXon) {
  Instrument scope;
  InstrumentPort port(scope, InstrumentPort::Line::Serial);
  PtyServer pty(port);
  HostLine host = HostLine::OpenSerial(pty.DevicePath(), B9600, true);
  host.Send("\x13*IDN?\n");
  EXPECT_EQ(host.ReadUntil("\n", 300ms), "");
  host.Send("\x11");
  EXPECT_EQ(host.ReadUntil("\n"), Identity{}.Reply() + "\n");
  EXPECT_TRUE(scope.Errors().empty());  // the flow-control bytes never reached the parser
}

}  // namespace
}  // namespace cvn73100::sim
