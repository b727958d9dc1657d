#pragma once

#include <array>

namespace cvn73100::sim {

// Waveform sources other than the analog channels 1..4.
inline constexpr int kSourcePod1 = 101;
inline constexpr int kSourcePod2 = 102;
// Record length a waveform query returns for POINts MAXimum (value 0).
inline constexpr int kMaxRecordPoints = 4000;

struct ChannelSettings {
  int display = 0;      // 0 off, 1 on
  int coupling = 1;     // 1 DC, 2 GND, 3 AC
  int probe = 1;        // attenuation 1, 10, 20, 100
  int probeMode = 1;    // 1 manual, 2 auto
  double range = 8.0;   // volts over the eight vertical divisions
  double offset = 0.0;  // volts at the screen centre
  bool operator==(const ChannelSettings&) const = default;
};

// Every setting the instrument keeps; the defaults are the state after *RST. Enumerated values are the
// numbers a host sends (acquisition type 1..6, time mode 1..4, trigger source 1..6 and 10..25, and so on).
struct ScopeState {
  int acquireType = 6;  // 1 average, 2 peak, 3 glitch, 4 real time, 5 auto, 6 normal
  int acquireCount = 8;
  std::array<ChannelSettings, 4> channel{ChannelSettings{.display = 1}, ChannelSettings{}, ChannelSettings{},
                                         ChannelSettings{}};
  int timebaseMode = 4;         // 1 delayed, 2 XY, 3 roll, 4 normal
  double timebaseRange = 1e-3;  // seconds over the ten horizontal divisions
  double timebaseDelay = 0.0;   // seconds from the trigger to the reference point
  int timebaseReference = 1;    // 1 centre, 2 right, 3 left
  int triggerMode = 1;          // 1 auto, 2 normal, 3 auto level
  int triggerSource = 1;        // 1..4 channel, 5 external, 6 line, 10..25 logic bit D0..D15
  int triggerSlope = 1;         // 1 positive, 2 negative
  double triggerLevel = 0.0;    // volts
  int triggerCoupling = 1;      // 1 DC, 2 AC
  std::array<int, 16> digitalDisplay{};
  int waveformSource = 1;     // 1..4 channel, kSourcePod1, kSourcePod2
  int waveformPoints = 1000;  // 100, 250, 500, 1000, 2000, or 0 for the whole record
  int waveformFormat = 0;     // 0 BYTE, 1 WORD, 4 ASCii
  int measureSource = 1;      // 1..4
  bool operator==(const ScopeState&) const = default;
};

}  // namespace cvn73100::sim
