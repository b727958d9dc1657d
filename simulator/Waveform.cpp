#include "simulator/Waveform.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <numbers>

#include "simulator/SettingTable.h"

namespace cvn73100::sim {
namespace {

double Fraction(double x) { return x - std::floor(x); }

std::uint64_t SplitMix64(std::uint64_t x) {
  x += 0x9E3779B97F4A7C15ull;
  x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9ull;
  x = (x ^ (x >> 27)) * 0x94D049BB133111EBull;
  return x ^ (x >> 31);
}

double ReferenceFraction(int reference) { return reference == 3 ? 0.0 : reference == 2 ? 1.0 : 0.5; }

bool IsPod(int source) { return source == kSourcePod1 || source == kSourcePod2; }

}  // namespace

double Waveform::SignalVolts(int channel, double seconds) {
  switch (channel) {
    case 1:
      return std::sin(2.0 * std::numbers::pi * kSineHz * seconds);
    case 2:
      return Fraction(seconds * kSquareHz) < 0.5 ? 1.0 : 0.0;
    case 3:
      return 2.0 * Fraction(seconds * kRampHz) - 1.0;
    case 4: {
      // Keyed by the time in picoseconds, so the same instant always reads the same noise.
      const auto key = static_cast<std::uint64_t>(std::llround(seconds * 1e12));
      const double unit = static_cast<double>(SplitMix64(key ^ kNoiseSeed) >> 11) * 0x1p-53;
      return (2.0 * unit - 1.0) * kNoisePeakVolts;
    }
    default:
      return 0.0;
  }
}

double Waveform::SignalHz(int channel) {
  switch (channel) {
    case 1:
      return kSineHz;
    case 2:
      return kSquareHz;
    case 3:
      return kRampHz;
    default:
      return 0.0;
  }
}

double Waveform::ChannelVolts(const ScopeState& state, int channel, double seconds) {
  const ChannelSettings& ch = state.channel[static_cast<std::size_t>(channel - 1)];
  if (ch.coupling == 2) return 0.0;
  double volts = SignalVolts(channel, seconds);
  if (ch.coupling == 3 && channel == 2) volts -= 0.5;  // the only signal with a DC component
  if (channel == 4 && state.acquireType == 1) volts /= std::sqrt(static_cast<double>(state.acquireCount));
  return volts;
}

std::uint16_t Waveform::LogicWord(double seconds) {
  return static_cast<std::uint16_t>(static_cast<std::int64_t>(std::floor(seconds * kLogicClockHz)));
}

int Waveform::PointCount(const ScopeState& state) {
  return state.waveformPoints == 0 ? kMaxRecordPoints : state.waveformPoints;
}

Preamble Waveform::MakePreamble(const ScopeState& state) {
  Preamble p;
  p.format = state.waveformFormat;
  p.type = state.acquireType;
  p.points = PointCount(state);
  p.count = state.acquireType == 1 ? state.acquireCount : 1;
  p.xIncrement = state.timebaseRange / p.points;
  p.xOrigin = state.timebaseDelay - ReferenceFraction(state.timebaseReference) * state.timebaseRange;
  p.xReference = 0.0;
  if (IsPod(state.waveformSource) || state.waveformFormat == 4) {
    p.yIncrement = 1.0;
    return p;
  }
  const ChannelSettings& ch = state.channel[static_cast<std::size_t>(state.waveformSource - 1)];
  const bool word = state.waveformFormat == 1;
  p.yIncrement = ch.range / (word ? 65536.0 : 256.0);
  p.yOrigin = ch.offset;
  p.yReference = word ? 32768.0 : 128.0;
  return p;
}

void Waveform::AppendPreamble(const Preamble& p, std::string& out) {
  AppendInteger(out, p.format);
  out += ',';
  AppendInteger(out, p.type);
  out += ',';
  AppendInteger(out, p.points);
  out += ',';
  AppendInteger(out, p.count);
  for (double v : {p.xIncrement, p.xOrigin, p.xReference, p.yIncrement, p.yOrigin, p.yReference}) {
    out += ',';
    AppendReal(out, v);
  }
}

void Waveform::AppendData(const ScopeState& state, std::string& out) {
  const Preamble p = MakePreamble(state);
  const bool pod = IsPod(state.waveformSource);
  const double maxCode = p.format == 1 ? 65535.0 : 255.0;
  out.reserve(out.size() + static_cast<std::size_t>(p.points) * (p.format == 4 ? 14 : 2));
  for (int i = 0; i < p.points; ++i) {
    const double t = SampleTime(p, i);
    double code = 0.0;
    if (pod) {
      const std::uint16_t word = LogicWord(t);
      code = state.waveformSource == kSourcePod1 ? (word & 0xFF) : (word >> 8);
    } else {
      const double volts = ChannelVolts(state, state.waveformSource, t);
      code = p.format == 4 ? volts
                           : std::clamp(std::round((volts - p.yOrigin) / p.yIncrement) + p.yReference, 0.0, maxCode);
    }
    switch (p.format) {
      case 0:
        out += static_cast<char>(static_cast<std::uint8_t>(code));
        break;
      case 1: {
        const auto value = static_cast<std::uint16_t>(code);
        out += static_cast<char>(value >> 8);
        out += static_cast<char>(value & 0xFF);
        break;
      }
      default: {
        if (i > 0) out += ',';
        if (pod) {
          AppendInteger(out, static_cast<long long>(code));
        } else {
          char buffer[32];
          const auto end = std::to_chars(buffer, buffer + sizeof buffer, code, std::chars_format::scientific, 6).ptr;
          std::replace(buffer, end, 'e', 'E');
          out.append(buffer, end);
        }
      }
    }
  }
}

}  // namespace cvn73100::sim
