#include "simulator/LearnString.h"

#include <gtest/gtest.h>

#include <random>

#include "simulator/Block.h"
#include "simulator/ErrorCode.h"
#include "simulator/Instrument.h"
#include "simulator/SettingTable.h"

namespace cvn73100::sim {
namespace {

// A state with every setting drawn at random from its allowed values.
ScopeState RandomState(std::mt19937& rng) {
  ScopeState s;
  for (const SettingDef& def : SettingTable::All()) {
    for (int n = def.suffixMin; n <= def.suffixMax; ++n) {
      double value = std::uniform_real_distribution<double>(def.min, def.max)(rng);
      if (def.kind != SettingKind::Number) {
        value = def.choices[std::uniform_int_distribution<std::size_t>(0, def.choices.size() - 1)(rng)].value;
      }
      SettingTable::Set(def, s, n, value);
    }
  }
  return s;
}

std::string SavedSetup(Instrument& scope) {
  const std::string reply = scope.Query(":SYSTem:SETup?");
  const auto block = Block::Parse(reply);
  EXPECT_TRUE(block.has_value()) << reply;
  return block ? std::string(*block) : std::string();
}

void Restore(Instrument& scope, std::string_view data) {
  std::string message = ":SYST:SET ";
  Block::Append(message, data);
  scope.Send(message);
}

TEST(LearnString, RestoringASavedSetupRestoresEverySetting) {
  std::mt19937 rng(7310);
  for (int round = 0; round < 20; ++round) {
    Instrument scope;
    const ScopeState wanted = RandomState(rng);
    scope.SetState(wanted);
    const std::string saved = SavedSetup(scope);
    scope.Send("*RST");
    ASSERT_NE(scope.State(), wanted);
    Restore(scope, saved);
    EXPECT_EQ(scope.State(), wanted);
    EXPECT_TRUE(scope.Errors().empty());
  }
}

TEST(LearnString, LrnAnswersACommandThatRestores) {
  Instrument scope;
  std::mt19937 rng(1);
  const ScopeState wanted = RandomState(rng);
  scope.SetState(wanted);
  const std::string command = scope.Query("*LRN?");
  scope.Send("*RST");
  scope.Send(command);
  EXPECT_EQ(scope.State(), wanted);
}

std::string WithCrc(std::string body) {
  body.resize(body.size() - 4);
  const std::uint32_t crc = LearnString::Crc32(body);
  for (int i = 3; i >= 0; --i) body += static_cast<char>((crc >> (8 * i)) & 0xFF);
  return body;
}

// Flips bits of one byte (through at(), which also keeps GCC's overflow analysis quiet).
std::string Flip(std::string s, std::size_t at, int mask) {
  s.at(at) = static_cast<char>(s.at(at) ^ mask);
  return s;
}

std::string Cut(std::string s, std::size_t size) {
  s.resize(size);
  return s;
}

TEST(LearnString, CorruptSetupIsRefusedAndChangesNothing) {
  const std::string good = LearnString::Encode(ScopeState{});
  const std::string extended = good.substr(0, good.size() - 4) + "xx" + good.substr(good.size() - 4);
  const struct {
    const char* name;
    std::string setup;
    int error;
  } cases[] = {
      {"empty", "", kIllegalParameterValue},
      {"foreign", "SETUP FROM ANOTHER INSTRUMENT", kIllegalParameterValue},
      {"magic", Flip(good, 0, 0x20), kIllegalParameterValue},
      {"payload bit", Flip(good, 20, 0x04), kDataCorruptOrStale},
      {"checksum", Flip(good, good.size() - 1, 0x01), kDataCorruptOrStale},
      {"truncated", Cut(good, good.size() / 2), kDataCorruptOrStale},
      {"header only", Cut(good, 6), kDataCorruptOrStale},
      {"extended", WithCrc(extended), kDataCorruptOrStale},
      {"next version", WithCrc(Flip(good, 4, 0x03)), kIllegalParameterValue},
      // A well-formed block whose first setting (the acquisition type, 4 bytes) holds an unknown value.
      {"value", WithCrc(Flip(good, 11, 0x40)), kDataCorruptOrStale},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    Instrument scope;
    std::mt19937 rng(99);
    scope.SetState(RandomState(rng));
    const ScopeState before = scope.State();
    Restore(scope, c.setup);
    EXPECT_EQ(scope.State(), before);
    EXPECT_EQ(scope.Errors(), std::vector<int>{c.error});
  }
}

TEST(LearnString, ChecksumIsStandardCrc32) { EXPECT_EQ(LearnString::Crc32("123456789"), 0xCBF43926u); }

}  // namespace
}  // namespace cvn73100::sim
