#include "iolib/MessageIO.h"

#include <gtest/gtest.h>

#include <deque>

#include "tests/iolib/IoTestSupport.h"

namespace cvn73100::io {
namespace {

using test::ConditionOf;

// A backend that hands out scripted chunks (with or without EOI) and records what the base class asks of it.
// An empty script reads as a timeout.
class ScriptedIO : public MessageIO {
 public:
  struct Chunk {
    std::string bytes;
    bool end = false;
  };
  ScriptedIO() : MessageIO("GPIB0::1::INSTR") {}
  ~ScriptedIO() override { Close(); }

  std::string IOType() const override { return "GPIB"; }

  std::deque<Chunk> script;
  std::vector<std::pair<std::string, bool>> writes;
  int clears = 0, drops = 0, closes = 0;
  std::vector<bool> timeouts;  // the `partial` of each timeout

 protected:
  void DoWrite(const std::uint8_t* data, std::size_t size, bool end, const Deadline&) override {
    writes.emplace_back(std::string(data, data + size), end);
  }
  std::size_t DoRead(std::uint8_t* buffer, std::size_t max, ReadKind, const Deadline&, bool& end) override {
    if (script.empty()) return 0;
    Chunk& chunk = script.front();
    const std::size_t n = std::min(max, chunk.bytes.size());
    std::copy_n(chunk.bytes.begin(), n, buffer);
    chunk.bytes.erase(0, n);
    end = chunk.bytes.empty() && chunk.end;
    if (chunk.bytes.empty()) script.pop_front();
    return n;
  }
  void DoClear(const Deadline&) override { ++clears; }
  void DoDropInput() override { ++drops; }
  void AfterReadTimeout(bool partial) override { timeouts.push_back(partial); }
  void DoClose() noexcept override { ++closes; }
};

TEST(MessageIOTest, EnterSplitsMessagesAtLineFeedOrEoi) {
  const struct {
    const char* name;
    std::vector<ScriptedIO::Chunk> chunks;
    std::vector<std::string> replies;  // successive Enter results; "!" marks an expected timeout
  } cases[] = {
      {"LF ends, CR LF stripped", {{"A,B\r\n", true}}, {"A,B"}},
      {"EOI without LF ends", {{"1.5", true}}, {"1.5"}},
      {"EOI keeps a trailing CR", {{"x\r", true}}, {"x\r"}},
      {"two messages in one chunk", {{"one\ntwo\r\n", false}}, {"one", "two"}},
      {"a message over several chunks", {{"Corv", false}, {"ane,7313", false}, {"5D\n", true}}, {"Corvane,73135D"}},
      {"an empty message", {{"\n", true}}, {""}},
      {"a partial message times out and is gone", {{"half", false}}, {"!", "!"}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    ScriptedIO io;
    io.script.assign(c.chunks.begin(), c.chunks.end());
    for (const auto& expected : c.replies) {
      std::string reply = "unchanged";
      if (expected == "!") {
        EXPECT_EQ(ConditionOf([&] { io.Enter(reply); }), IOERR_TIMEOUT);
        EXPECT_EQ(reply, "unchanged");
      } else {
        io.Enter(reply);
        EXPECT_EQ(reply, expected);
      }
    }
    EXPECT_TRUE(io.script.empty());
  }
}

TEST(MessageIOTest, TimeoutLetsTheBackendClearAndLeavesNothingBehind) {
  ScriptedIO io;
  io.script = {{"Corvane Tech", false}};
  std::string reply;
  EXPECT_EQ(ConditionOf([&] { io.Enter(reply); }), IOERR_TIMEOUT);
  EXPECT_EQ(ConditionOf([&] { io.Enter(reply); }), IOERR_TIMEOUT);
  Bytes bytes;
  io.script = {{"ab", false}};
  EXPECT_EQ(ConditionOf([&] { io.ReadBytes(3, bytes); }), IOERR_TIMEOUT);
  EXPECT_EQ(io.timeouts, (std::vector<bool>{true, false, true}));
  io.script = {{"1\n", true}};
  io.Enter(reply);
  EXPECT_EQ(reply, "1");
}

TEST(MessageIOTest, ReadBytesTakesBufferedBytesFirstAndReadsExactly) {
  ScriptedIO io;
  io.script = {{"#15ab\ncd\nrest", false}};
  std::string reply;
  io.Enter(reply);
  EXPECT_EQ(reply, "#15ab");
  Bytes bytes;
  EXPECT_EQ(io.ReadBytes(3, bytes), 3);
  EXPECT_EQ(std::string(bytes.begin(), bytes.end()), "cd\n");
  EXPECT_EQ(ConditionOf([&] { io.ReadBytes(5, bytes); }), IOERR_TIMEOUT);  // only 4 bytes left
  EXPECT_EQ(io.ReadBytes(0, bytes), 0);
  EXPECT_TRUE(bytes.empty());
}

TEST(MessageIOTest, ReadBytesStopsAtTheEndOfAMessage) {
  const struct {
    const char* name;
    std::vector<ScriptedIO::Chunk> chunks;
    bool enterFirst;                 // read one line with Enter before the bytes
    std::vector<std::int32_t> asks;  // successive ReadBytes counts
    std::vector<std::string> gets;
  } cases[] = {
      {"EOI before the count", {{"ab", true}}, false, {5}, {"ab"}},
      {"EOI exactly at the count", {{"ab", true}}, false, {2}, {"ab"}},
      {"a message longer than asked", {{"abc", false}, {"def", true}}, false, {4, 5}, {"abcd", "ef"}},
      {"the rest of a message Enter left behind", {{"x\nab", true}}, true, {5}, {"ab"}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    ScriptedIO io;
    io.script.assign(c.chunks.begin(), c.chunks.end());
    std::string line;
    if (c.enterFirst) io.Enter(line);
    for (std::size_t i = 0; i < c.asks.size(); ++i) {
      Bytes bytes;
      EXPECT_EQ(io.ReadBytes(c.asks[i], bytes), static_cast<std::int32_t>(c.gets[i].size()));
      EXPECT_EQ(std::string(bytes.begin(), bytes.end()), c.gets[i]);
    }
    EXPECT_TRUE(io.timeouts.empty());
  }
}

TEST(MessageIOTest, WritesCarryTheTerminationAndDropStaleInput) {
  ScriptedIO io;
  io.script = {{"old reply\nmore", false}};
  std::string reply;
  io.Enter(reply);
  io.Output("*IDN?");
  io.SetOutputTermination(0);
  io.Output("\r\n");
  io.SetOutputTermination(13);
  io.Output("X");
  io.WriteBytes(2, Bytes{'a', 'b', 'c'});
  io.SetOutputTermination(10);
  io.Output("");
  const std::vector<std::pair<std::string, bool>> expected = {
      {"*IDN?\n", true}, {"\r\n", true}, {"X\r", true}, {"ab", true}, {"\n", true}};
  EXPECT_EQ(io.writes, expected);
  EXPECT_EQ(io.drops, 5);
  // The "more" left over from the first read was dropped by the writes.
  EXPECT_EQ(ConditionOf([&] { io.Enter(reply); }), IOERR_TIMEOUT);
}

TEST(MessageIOTest, RejectsBadArgumentsAndEveryCallAfterClose) {
  ScriptedIO io;
  std::string reply;
  Bytes bytes;
  EXPECT_EQ(ConditionOf([&] { io.Enter(reply, "B"); }), IOERR_BAD_ARGUMENT);
  EXPECT_EQ(ConditionOf([&] { io.SetTimeout(-1); }), IOERR_BAD_ARGUMENT);
  EXPECT_EQ(ConditionOf([&] { io.SetOutputTermination(256); }), IOERR_BAD_ARGUMENT);
  EXPECT_EQ(ConditionOf([&] { io.ReadBytes(-1, bytes); }), IOERR_BAD_ARGUMENT);
  EXPECT_EQ(ConditionOf([&] { io.WriteBytes(4, Bytes{1, 2}); }), IOERR_BAD_ARGUMENT);
  EXPECT_TRUE(io.writes.empty());

  io.Port().Close();
  io.Port().Close();
  EXPECT_EQ(io.closes, 1);
  const std::vector<std::function<void()>> calls = {[&] { io.Output("x"); },
                                                    [&] { io.Enter(reply); },
                                                    [&] { io.Clear(); },
                                                    [&] { io.ReadBytes(1, bytes); },
                                                    [&] { io.WriteBytes(0, bytes); },
                                                    [&] { io.SetTimeout(5); },
                                                    [&] { io.SetOutputTermination(0); }};
  for (const auto& call : calls) EXPECT_EQ(ConditionOf(call), IOERR_CLOSED);
}

}  // namespace
}  // namespace cvn73100::io
