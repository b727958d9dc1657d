#include "simulator/MessageParser.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "simulator/ErrorCode.h"
#include "simulator/MessageFramer.h"

namespace cvn73100::sim {
namespace {

// A unit rendered compactly: header nodes with suffixes, '?' for queries, then the arguments by kind, e.g.
// ":CHAN[2]:RANG N(0.002)" or "*IDN?".
std::string Render(const ProgramUnit& u) {
  std::string s;
  if (u.common) {
    s = "*" + std::string(u.commonName);
  } else {
    for (const HeaderNode& n : u.nodes) {
      s += ":" + std::string(n.stem);
      if (n.suffix >= 0) s += "[" + std::to_string(n.suffix) + "]";
    }
    if (!u.rooted) s.erase(0, 1);
  }
  if (u.query) s += "?";
  for (const Argument& a : u.args) {
    s += " ";
    switch (a.kind) {
      case Argument::Kind::Number: {
        char buf[32];
        snprintf(buf, sizeof buf, "N(%g)", a.number);
        s += buf;
        break;
      }
      case Argument::Kind::Characters:
        s += "C(" + std::string(a.text) + ")";
        break;
      case Argument::Kind::String:
        s += "S(" + std::string(a.text) + ")";
        break;
      case Argument::Kind::Block:
        s += "B(" + std::to_string(a.text.size()) + ")";
        break;
    }
  }
  return s;
}

TEST(MessageParser, ParsesUnitsAndStopsAtTheFirstError) {
  const struct {
    std::string message;
    std::vector<std::string> units;  // the units parsed before the end or the error: those before a bad one survive
    int error;
  } cases[] = {{"*IDN?", {"*IDN?"}, 0},
               {"  *rst ; *cls  ", {"*rst", "*cls"}, 0},
               {":CHANnel2:RANGe 2mV", {":CHANnel[2]:RANGe N(0.002)"}, 0},
               {":chan1:offs -1.5E-1 V;rang?", {":chan[1]:offs N(-0.15)", "rang?"}, 0},
               {":TIM:RANG 100 us", {":TIM:RANG N(0.0001)"}, 0},
               {":DIG CHAN1,POD2", {":DIG C(CHAN1) C(POD2)"}, 0},
               {":A 'it''s',\"x\"", {":A S(it''s) S(x)"}, 0},
               {":A #H1F,#Q17,#B101", {":A N(31) N(15) N(5)"}, 0},
               {":SYST:SET #15ab;cd", {":SYST:SET B(5)"}, 0},
               {":SYST:SET #0\x01\x02;x", {":SYST:SET B(4)"}, 0},
               {"*IDN?;", {"*IDN?"}, 0},
               {"", {}, 0},
               {"*IDN?;:CHAN1:RANG 1.2.3", {"*IDN?"}, kInvalidCharacterInNumber},
               {":CHAN1:RANG 1 2", {}, kInvalidSeparator},
               {":CHAN1:RANG 1 parsec", {}, kInvalidSuffix},
               {":CHAN1:RANG 1e999", {}, kExponentTooLarge},
               {":CHAN1:RANG -", {}, kNumericDataError},
               {":CHAN1:RANG 1E", {}, kNumericDataError},
               {":A ,1", {}, kMissingParameter},
               {":A @", {}, kInvalidCharacter},
               {":A 'open", {}, kInvalidStringData},
               {":SYST:SET #9999999999abc", {}, kInvalidBlockData},
               {":SYST:SET #3ab", {}, kInvalidBlockData},
               {":SYST:SET #", {}, kInvalidBlockData},
               {":A #HXYZ", {}, kInvalidCharacterInNumber},
               {"*", {}, kSyntaxError},
               {"::A", {}, kSyntaxError},
               {":A:", {}, kSyntaxError},
               {"*IDN?x", {}, kHeaderSeparatorError},
               {";;", {}, kSyntaxError},
               {":ABCDEFGHIJKLMN", {}, kProgramMnemonicTooLong},
               {":A ABCDEFGHIJKLMN", {}, kCharacterDataTooLong}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.message);
    MessageParser parser(c.message);
    ProgramUnit unit;
    std::vector<std::string> units;
    while (parser.Next(unit)) units.push_back(Render(unit));
    EXPECT_EQ(units, c.units);
    EXPECT_EQ(parser.Error(), c.error);
  }
}

TEST(MessageParser, CapsNodesAndArguments) {
  std::string nodes;
  for (int i = 0; i < 40; ++i) nodes += ":A";
  std::string args = ":A 1";
  for (int i = 0; i < 100; ++i) args += ",1";
  ProgramUnit unit;
  MessageParser a(nodes), b(args);
  EXPECT_FALSE(a.Next(unit));
  EXPECT_EQ(a.Error(), kUndefinedHeader);
  EXPECT_FALSE(b.Next(unit));
  EXPECT_EQ(b.Error(), kParameterNotAllowed);
}

// The framer sees the stream in arbitrary chunks; an LF inside block data must not end the message.
TEST(MessageFramer, CutsMessagesAtLfOrEnd) {
  const struct {
    std::vector<std::string> chunks;  // the last chunk carries END when `end` is set
    bool end;
    std::vector<std::string> messages;
  } cases[] = {
      {{"*IDN?\n*RST\n"}, false, {"*IDN?", "*RST"}},
      {{"*ID", "N?", "\n"}, false, {"*IDN?"}},
      {{"*IDN?"}, true, {"*IDN?"}},
      {{"*IDN?\n"}, true, {"*IDN?"}},
      {{":SYST:SET #14\n\n\n\n\n"}, false, {":SYST:SET #14\n\n\n\n"}},
      {{":SYST:SET #2", "1", "0\n\n\n\n\n\n\n\n\n\n;*OPC\n"}, false, {":SYST:SET #210\n\n\n\n\n\n\n\n\n\n;*OPC"}},
      {{":A \"x\ny\"\n"}, false, {":A \"x", "y\""}},
      {{":A #H0A\n"}, false, {":A #H0A"}},
      // A block claiming more than arrives is cut by END.
      {{":SYST:SET #9000000100abc"}, true, {":SYST:SET #9000000100abc"}}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.chunks.front());
    MessageFramer framer;
    std::vector<std::string> messages;
    for (std::size_t i = 0; i < c.chunks.size(); ++i) {
      const auto* data = reinterpret_cast<const std::uint8_t*>(c.chunks[i].data());
      std::size_t left = c.chunks[i].size();
      const bool end = c.end && i + 1 == c.chunks.size();
      do {
        const std::size_t used = framer.Feed(data, left, end);
        data += used;
        left -= used;
        if (framer.Complete()) {
          messages.emplace_back(framer.Message());
          framer.Take();
        }
      } while (left > 0);
    }
    EXPECT_EQ(messages, c.messages);
  }
}

TEST(MessageFramer, DiscardsMessagesBeyondTheCapAndRecovers) {
  MessageFramer framer(64);
  const std::string flood(1000, 'A');
  std::size_t used = framer.Feed(reinterpret_cast<const std::uint8_t*>(flood.data()), flood.size(), false);
  EXPECT_EQ(used, flood.size());
  EXPECT_LE(framer.Pending(), 64u);
  const std::string tail = "\n*IDN?\n";
  used = framer.Feed(reinterpret_cast<const std::uint8_t*>(tail.data()), tail.size(), false);
  ASSERT_TRUE(framer.Complete());
  EXPECT_TRUE(framer.Overrun());
  framer.Take();
  framer.Feed(reinterpret_cast<const std::uint8_t*>(tail.data()) + used, tail.size() - used, false);
  ASSERT_TRUE(framer.Complete());
  EXPECT_FALSE(framer.Overrun());
  EXPECT_EQ(framer.Message(), "*IDN?");
}

}  // namespace
}  // namespace cvn73100::sim
