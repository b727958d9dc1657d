// Instruments behind a Prologix-style adapter on TCP, driven the way other hosts drive it.
#include "simulator/PrologixAdapter.h"

#include <gtest/gtest.h>

#include <bit>

#include "HostLine.h"
#include "simulator/Block.h"
#include "simulator/LearnString.h"
#include "simulator/TcpServer.h"

namespace cvn73100::sim {
namespace {

using namespace std::chrono_literals;
using test::HostLine;

// Escapes data for the adapter as pyvisa-py does: ESC before ESC, CR, LF and '+'.
std::string Escape(std::string_view data) {
  std::string out;
  for (char c : data) {
    if (c == 27 || c == '\r' || c == '\n' || c == '+') out += '\x1B';
    out += c;
  }
  return out;
}

class PrologixTcp : public ::testing::Test {
 protected:
  PrologixTcp() {
    InstrumentConfig other;
    other.identity = {"Other", "73105B", "S9", "B.01.00"};
    nine_ = std::make_unique<Instrument>(other);
    adapter_.Attach(7, seven_);
    adapter_.Attach(9, *nine_);
    server_ = std::make_unique<TcpServer>(adapter_, 0);
    host_ = std::make_unique<HostLine>(HostLine::Connect(server_->Port()));
    host_->Send("++read_tmo_ms 100\n");
  }
  Instrument seven_;
  std::unique_ptr<Instrument> nine_;
  PrologixAdapter adapter_{PrologixAdapter::Model::Ethernet};
  std::unique_ptr<TcpServer> server_;
  std::unique_ptr<HostLine> host_;
};

// Addressing instruments 7 and 9 is left to the I/O library's tests, which reach this adapter through its client.
TEST_F(PrologixTcp, AddressQueryAndNobodyAtAnAddress) {
  host_->Send("++addr\n++addr 5\n*IDN?\n++read eoi\n");  // nobody at 5: the read just times out
  EXPECT_EQ(host_->ReadUntil("\x01", 300ms), "7\r\n");   // and nothing after it
}

TEST_F(PrologixTcp, AutoReadAndEotCharacter) {
  host_->Send("++auto 1\n++eot_enable 1\n++eot_char 239\n*IDN?\n");
  EXPECT_EQ(host_->ReadUntil("\xEF"), Identity{}.Reply() + "\n\xEF");
  host_->Send("++auto 0\n++eot_enable 0\n++auto\n");
  EXPECT_EQ(host_->ReadUntil("\r\n"), "0\r\n");
}

TEST_F(PrologixTcp, EscapedBinarySetupCrossesTheAdapterIntact) {
  ScopeState wanted;
  // An offset whose bytes hold ESC, '+', LF and CR, so the set-up needs every escape.
  wanted.channel[0].offset = std::bit_cast<double>(0x3FF01B2B0A0D1B2Bull);
  wanted.triggerSource = 13;
  const std::string setup = LearnString::Encode(wanted);
  for (char c : {'\x1B', '+', '\n', '\r'}) ASSERT_NE(setup.find(c), std::string::npos);
  seven_.SetState(wanted);
  host_->Send("*LRN?\n++read eoi\n");
  std::string command = ":SYSTem:SETup ";
  Block::Append(command, setup);
  EXPECT_EQ(host_->ReadUntil("", 1000ms, command.size() + 1), command + "\n");
  // Pyvisa-py's set-up: no terminator appended, END on the last byte.
  host_->Send("++eos 3\n++eoi 1\n++addr 9\n" + Escape(command) + "\n");
  host_->Send("*OPC?\n++read eoi\n");
  EXPECT_EQ(host_->ReadUntil("\n"), "1\n");
  EXPECT_EQ(nine_->State(), wanted);
  EXPECT_TRUE(nine_->Errors().empty());
}

TEST_F(PrologixTcp, SerialPollAndClear) {
  host_->Send("*IDN?\n++spoll\n");
  EXPECT_EQ(host_->ReadUntil("\r\n"), "16\r\n");  // message available
  host_->Send("++clr\n++spoll\n");
  EXPECT_EQ(host_->ReadUntil("\r\n"), "0\r\n");
}

}  // namespace
}  // namespace cvn73100::sim
