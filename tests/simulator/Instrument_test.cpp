// The in-process transport: message ends, output queue rules and each configurable fault.
#include "simulator/Instrument.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "simulator/Block.h"
#include "simulator/ErrorCode.h"

namespace cvn73100::sim {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

void Write(Instrument& scope, std::string_view text, bool end = false) {
  scope.Write(reinterpret_cast<const std::uint8_t*>(text.data()), text.size(), end);
}

// Reads until END or a read times out; `sawEnd` tells which.
std::string ReadAll(Instrument& scope, std::chrono::milliseconds timeout, bool* sawEnd = nullptr) {
  std::string out;
  std::uint8_t buffer[512];
  bool end = false;
  while (!end) {
    const std::size_t n = scope.Read(buffer, sizeof buffer, timeout, end);
    if (n == 0) break;
    out.append(reinterpret_cast<const char*>(buffer), n);
  }
  if (sawEnd != nullptr) *sawEnd = end;
  return out;
}

Instrument WithFaults(Faults faults) {
  InstrumentConfig config;
  config.faults = faults;
  return Instrument(config);
}

TEST(Instrument, ReplyEndsWithLfAndEndOnItsLastByte) {
  Instrument scope;
  Write(scope, "*IDN?\n");
  std::uint8_t buffer[10];
  bool end = true;
  ASSERT_EQ(scope.Read(buffer, sizeof buffer, 100ms, end), 10u);
  EXPECT_FALSE(end);
  bool sawEnd = false;
  const std::string rest = ReadAll(scope, 100ms, &sawEnd);
  EXPECT_TRUE(sawEnd);
  EXPECT_EQ(rest.back(), '\n');
  EXPECT_EQ(rest.size() + 10, Identity{}.Reply().size() + 1);
}

TEST(Instrument, StreamOutputKeepsEveryReply) {
  Instrument scope;
  scope.SetStreamOutput(true);
  Write(scope, "*OPC?\n:WAV:POIN?\n");
  EXPECT_EQ(ReadAll(scope, 100ms), "1\n");
  EXPECT_EQ(ReadAll(scope, 100ms), "1000\n");
  EXPECT_TRUE(scope.Errors().empty());
}

TEST(Instrument, DeviceClearDropsPendingInputAndOutput) {
  Instrument scope;
  Write(scope, "*IDN?", true);
  Write(scope, ":CHAN1:RANG 2");  // not yet terminated
  scope.DeviceClear();
  std::uint8_t byte;
  bool end = false;
  EXPECT_EQ(scope.Read(&byte, 1, 20ms, end), 0u);
  EXPECT_EQ(scope.Query(":CHAN1:RANG?"), "8E+00");
  EXPECT_TRUE(scope.Errors().empty());
}

TEST(Instrument, FloodsAndLyingBlocksAreDiscardedAndServingGoesOn) {
  Instrument scope;
  Write(scope, std::string(MessageFramer::kDefaultCap + 100, 'A') + "\n");
  Write(scope, ":SYST:SET #9000999999abc", true);  // END arrives long before the claimed length
  EXPECT_EQ(scope.Errors(), (std::vector<int>{kInputBufferOverrun, kInvalidBlockData}));
  EXPECT_EQ(scope.Query("*IDN?"), Identity{}.Reply());
}

TEST(Instrument, SilentNeverAnswersButObeys) {
  Instrument scope = WithFaults({.silent = true});
  EXPECT_EQ(scope.Query(":CHAN1:RANG 2;RANG?", 50ms), "");
  EXPECT_EQ(scope.State().channel[0].range, 2.0);
}

TEST(Instrument, GarbageHasNoCommaAndEndsWithLf) {
  Instrument scope = WithFaults({.garbage = true});
  for (int i = 0; i < 20; ++i) {
    Write(scope, "*IDN?\n");
    bool sawEnd = false;
    const std::string reply = ReadAll(scope, 100ms, &sawEnd);
    ASSERT_TRUE(sawEnd);
    ASSERT_GE(reply.size(), 2u);
    EXPECT_EQ(reply.back(), '\n');
    EXPECT_EQ(reply.find(','), std::string::npos);
    EXPECT_EQ(reply.find('\n'), reply.size() - 1);
  }
}

TEST(Instrument, DropMidBlockStopsHalfWayWithoutEnd) {
  Instrument scope = WithFaults({.dropMidBlock = true});
  Write(scope, ":SYST:SET?\n");
  bool sawEnd = true;
  const std::string partial = ReadAll(scope, 50ms, &sawEnd);
  EXPECT_FALSE(sawEnd);
  const std::string whole = Instrument().Query(":SYST:SET?");
  std::size_t header = 0;
  const auto block = Block::Parse(whole, &header);
  ASSERT_TRUE(block);
  const std::size_t headerSize = header - block->size();
  EXPECT_EQ(partial, whole.substr(0, headerSize + block->size() / 2));
  EXPECT_EQ(scope.Query("*OPC?"), "1");  // text replies are whole
}

TEST(Instrument, LateReplyArrivesAfterTheHostGaveUpAndIsNotReadAsTheNextAnswer) {
  Instrument scope = WithFaults({.lateReplyMs = 150});
  const auto start = Clock::now();
  Write(scope, "*IDN?\n");
  std::uint8_t buffer[64];
  bool end = false;
  EXPECT_EQ(scope.Read(buffer, sizeof buffer, 50ms, end), 0u);
  EXPECT_EQ(ReadAll(scope, 300ms), Identity{}.Reply() + "\n");
  EXPECT_GE(Clock::now() - start, 150ms);
  // A host that times out and asks again gets the new answer, never the stale one.
  Write(scope, "*IDN?\n");
  EXPECT_EQ(scope.Read(buffer, sizeof buffer, 20ms, end), 0u);
  Write(scope, ":WAV:POIN?\n");
  EXPECT_EQ(ReadAll(scope, 300ms), "1000\n");
  EXPECT_EQ(scope.Errors(), std::vector<int>{kQueryInterrupted});
}

TEST(Instrument, PacedLineSendsTenBitsPerByte) {
  Instrument scope = WithFaults({.lineBaud = 9600});
  const auto start = Clock::now();
  Write(scope, "*IDN?\n");
  std::uint8_t buffer[512];
  bool end = false;
  const std::size_t first = scope.Read(buffer, sizeof buffer, 100ms, end);
  EXPECT_LT(first, Identity{}.Reply().size() + 1);  // bytes trickle out
  ReadAll(scope, 100ms);
  const auto expected = std::chrono::microseconds((Identity{}.Reply().size() + 1) * 10 * 1'000'000 / 9600);
  EXPECT_GE(Clock::now() - start, expected * 9 / 10);
}

// Off a serial line (no host line settings) the fault does not apply.
TEST(Instrument, WrongParameterAnswersOnlyWhenTheHostLineMatches) {
  const struct {
    int hostBaud, hostHandshake;  // 0: not a serial line
    bool answers;
  } cases[] = {{19200, 4, true}, {19200, 1, true}, {19200, 2, false}, {9600, 4, false}, {0, 0, true}};
  for (const auto& c : cases) {
    Instrument scope = WithFaults({.wrongParameter = true, .requiredBaud = 19200, .requiredHandshake = 4});
    if (c.hostBaud != 0) scope.SetHostLineSettings(c.hostBaud, c.hostHandshake);
    EXPECT_EQ(scope.Query("*IDN?", 50ms).empty(), !c.answers) << c.hostBaud << " " << c.hostHandshake;
  }
}

}  // namespace
}  // namespace cvn73100::sim
