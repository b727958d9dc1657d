// Random and mutated program messages into the instrument: nothing crashes, nothing grows without bound, and
// it keeps answering.
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "simulator/Identity.h"
#include "simulator/Instrument.h"

namespace cvn73100::sim {
namespace {

// Valid messages to mutate (the screen image is left out only because it is slow to render).
const std::vector<std::string> kSeeds = {
    "*IDN?",
    "*RST;*CLS",
    "*ESR?;*STB?",
    "*ESE 32;*SRE 16",
    "*OPC?",
    ":SYST:ERR?",
    ":CHAN2:RANG 2.5;OFFS -0.1;:CHAN2:RANG?",
    ":TIM:RANG 1e-3;DEL 1e-4;REF LEFT",
    ":TRIG:SOUR DIG3;SLOP NEG",
    ":ACQ:TYPE AVER;COUN 16",
    ":WAV:SOUR POD1;FORM WORD;POIN 250;:WAV:PRE?",
    ":WAV:DATA?",
    ":DIG CHAN1,POD2",
    ":SYST:SET #14abcd",
    ":SYST:SET?",
    ":MEAS:VPP? CHAN3",
    ":A #H1F,'x''y',\"q\"",
    ":AUT;:RST?",
};

std::string Mutate(std::string s, std::mt19937& rng) {
  auto pick = [&](std::size_t n) { return std::uniform_int_distribution<std::size_t>(0, n)(rng); };
  const int edits = 1 + static_cast<int>(pick(4));
  for (int e = 0; e < edits; ++e) {
    const auto byte = static_cast<char>(pick(255));
    switch (pick(5)) {
      case 0:
        if (!s.empty()) s[pick(s.size() - 1)] = byte;
        break;
      case 1:
        s.insert(pick(s.size()), 1, byte);
        break;
      case 2:
        if (!s.empty()) s.erase(pick(s.size() - 1), 1 + pick(3));
        break;
      case 3:
        s.insert(pick(s.size()), kSeeds[pick(kSeeds.size() - 1)]);
        break;
      case 4:
        s.insert(pick(s.size()), "#9" + std::to_string(pick(999999999)));
        break;
      default:
        s.insert(pick(s.size()), std::string(pick(16), byte));
        break;
    }
  }
  return s;
}

TEST(Fuzz, HundredThousandMessagesLeaveTheInstrumentServing) {
  std::mt19937 rng(0x73100);
  Instrument scope;
  std::uint8_t sink[4096];
  for (int i = 0; i < 100'000; ++i) {
    std::string message;
    if (i % 4 == 0) {
      message.resize(std::uniform_int_distribution<std::size_t>(0, 64)(rng));
      for (char& c : message) c = static_cast<char>(rng());
    } else {
      message = Mutate(kSeeds[rng() % kSeeds.size()], rng);
    }
    // END closes every message, so a block header that lies cannot swallow the next one.
    scope.Write(reinterpret_cast<const std::uint8_t*>(message.data()), message.size(), true);
    bool end = false;
    while (scope.Read(sink, sizeof sink, std::chrono::milliseconds(0), end) > 0) {
    }
    if (i % 10'000 == 9'999) {
      scope.Send("*CLS");
      ASSERT_EQ(scope.Query("*IDN?"), Identity{}.Reply()) << "after message " << i;
      ASSERT_LE(scope.Errors().size(), 30u);
    }
  }
}

}  // namespace
}  // namespace cvn73100::sim
