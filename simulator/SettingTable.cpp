#include "simulator/SettingTable.h"

#include <charconv>
#include <cmath>

#include "simulator/ErrorCode.h"
#include "simulator/Mnemonic.h"

namespace cvn73100::sim {
namespace {

constexpr Choice kAcquireCount[] = {{1, ""}, {4, ""}, {8, ""}, {16, ""}, {32, ""}, {64, ""}, {128, ""}, {256, ""}};
constexpr Choice kProbe[] = {{1, ""}, {10, ""}, {20, ""}, {100, ""}};
constexpr Choice kProbeMode[] = {{1, "MANual"}, {2, "AUTO"}};
constexpr Choice kWaveformSource[] = {{1, "CHANnel1"}, {2, "CHANnel2"},       {3, "CHANnel3"},
                                      {4, "CHANnel4"}, {kSourcePod1, "POD1"}, {kSourcePod2, "POD2"}};
constexpr Choice kWaveformPoints[] = {{100, ""}, {250, ""}, {500, ""}, {1000, ""}, {2000, ""}, {0, "MAXimum"}};
constexpr Choice kWaveformFormat[] = {{0, "BYTE"}, {1, "WORD"}, {4, "ASCii"}};
constexpr Choice kChannels[] = {{1, "CHANnel1"}, {2, "CHANnel2"}, {3, "CHANnel3"}, {4, "CHANnel4"}};

using K = SettingKind;
// One setting per entry, kept compact so the table reads as one.
// clang-format off
const SettingDef kSettings[] = {
  {.header = ":ACQuire:TYPE", .kind = K::Enumerated, .choices = scpi::ACQUISITION_TYPES,
   .intField = [](ScopeState& s, int) { return &s.acquireType; }},
  {.header = ":ACQuire:COUNt", .kind = K::Enumerated, .choices = kAcquireCount,
   .intField = [](ScopeState& s, int) { return &s.acquireCount; }},
  {.header = ":CHANnel#:DISPlay", .kind = K::Bool, .choices = scpi::ON_OFF, .suffixMin = 1, .suffixMax = 4,
   .intField = [](ScopeState& s, int n) { return &s.channel[n - 1].display; }},
  {.header = ":CHANnel#:COUPling", .kind = K::Enumerated, .choices = scpi::CHANNEL_COUPLINGS, .suffixMin = 1, .suffixMax = 4,
   .intField = [](ScopeState& s, int n) { return &s.channel[n - 1].coupling; }},
  {.header = ":CHANnel#:PROBe", .kind = K::Enumerated, .choices = kProbe, .suffixMin = 1, .suffixMax = 4,
   .intField = [](ScopeState& s, int n) { return &s.channel[n - 1].probe; }},
  {.header = ":CHANnel#:PROBe:MODE", .kind = K::Enumerated, .choices = kProbeMode, .suffixMin = 1, .suffixMax = 4,
   .intField = [](ScopeState& s, int n) { return &s.channel[n - 1].probeMode; }},
  {.header = ":CHANnel#:RANGe", .kind = K::Number, .min = 1e-3, .max = 1e3, .suffixMin = 1, .suffixMax = 4,
   .numberField = [](ScopeState& s, int n) { return &s.channel[n - 1].range; }},
  {.header = ":CHANnel#:OFFSet", .kind = K::Number, .min = -500.0, .max = 500.0, .suffixMin = 1, .suffixMax = 4,
   .numberField = [](ScopeState& s, int n) { return &s.channel[n - 1].offset; }},
  {.header = ":TIMebase:MODE", .kind = K::Enumerated, .choices = scpi::TIME_MODES,
   .intField = [](ScopeState& s, int) { return &s.timebaseMode; }},
  {.header = ":TIMebase:RANGe", .kind = K::Number, .min = 1e-9, .max = 500.0,
   .numberField = [](ScopeState& s, int) { return &s.timebaseRange; }},
  {.header = ":TIMebase:DELay", .kind = K::Number, .min = -500.0, .max = 500.0,
   .numberField = [](ScopeState& s, int) { return &s.timebaseDelay; }},
  {.header = ":TIMebase:REFerence", .kind = K::Enumerated, .choices = scpi::TIME_REFERENCES,
   .intField = [](ScopeState& s, int) { return &s.timebaseReference; }},
  {.header = ":TRIGger:SWEep", .kind = K::Enumerated, .choices = scpi::TRIGGER_SWEEPS,
   .intField = [](ScopeState& s, int) { return &s.triggerMode; }},
  {.header = ":TRIGger:SOURce", .kind = K::Enumerated, .choices = scpi::TRIGGER_SOURCES,
   .intField = [](ScopeState& s, int) { return &s.triggerSource; }},
  {.header = ":TRIGger:SLOPe", .kind = K::Enumerated, .choices = scpi::TRIGGER_SLOPES,
   .intField = [](ScopeState& s, int) { return &s.triggerSlope; }},
  {.header = ":TRIGger:LEVel", .kind = K::Number, .min = -500.0, .max = 500.0,
   .numberField = [](ScopeState& s, int) { return &s.triggerLevel; }},
  {.header = ":TRIGger:COUPling", .kind = K::Enumerated, .choices = scpi::TRIGGER_COUPLINGS,
   .intField = [](ScopeState& s, int) { return &s.triggerCoupling; }},
  {.header = ":DIGital#:DISPlay", .kind = K::Bool, .choices = scpi::ON_OFF, .suffixMin = 0, .suffixMax = 15,
   .intField = [](ScopeState& s, int n) { return &s.digitalDisplay[static_cast<std::size_t>(n)]; }},
  {.header = ":WAVeform:SOURce", .kind = K::Enumerated, .choices = kWaveformSource,
   .intField = [](ScopeState& s, int) { return &s.waveformSource; }},
  {.header = ":WAVeform:POINts", .kind = K::Enumerated, .choices = kWaveformPoints,
   .intField = [](ScopeState& s, int) { return &s.waveformPoints; }},
  {.header = ":WAVeform:FORMat", .kind = K::Enumerated, .choices = kWaveformFormat,
   .intField = [](ScopeState& s, int) { return &s.waveformFormat; }},
  {.header = ":MEASure:SOURce", .kind = K::Enumerated, .choices = kChannels,
   .intField = [](ScopeState& s, int) { return &s.measureSource; }},
};
// clang-format on

}  // namespace

std::span<const SettingDef> SettingTable::All() { return kSettings; }

bool SettingTable::IsMnemonicOnly(std::span<const Choice> choices) {
  for (const Choice& c : choices) {
    if (c.keyword.empty()) return false;
  }
  return true;
}

const Choice* SettingTable::FindChoice(std::span<const Choice> choices, const Argument& arg) {
  if (arg.kind == Argument::Kind::Number) {
    if (std::nearbyint(arg.number) != arg.number) return nullptr;
    for (const Choice& c : choices) {
      if (c.value == arg.number) return &c;
    }
    return nullptr;
  }
  if (arg.kind != Argument::Kind::Characters) return nullptr;
  return scpi::FindKeyword(choices, arg.text);
}

int SettingTable::Parse(const SettingDef& def, const Argument& arg, double& value) {
  if (arg.kind == Argument::Kind::String || arg.kind == Argument::Kind::Block) return kDataTypeError;
  switch (def.kind) {
    case SettingKind::Number:
      if (arg.kind == Argument::Kind::Characters) {
        if (MatchesKeyword("MINimum", arg.text)) {
          value = def.min;
          return kNoError;
        }
        if (MatchesKeyword("MAXimum", arg.text)) {
          value = def.max;
          return kNoError;
        }
        return kDataTypeError;
      }
      if (!IsValid(def, arg.number)) return kDataOutOfRange;
      value = arg.number;
      return kNoError;
    case SettingKind::Bool:
      if (arg.kind == Argument::Kind::Number) {
        value = std::nearbyint(arg.number) != 0.0 ? 1.0 : 0.0;
        return kNoError;
      }
      [[fallthrough]];
    case SettingKind::Enumerated: {
      if (arg.kind == Argument::Kind::Number && IsMnemonicOnly(def.choices)) return kDataTypeError;
      const Choice* choice = FindChoice(def.choices, arg);
      if (choice == nullptr) return kIllegalParameterValue;
      value = choice->value;
      return kNoError;
    }
  }
  return kCommandError;
}

bool SettingTable::IsValid(const SettingDef& def, double value) {
  if (def.kind == SettingKind::Number) return std::isfinite(value) && value >= def.min && value <= def.max;
  for (const Choice& c : def.choices) {
    if (c.value == value) return true;
  }
  return false;
}

double SettingTable::Get(const SettingDef& def, const ScopeState& state, int suffix) {
  auto& mutableState = const_cast<ScopeState&>(state);  // the accessors only form an address
  if (def.kind == SettingKind::Number) return *def.numberField(mutableState, suffix);
  return *def.intField(mutableState, suffix);
}

void SettingTable::Set(const SettingDef& def, ScopeState& state, int suffix, double value) {
  if (def.kind == SettingKind::Number) {
    *def.numberField(state, suffix) = value;
  } else {
    *def.intField(state, suffix) = static_cast<int>(value);
  }
}

void SettingTable::AppendReply(const SettingDef& def, const ScopeState& state, int suffix, std::string& out) {
  const double value = Get(def, state, suffix);
  if (def.kind == SettingKind::Number) {
    AppendReal(out, value);
    return;
  }
  if (def.kind == SettingKind::Enumerated && IsMnemonicOnly(def.choices)) {
    if (const Choice* c = scpi::FindValue(def.choices, static_cast<std::int64_t>(value))) {
      out += scpi::ShortReply(c->keyword);
      return;
    }
  }
  AppendInteger(out, static_cast<long long>(value));
}

void AppendReal(std::string& out, double value) {
  char buffer[32];
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::scientific);
  for (char* p = buffer; p != result.ptr; ++p) {
    if (*p == 'e') *p = 'E';
  }
  out.append(buffer, result.ptr);
}

void AppendInteger(std::string& out, long long value) {
  char buffer[24];
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
  out.append(buffer, result.ptr);
}

}  // namespace cvn73100::sim
