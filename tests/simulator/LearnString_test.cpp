#include "simulator/LearnString.h"

#include <gtest/gtest.h>

#include <functional>
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

TEST(LearnString, EverySettingChangesTheBytes) {
  const std::string defaults = LearnString::Encode(ScopeState{});
  for (const SettingDef& def : SettingTable::All()) {
    for (int n = def.suffixMin; n <= def.suffixMax; ++n) {
      ScopeState s;
      const double old = SettingTable::Get(def, s, n);
      double value = old == def.max ? def.min : def.max;
      for (const Choice& c : def.choices) {
        if (c.value != old) value = c.value;
      }
      SettingTable::Set(def, s, n, value);
      EXPECT_NE(LearnString::Encode(s), defaults) << def.header << n;
    }
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

struct Damage {
  const char* name;
  std::function<std::string(std::string)> apply;
  int error;
};

class CorruptSetup : public ::testing::TestWithParam<Damage> {};

TEST_P(CorruptSetup, IsRefusedAndChangesNothing) {
  Instrument scope;
  std::mt19937 rng(99);
  scope.SetState(RandomState(rng));
  const ScopeState before = scope.State();
  const std::string damaged = GetParam().apply(LearnString::Encode(ScopeState{}));
  Restore(scope, damaged);
  EXPECT_EQ(scope.State(), before);
  EXPECT_EQ(scope.Errors(), std::vector<int>{GetParam().error});
}

INSTANTIATE_TEST_SUITE_P(
    Damages, CorruptSetup,
    ::testing::Values(
        Damage{"empty", [](std::string) { return std::string(); }, kIllegalParameterValue},
        Damage{"foreign", [](std::string) { return std::string("SETUP FROM ANOTHER INSTRUMENT"); },
               kIllegalParameterValue},
        Damage{"magic", [](std::string s) { return Flip(s, 0, 0x20); }, kIllegalParameterValue},
        Damage{"payload bit", [](std::string s) { return Flip(s, 20, 0x04); }, kDataCorruptOrStale},
        Damage{"checksum", [](std::string s) { return Flip(s, s.size() - 1, 0x01); }, kDataCorruptOrStale},
        Damage{"truncated",
               [](std::string s) {
                 s.resize(s.size() / 2);
                 return s;
               },
               kDataCorruptOrStale},
        Damage{"header only",
               [](std::string s) {
                 s.resize(6);
                 return s;
               },
               kDataCorruptOrStale},
        Damage{"extended",
               [](std::string s) {
                 s.insert(s.size() - 4, "xx");
                 return WithCrc(s);
               },
               kDataCorruptOrStale},
        Damage{"next version", [](std::string s) { return WithCrc(Flip(s, 4, 0x03)); }, kIllegalParameterValue},
        // A well-formed block whose first setting (the acquisition type, 4 bytes) holds an unknown value.
        Damage{"value", [](std::string s) { return WithCrc(Flip(s, 11, 0x40)); }, kDataCorruptOrStale}),
    [](const auto& test) {
      std::string name = test.param.name;
      for (char& c : name) c = std::isalnum(static_cast<unsigned char>(c)) ? c : '_';
      return name;
    });

TEST(LearnString, ChecksumIsStandardCrc32) { EXPECT_EQ(LearnString::Crc32("123456789"), 0xCBF43926u); }

}  // namespace
}  // namespace cvn73100::sim
