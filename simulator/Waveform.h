#pragma once

#include <cstdint>
#include <string>

#include "simulator/ScopeState.h"

namespace cvn73100::sim {

// What :WAVeform:PREamble? reports. A sample's time is xOrigin + (i - xReference) * xIncrement and its value
// (code - yReference) * yIncrement + yOrigin; for ASCii data and the logic pods the codes are the values.
struct Preamble {
  int format = 0;  // 0 BYTE, 1 WORD, 4 ASCii
  int type = 0;    // the acquisition type, 1..6
  int points = 0;
  int count = 1;  // averages behind each point
  double xIncrement = 0.0, xOrigin = 0.0, xReference = 0.0;
  double yIncrement = 0.0, yOrigin = 0.0, yReference = 0.0;
};

// The signals on the inputs are fixed functions of time, so a capture can be checked against the formula:
// channel 1 a 1 kHz sine of 1 V peak, channel 2 a 2 kHz square between 0 V and 1 V, channel 3 a 500 Hz ramp
// from -1 V to +1 V, channel 4 uniform noise of 0.2 V peak drawn from a fixed seed by the time itself, and the
// 16 logic bits a binary counter clocked at 100 kHz.
class Waveform {
 public:
  static constexpr double kSineHz = 1000.0;
  static constexpr double kSquareHz = 2000.0;
  static constexpr double kRampHz = 500.0;
  static constexpr double kNoisePeakVolts = 0.2;
  static constexpr double kLogicClockHz = 1e5;
  static constexpr std::uint64_t kNoiseSeed = 0x7310'0C0F'FEE5'EED5ull;

  // Volts at the probe tip of analog channel 1..4, `seconds` after the trigger, DC coupled, one acquisition.
  static double SignalVolts(int channel, double seconds);
  // The repetition frequency of a channel's signal; 0 for the noise.
  static double SignalHz(int channel);
  // The signal as the channel's settings show it: GND coupling reads 0 V, AC coupling removes the mean, and
  // averaging divides the noise by the square root of the count.
  static double ChannelVolts(const ScopeState& state, int channel, double seconds);
  static std::uint16_t LogicWord(double seconds);

  static int PointCount(const ScopeState& state);
  static Preamble MakePreamble(const ScopeState& state);
  static double SampleTime(const Preamble& p, int i) { return p.xOrigin + (i - p.xReference) * p.xIncrement; }
  static double CodeValue(const Preamble& p, double code) { return (code - p.yReference) * p.yIncrement + p.yOrigin; }

  // The ten preamble fields, comma-separated.
  static void AppendPreamble(const Preamble& p, std::string& out);
  // The data of :WAVeform:DATA? for the current source, points and format (without the block header). WORD
  // samples are sent most significant byte first.
  static void AppendData(const ScopeState& state, std::string& out);
};

}  // namespace cvn73100::sim
