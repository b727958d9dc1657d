#include "simulator/Waveform.h"

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

#include "simulator/Block.h"
#include "simulator/Instrument.h"

namespace cvn73100::sim {
namespace {

Preamble ParsePreamble(const std::string& text) {
  std::vector<double> f;
  std::stringstream in(text);
  std::string field;
  while (std::getline(in, field, ',')) f.push_back(std::stod(field));
  EXPECT_EQ(f.size(), 10u) << text;
  f.resize(10);
  const auto n = [&](int i) { return static_cast<int>(f[static_cast<std::size_t>(i)]); };
  return {n(0), n(1), n(2), n(3), f[4], f[5], f[6], f[7], f[8], f[9]};
}

// The sample codes of a :WAVeform:DATA? reply, whatever the format.
std::vector<double> ParseData(const std::string& reply, int format) {
  const auto block = Block::Parse(reply);
  EXPECT_TRUE(block.has_value());
  std::vector<double> codes;
  if (!block) return codes;
  if (format == 4) {
    std::stringstream in{std::string(*block)};
    std::string field;
    while (std::getline(in, field, ',')) codes.push_back(std::stod(field));
  } else if (format == 1) {
    for (std::size_t i = 0; i + 1 < block->size(); i += 2) {
      codes.push_back(static_cast<std::uint8_t>((*block)[i]) * 256 + static_cast<std::uint8_t>((*block)[i + 1]));
    }
  } else {
    for (char c : *block) codes.push_back(static_cast<std::uint8_t>(c));
  }
  return codes;
}

TEST(Waveform, SignalsAreTheDocumentedFunctions) {
  EXPECT_NEAR(Waveform::SignalVolts(1, 0.25e-3), 1.0, 1e-12);
  EXPECT_NEAR(Waveform::SignalVolts(1, -0.25e-3), -1.0, 1e-12);
  EXPECT_EQ(Waveform::SignalVolts(2, 0.1e-3), 1.0);
  EXPECT_EQ(Waveform::SignalVolts(2, 0.3e-3), 0.0);
  EXPECT_NEAR(Waveform::SignalVolts(3, 0.0), -1.0, 1e-12);
  EXPECT_NEAR(Waveform::SignalVolts(3, 0.5e-3), -0.5, 1e-9);
  EXPECT_NEAR(Waveform::SignalVolts(3, 1e-3), 0.0, 1e-9);
  EXPECT_NEAR(Waveform::SignalVolts(3, 2.5e-3), -0.5, 1e-9);
  EXPECT_EQ(Waveform::SignalVolts(4, 1.234e-3), Waveform::SignalVolts(4, 1.234e-3));
  double sum = 0.0;
  for (int i = 0; i < 10000; ++i) {
    const double v = Waveform::SignalVolts(4, i * 1e-7);
    ASSERT_LE(std::abs(v), Waveform::kNoisePeakVolts);
    sum += v;
  }
  EXPECT_NEAR(sum / 10000, 0.0, 0.01);
  EXPECT_EQ(Waveform::LogicWord(5.5e-5), 5);
  EXPECT_EQ(Waveform::LogicWord(-1e-6), 0xFFFF);
}

TEST(Waveform, DefaultPreambleText) {
  Instrument scope;
  EXPECT_EQ(scope.Query(":WAV:PRE?"), "0,6,1000,1,1E-06,-5E-04,0E+00,3.125E-02,0E+00,1.28E+02");
}

struct CaptureCase {
  std::string setup;
  int points;
};

class CaptureTable : public ::testing::TestWithParam<CaptureCase> {};

// Every sample, scaled by the preamble, lands within half a code of the formula (or at a clamped end code).
TEST_P(CaptureTable, PreambleScalesDataToTheFormula) {
  Instrument scope;
  scope.Send(":CHAN2:DISP ON;:CHAN3:DISP ON;:CHAN4:DISP ON;" + GetParam().setup);
  ASSERT_TRUE(scope.Errors().empty()) << scope.Errors().front();
  const Preamble p = ParsePreamble(scope.Query(":WAV:PRE?"));
  const std::vector<double> codes = ParseData(scope.Query(":WAV:DATA?"), p.format);
  ASSERT_EQ(p.points, GetParam().points);
  ASSERT_EQ(codes.size(), static_cast<std::size_t>(p.points));
  const ScopeState s = scope.State();
  const double maxCode = p.format == 1 ? 65535 : 255;
  for (int i = 0; i < p.points; ++i) {
    const double t = Waveform::SampleTime(p, i);
    const double value = Waveform::CodeValue(p, codes[static_cast<std::size_t>(i)]);
    if (s.waveformSource > 4) {
      const std::uint16_t word = Waveform::LogicWord(t);
      ASSERT_EQ(value, s.waveformSource == kSourcePod1 ? (word & 0xFF) : (word >> 8)) << i;
      continue;
    }
    const double volts = Waveform::ChannelVolts(s, s.waveformSource, t);
    const double code = codes[static_cast<std::size_t>(i)];
    if (p.format != 4 && (code == 0 || code == maxCode)) continue;  // clipped at the screen edge
    const double tolerance = p.format == 4 ? 1e-6 * std::max(1.0, std::abs(volts)) : p.yIncrement / 2 + 1e-12;
    ASSERT_NEAR(value, volts, tolerance) << "sample " << i;
  }
}

INSTANTIATE_TEST_SUITE_P(
    Sources, CaptureTable,
    ::testing::Values(CaptureCase{":WAV:SOUR CHAN1", 1000}, CaptureCase{":WAV:SOUR CHAN1;FORM WORD;POIN 250", 250},
                      CaptureCase{":WAV:SOUR CHAN2;FORM ASC;POIN 100;:TIM:REF LEFT;DEL 1e-4", 100},
                      CaptureCase{":WAV:SOUR CHAN2;POIN 500;:CHAN2:COUP AC;RANG 0.5;OFFS 0.1", 500},
                      CaptureCase{":WAV:SOUR CHAN3;POIN MAX;:TIM:REF RIGH;RANG 5e-3", kMaxRecordPoints},
                      CaptureCase{":WAV:SOUR CHAN4;FORM WORD;POIN 2000;:ACQ:TYPE AVER;COUN 16", 2000},
                      CaptureCase{":WAV:SOUR CHAN1;:CHAN1:RANG 0.5;OFFS 3", 1000},  // all clipped high
                      CaptureCase{":WAV:SOUR CHAN1;:CHAN1:COUP GND", 1000},
                      CaptureCase{":WAV:SOUR POD1;:TIM:RANG 1e-4", 1000},
                      CaptureCase{":WAV:SOUR POD2;FORM WORD;:TIM:RANG 2", 1000},
                      CaptureCase{":WAV:SOUR POD2;FORM ASC;POIN 100;:TIM:RANG 1", 100}));

TEST(Waveform, AveragingReducesTheNoise) {
  ScopeState s;
  double single = 0.0, averaged = 0.0;
  for (int i = 0; i < 1000; ++i) single = std::max(single, std::abs(Waveform::ChannelVolts(s, 4, i * 1e-6)));
  s.acquireType = 1;
  s.acquireCount = 16;
  for (int i = 0; i < 1000; ++i) averaged = std::max(averaged, std::abs(Waveform::ChannelVolts(s, 4, i * 1e-6)));
  EXPECT_NEAR(averaged, single / 4, 1e-12);
  EXPECT_EQ(Waveform::MakePreamble(s).count, 16);
}

}  // namespace
}  // namespace cvn73100::sim
