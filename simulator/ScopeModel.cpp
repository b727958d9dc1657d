#include "simulator/ScopeModel.h"

#include <algorithm>
#include <cmath>
#include <span>

#include "simulator/Block.h"
#include "simulator/ErrorCode.h"
#include "simulator/ImageEncoder.h"
#include "simulator/LearnString.h"
#include "simulator/Mnemonic.h"
#include "simulator/ScreenRenderer.h"
#include "simulator/SettingTable.h"
#include "simulator/Waveform.h"

namespace cvn73100::sim {

struct ScopeModel::Call {
  const ProgramUnit& unit;
  const CommandDef& def;
  int suffix;
};

namespace {

enum Measurement { kVpp, kVmax, kVmin, kVaverage, kVrms, kFrequency, kPeriod };
// SCPI's value for a measurement that cannot be made.
constexpr double kNoMeasurement = 9.9e37;

constexpr Choice kImageFormats[] = {{0, "BMP"},  {3, "GIF"}, {4, "WMF"},  {5, "EMF"},
                                    {6, "TIFF"}, {6, "TIF"}, {7, "JPEG"}, {7, "JPG"}};
constexpr Choice kDigitizeSources[] = {{1, "CHANnel1"}, {2, "CHANnel2"},       {3, "CHANnel3"},
                                       {4, "CHANnel4"}, {kSourcePod1, "POD1"}, {kSourcePod2, "POD2"}};
constexpr Choice kChannels[] = {{1, "CHANnel1"}, {2, "CHANnel2"}, {3, "CHANnel3"}, {4, "CHANnel4"}};

struct PatternNode {
  std::string_view keyword;
  bool suffix = false;
};

struct Command {
  ScopeModel::CommandDef def;
  std::vector<PatternNode> pattern;
  int suffixMin = 0, suffixMax = 0;
};

std::vector<PatternNode> SplitPattern(std::string_view header) {
  std::vector<PatternNode> nodes;
  if (!header.empty() && header.front() == ':') header.remove_prefix(1);
  while (!header.empty()) {
    const std::size_t colon = std::min(header.find(':'), header.size());
    std::string_view keyword = header.substr(0, colon);
    const bool suffix = !keyword.empty() && keyword.back() == '#';
    if (suffix) keyword.remove_suffix(1);
    nodes.push_back({keyword, suffix});
    header.remove_prefix(std::min(colon + 1, header.size()));
  }
  return nodes;
}

}  // namespace

// Builds the command table; a friend of the model so it can name the handlers.
class CommandTable {
 public:
  static const std::vector<Command>& Get();
};

const std::vector<Command>& CommandTable::Get() {
  using M = ScopeModel;
  static const std::vector<Command> commands = [] {
    const M::CommandDef special[] = {
        {":SYSTem:ERRor", nullptr, &M::QueryError},
        {":SYSTem:ERRor:NEXT", nullptr, &M::QueryError},
        {":SYSTem:SETup", &M::SetSetup, &M::QuerySetup},
        {":RUN", &M::SetRunState, nullptr, static_cast<int>(RunState::Run)},
        {":STOP", &M::SetRunState, nullptr, static_cast<int>(RunState::Stop)},
        {":SINGle", &M::SetRunState, nullptr, static_cast<int>(RunState::Single)},
        {":RSTate", nullptr, &M::QueryRunState},
        {":DIGitize", &M::Digitize, nullptr},
        {":AUToscale", &M::Autoscale, nullptr},
        {":WAVeform:PREamble", nullptr, &M::QueryPreamble},
        {":WAVeform:DATA", nullptr, &M::QueryWaveformData},
        {":DISPlay:DATA", nullptr, &M::QueryScreen},
        {":MEASure:VPP", nullptr, &M::QueryMeasurement, kVpp},
        {":MEASure:VMAX", nullptr, &M::QueryMeasurement, kVmax},
        {":MEASure:VMIN", nullptr, &M::QueryMeasurement, kVmin},
        {":MEASure:VAVerage", nullptr, &M::QueryMeasurement, kVaverage},
        {":MEASure:VRMS", nullptr, &M::QueryMeasurement, kVrms},
        {":MEASure:FREQuency", nullptr, &M::QueryMeasurement, kFrequency},
        {":MEASure:PERiod", nullptr, &M::QueryMeasurement, kPeriod},
    };
    std::vector<Command> all;
    for (const SettingDef& s : SettingTable::All()) {
      all.push_back(
          {{s.header, &M::SetSetting, &M::QuerySetting, 0, &s}, SplitPattern(s.header), s.suffixMin, s.suffixMax});
    }
    for (const M::CommandDef& d : special) all.push_back({d, SplitPattern(d.header)});
    return all;
  }();
  return commands;
}

namespace {

// Finds the command a resolved header names; returns 0, -113 or -114.
int FindCommand(std::span<const HeaderNode> nodes, const Command*& found, int& suffix) {
  int error = kUndefinedHeader;
  for (const Command& c : CommandTable::Get()) {
    if (c.pattern.size() != nodes.size()) continue;
    bool matches = true, inRange = true;
    int given = -1;
    for (std::size_t i = 0; i < nodes.size() && matches; ++i) {
      const PatternNode& p = c.pattern[i];
      matches = MatchesKeyword(p.keyword, nodes[i].stem);
      if (!p.suffix) {
        matches = matches && nodes[i].suffix < 0;
      } else if (matches) {
        given = nodes[i].suffix < 0 ? 1 : nodes[i].suffix;
        inRange = given >= c.suffixMin && given <= c.suffixMax;
      }
    }
    if (!matches) continue;
    if (!inRange) {
      error = kHeaderSuffixOutOfRange;
      continue;
    }
    found = &c;
    suffix = given;
    return kNoError;
  }
  return error;
}

bool EqualsIgnoreCase(std::string_view a, std::string_view b) { return a.size() == b.size() && MatchesKeyword(b, a); }

// A 0..255 register value from the unit's single argument.
int RegisterArgument(const ProgramUnit& unit, std::uint8_t& value) {
  if (unit.args.empty()) return kMissingParameter;
  if (unit.args.size() > 1) return kParameterNotAllowed;
  const Argument& a = unit.args[0];
  if (a.kind != Argument::Kind::Number) return kDataTypeError;
  const double rounded = std::nearbyint(a.number);
  if (rounded < 0 || rounded > 255) return kDataOutOfRange;
  value = static_cast<std::uint8_t>(rounded);
  return kNoError;
}

}  // namespace

ScopeModel::ScopeModel(Identity identity) : identity_(std::move(identity)) {}

void ScopeModel::Reset() {
  state_ = ScopeState{};
  run_ = RunState::Run;
}

bool ScopeModel::Execute(std::string_view message, std::string& response) {
  MessageParser parser(message);
  path_.clear();
  bool answered = false;
  while (parser.Next(unit_)) {
    if (Dispatch(unit_, response, answered) && unit_.query) answered = true;
  }
  if (parser.Error() != kNoError) status_.Push(parser.Error());
  return answered;
}

bool ScopeModel::Dispatch(const ProgramUnit& unit, std::string& response, bool separate) {
  const std::size_t before = response.size();
  if (unit.query && separate) response += ';';
  int error = kNoError;
  if (unit.common) {
    error = ExecuteCommon(unit, response);
  } else {
    // A header without a leading colon continues the path of the previous command in the message.
    const Command* command = nullptr;
    int suffix = -1;
    error = kUndefinedHeader;
    if (!unit.rooted && !path_.empty()) {
      resolved_ = path_;
      resolved_.insert(resolved_.end(), unit.nodes.begin(), unit.nodes.end());
      error = FindCommand(resolved_, command, suffix);
    }
    if (error != kNoError) {
      resolved_ = unit.nodes;
      error = FindCommand(resolved_, command, suffix);
    }
    if (error == kNoError) {
      path_.assign(resolved_.begin(), resolved_.end() - 1);
      const Handler handler = unit.query ? command->def.query : command->def.command;
      error = handler == nullptr ? kUndefinedHeader : (this->*handler)(Call{unit, command->def, suffix}, response);
    }
  }
  if (error != kNoError) {
    status_.Push(error);
    response.resize(before);
  }
  return error == kNoError;
}

int ScopeModel::ExecuteCommon(const ProgramUnit& unit, std::string& out) {
  const std::string_view name = unit.commonName;
  const bool noArgs = unit.args.empty();
  auto is = [&](std::string_view n, bool query) { return EqualsIgnoreCase(name, n) && unit.query == query; };
  if (is("ESE", false) || is("SRE", false)) {
    std::uint8_t value = 0;
    if (const int error = RegisterArgument(unit, value); error != kNoError) return error;
    if (is("ESE", false)) {
      status_.SetEventEnable(value);
    } else {
      status_.SetServiceRequestEnable(value);
    }
    return kNoError;
  }
  if (!noArgs) {
    const bool known = is("IDN", true) || is("RST", false) || is("CLS", false) || is("ESR", true) || is("ESE", true) ||
                       is("SRE", true) || is("STB", true) || is("OPC", false) || is("OPC", true) || is("WAI", false) ||
                       is("TST", true) || is("LRN", true);
    return known ? kParameterNotAllowed : kUndefinedHeader;
  }
  if (is("IDN", true)) {
    out += identity_.Reply();
  } else if (is("RST", false)) {
    Reset();
  } else if (is("CLS", false)) {
    status_.Clear();
  } else if (is("ESR", true)) {
    AppendInteger(out, status_.TakeEventRegister());
  } else if (is("ESE", true)) {
    AppendInteger(out, status_.EventEnable());
  } else if (is("SRE", true)) {
    AppendInteger(out, status_.ServiceRequestEnable());
  } else if (is("STB", true)) {
    AppendInteger(out, status_.StatusByte(messageAvailable_));
  } else if (is("OPC", false)) {
    status_.SetEvent(StatusRegisters::kOperationComplete);  // every operation completes before the next starts
  } else if (is("OPC", true)) {
    out += '1';
  } else if (is("TST", true)) {
    out += '0';
  } else if (is("LRN", true)) {
    out += ":SYSTem:SETup ";
    Block::Append(out, LearnString::Encode(state_));
  } else if (!is("WAI", false)) {
    return kUndefinedHeader;
  }
  return kNoError;
}

int ScopeModel::SetSetting(const Call& call, std::string&) {
  if (call.unit.args.empty()) return kMissingParameter;
  if (call.unit.args.size() > 1) return kParameterNotAllowed;
  double value = 0.0;
  if (const int error = SettingTable::Parse(*call.def.setting, call.unit.args[0], value); error != kNoError) {
    return error;
  }
  SettingTable::Set(*call.def.setting, state_, call.suffix, value);
  return kNoError;
}

int ScopeModel::QuerySetting(const Call& call, std::string& out) {
  if (!call.unit.args.empty()) return kParameterNotAllowed;
  SettingTable::AppendReply(*call.def.setting, state_, call.suffix, out);
  return kNoError;
}

int ScopeModel::QueryError(const Call& call, std::string& out) {
  if (!call.unit.args.empty()) return kParameterNotAllowed;
  const int code = status_.Pop();
  AppendInteger(out, code);
  out += ",\"";
  out += ErrorText(code);
  out += '"';
  return kNoError;
}

int ScopeModel::SetSetup(const Call& call, std::string&) {
  if (call.unit.args.empty()) return kMissingParameter;
  if (call.unit.args.size() > 1) return kParameterNotAllowed;
  if (call.unit.args[0].kind != Argument::Kind::Block) return kDataTypeError;
  return LearnString::Decode(call.unit.args[0].text, state_);
}

int ScopeModel::QuerySetup(const Call& call, std::string& out) {
  if (!call.unit.args.empty()) return kParameterNotAllowed;
  Block::Append(out, LearnString::Encode(state_));
  return kNoError;
}

int ScopeModel::SetRunState(const Call& call, std::string&) {
  if (!call.unit.args.empty()) return kParameterNotAllowed;
  run_ = static_cast<RunState>(call.def.tag);
  return kNoError;
}

int ScopeModel::QueryRunState(const Call& call, std::string& out) {
  if (!call.unit.args.empty()) return kParameterNotAllowed;
  out += run_ == RunState::Run ? "RUN" : run_ == RunState::Stop ? "STOP" : "SING";
  return kNoError;
}

int ScopeModel::Digitize(const Call& call, std::string&) {
  for (const Argument& arg : call.unit.args) {
    if (arg.kind != Argument::Kind::Characters) return kDataTypeError;
    if (SettingTable::FindChoice(kDigitizeSources, arg) == nullptr) return kIllegalParameterValue;
  }
  run_ = RunState::Stop;  // one acquisition, then the instrument holds it
  return kNoError;
}

int ScopeModel::Autoscale(const Call& call, std::string&) {
  if (!call.unit.args.empty()) return kParameterNotAllowed;
  // Ranges that frame each signal with some head room, and two periods of the sine across the screen.
  constexpr double kRange[] = {3.0, 1.5, 3.0, 0.6};
  for (std::size_t i = 0; i < 4; ++i) {
    ChannelSettings& ch = state_.channel[i];
    ch.display = 1;
    ch.range = kRange[i];
    ch.offset = (i == 1 && ch.coupling == 1) ? 0.5 : 0.0;
  }
  state_.timebaseMode = 4;
  state_.timebaseRange = 2.0 / Waveform::kSineHz;
  state_.timebaseDelay = 0.0;
  state_.timebaseReference = 1;
  state_.triggerMode = 1;
  state_.triggerSource = 1;
  state_.triggerSlope = 1;
  state_.triggerLevel = 0.0;
  run_ = RunState::Run;
  return kNoError;
}

bool ScopeModel::SourceIsOff() const {
  const int source = state_.waveformSource;
  return source >= 1 && source <= 4 && state_.channel[static_cast<std::size_t>(source - 1)].display == 0;
}

int ScopeModel::QueryPreamble(const Call& call, std::string& out) {
  if (!call.unit.args.empty()) return kParameterNotAllowed;
  if (SourceIsOff()) return kSettingsConflict;
  Waveform::AppendPreamble(Waveform::MakePreamble(state_), out);
  return kNoError;
}

int ScopeModel::QueryWaveformData(const Call& call, std::string& out) {
  if (!call.unit.args.empty()) return kParameterNotAllowed;
  if (SourceIsOff()) return kSettingsConflict;
  scratch_.clear();
  Waveform::AppendData(state_, scratch_);
  Block::Append(out, scratch_);
  return kNoError;
}

int ScopeModel::QueryScreen(const Call& call, std::string& out) {
  if (call.unit.args.size() > 1) return kParameterNotAllowed;
  ImageFormat format = ImageFormat::Bmp;
  if (!call.unit.args.empty()) {
    const Choice* choice = SettingTable::FindChoice(kImageFormats, call.unit.args[0]);
    if (choice == nullptr || !ImageEncoder::Supports(static_cast<ImageFormat>(choice->value)) ||
        (choice->value != static_cast<int>(ImageFormat::Bmp) && !identity_.OffersCompressedImages())) {
      return kIllegalParameterValue;
    }
    format = static_cast<ImageFormat>(choice->value);
  }
  const auto image = ImageEncoder::Encode(ScreenRenderer::Render(state_), ScreenRenderer::Palette(), format);
  if (!image) return kExecutionError;
  Block::Append(out, *image);
  return kNoError;
}

int ScopeModel::QueryMeasurement(const Call& call, std::string& out) {
  if (call.unit.args.size() > 1) return kParameterNotAllowed;
  int channel = state_.measureSource;
  if (!call.unit.args.empty()) {
    const Choice* choice = SettingTable::FindChoice(kChannels, call.unit.args[0]);
    if (choice == nullptr) return kIllegalParameterValue;
    channel = choice->value;
  }
  double result = kNoMeasurement;
  const double hz = Waveform::SignalHz(channel);
  const bool grounded = state_.channel[static_cast<std::size_t>(channel - 1)].coupling == 2;
  if (call.def.tag == kFrequency || call.def.tag == kPeriod) {
    if (hz > 0 && !grounded) result = call.def.tag == kFrequency ? hz : 1.0 / hz;
  } else {
    // Over the record on screen, as the waveform query would return it.
    ScopeState record = state_;
    record.waveformPoints = 1000;
    const Preamble p = Waveform::MakePreamble(record);
    double low = 1e300, high = -1e300, sum = 0.0, squares = 0.0;
    for (int i = 0; i < p.points; ++i) {
      const double v = Waveform::ChannelVolts(state_, channel, Waveform::SampleTime(p, i));
      low = std::min(low, v);
      high = std::max(high, v);
      sum += v;
      squares += v * v;
    }
    switch (call.def.tag) {
      case kVpp:
        result = high - low;
        break;
      case kVmax:
        result = high;
        break;
      case kVmin:
        result = low;
        break;
      case kVaverage:
        result = sum / p.points;
        break;
      default:
        result = std::sqrt(squares / p.points);
        break;
    }
  }
  AppendReal(out, result);
  return kNoError;
}

}  // namespace cvn73100::sim
