#include "simulator/PrologixAdapter.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <optional>
#include <thread>

#include "simulator/MessageFramer.h"

namespace cvn73100::sim {
namespace {

constexpr std::uint8_t kEscape = 27;
// A host line longer than an instrument could take is dropped whole.
constexpr std::size_t kLineCap = MessageFramer::kDefaultCap + 64;

std::string_view Trim(std::string_view s) {
  while (!s.empty() && (s.front() == ' ' || s.front() == '\t')) s.remove_prefix(1);
  while (!s.empty() && (s.back() == ' ' || s.back() == '\t')) s.remove_suffix(1);
  return s;
}

std::optional<int> ParseInt(std::string_view s, int min, int max) {
  int value = 0;
  const auto [end, ec] = std::from_chars(s.data(), s.data() + s.size(), value);
  if (ec != std::errc() || end != s.data() + s.size() || value < min || value > max) return std::nullopt;
  return value;
}

}  // namespace

PrologixAdapter::PrologixAdapter(Model model) : model_(model) {}

void PrologixAdapter::Attach(int address, Instrument& instrument) {
  if (address < 0 || address > 30) return;
  instruments_[static_cast<std::size_t>(address)] = &instrument;
  if (!attached_) address_ = address;
  attached_ = true;
}

std::string PrologixAdapter::Version() const {
  return model_ == Model::Usb ? "Prologix GPIB-USB Controller version 6.107"
                              : "Prologix GPIB-ETHERNET Controller version 01.06.06.00";
}

void PrologixAdapter::Receive(const std::uint8_t* data, std::size_t size) {
  for (std::size_t i = 0; i < size; ++i) {
    const std::uint8_t b = data[i];
    const bool escaped = escape_;
    if (!escaped && b == kEscape) {
      escape_ = true;
      continue;
    }
    escape_ = false;
    if (!escaped && (b == '\r' || b == '\n')) {
      if (!discarding_) HandleLine();
      line_.clear();
      discarding_ = false;
      continue;
    }
    if (discarding_) continue;
    if (line_.size() >= kLineCap) {
      discarding_ = true;
      line_.clear();
      continue;
    }
    if (line_.size() < 2) unescapedStart_[line_.size()] = !escaped && b == '+';
    line_ += static_cast<char>(b);
  }
}

void PrologixAdapter::HandleLine() {
  if (line_.empty()) return;
  if (line_.size() >= 2 && unescapedStart_[0] && unescapedStart_[1]) {
    Command(std::string_view(line_).substr(2));
  } else {
    ToInstrument(line_);
  }
}

void PrologixAdapter::ToInstrument(std::string_view data) {
  Instrument* instrument = Current();
  if (instrument == nullptr) return;  // no listener: the bytes go nowhere, as on a real bus
  static constexpr std::string_view kTerminators[] = {"\r\n", "\r", "\n", ""};
  std::string message(data);
  message += kTerminators[eos_];
  instrument->Write(reinterpret_cast<const std::uint8_t*>(message.data()), message.size(), eoi_);
  if (auto_) ReadInstrument(ReadUntil::Eoi, 0);
}

void PrologixAdapter::Command(std::string_view line) {
  line = Trim(line);
  const std::size_t space = std::min(line.find(' '), line.size());
  std::string name(line.substr(0, space));
  std::transform(name.begin(), name.end(), name.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
  const std::string_view args = Trim(line.substr(space));

  auto flag = [&](bool& value) {
    if (args.empty()) {
      Reply(value ? "1" : "0");
    } else if (auto v = ParseInt(args, 0, 1)) {
      value = *v == 1;
    }
  };
  auto number = [&](int& value, int min, int max) {
    if (args.empty()) {
      Reply(std::to_string(value));
    } else if (auto v = ParseInt(args, min, max)) {
      value = *v;
    }
  };

  if (name == "addr") {
    if (args.empty()) {
      Reply(std::to_string(address_) + (secondary_ >= 0 ? " " + std::to_string(secondary_) : ""));
      return;
    }
    const std::size_t gap = std::min(args.find(' '), args.size());
    const auto primary = ParseInt(args.substr(0, gap), 0, 30);
    const std::string_view rest = Trim(args.substr(gap));
    const auto secondary = rest.empty() ? std::optional<int>(-1) : ParseInt(rest, 96, 126);
    if (primary && secondary) {
      address_ = *primary;
      secondary_ = *secondary;
    }
  } else if (name == "auto") {
    flag(auto_);
  } else if (name == "eoi") {
    flag(eoi_);
  } else if (name == "eot_enable") {
    flag(eotEnable_);
  } else if (name == "savecfg") {
    flag(saveConfig_);
  } else if (name == "mode") {
    number(mode_, 0, 1);
  } else if (name == "eos") {
    number(eos_, 0, 3);
  } else if (name == "eot_char") {
    number(eotChar_, 0, 255);
  } else if (name == "read_tmo_ms") {
    number(readTimeoutMs_, 1, 3000);
  } else if (name == "read") {
    if (args.empty()) {
      ReadInstrument(ReadUntil::Timeout, 0);
    } else if (args == "eoi") {
      ReadInstrument(ReadUntil::Eoi, 0);
    } else if (auto c = ParseInt(args, 0, 255)) {
      ReadInstrument(ReadUntil::Character, *c);
    }
  } else if (name == "clr") {
    if (Instrument* instrument = Current()) instrument->DeviceClear();
  } else if (name == "spoll") {
    const auto address = args.empty() ? std::optional<int>(address_) : ParseInt(args.substr(0, args.find(' ')), 0, 30);
    Instrument* instrument = address ? instruments_[static_cast<std::size_t>(*address)] : nullptr;
    if (instrument != nullptr) Reply(std::to_string(instrument->SerialPoll()));
  } else if (name == "srq") {
    Reply("0");
  } else if (name == "ver") {
    Reply(Version());
  } else if (name == "rst") {
    ResetSettings();
  } else if (name == "help") {
    Reply(
        "++addr ++auto ++clr ++eoi ++eos ++eot_enable ++eot_char ++ifc ++llo ++loc ++mode ++read ++read_tmo_ms "
        "++rst ++savecfg ++spoll ++srq ++trg ++ver ++help");
  }
  // ++ifc, ++loc, ++llo, ++trg and unknown commands change nothing a host could observe here.
}

void PrologixAdapter::ReadInstrument(ReadUntil until, int character) {
  const auto timeout = std::chrono::milliseconds(readTimeoutMs_);
  Instrument* instrument = Current();
  if (instrument == nullptr) {
    std::this_thread::sleep_for(timeout);  // nobody talks: the read ends by its timeout
    return;
  }
  std::uint8_t buffer[4096];
  for (;;) {
    bool end = false;
    // Reading one byte at a time in character mode leaves what follows the character in the instrument.
    const std::size_t n = instrument->Read(buffer, until == ReadUntil::Character ? 1 : sizeof buffer, timeout, end);
    if (n == 0) return;  // the inter-character timeout
    {
      std::lock_guard lock(mutex_);
      out_.append(reinterpret_cast<const char*>(buffer), n);
      if (end && eotEnable_) out_ += static_cast<char>(eotChar_);
    }
    ready_.notify_all();
    if (until == ReadUntil::Eoi && end) return;
    if (until == ReadUntil::Character && buffer[n - 1] == character) return;
  }
}

void PrologixAdapter::Reply(std::string_view text) {
  {
    std::lock_guard lock(mutex_);
    out_ += text;
    out_ += "\r\n";
  }
  ready_.notify_all();
}

void PrologixAdapter::ResetSettings() {
  mode_ = 1;
  secondary_ = -1;
  eos_ = 0;
  eotChar_ = 0;
  readTimeoutMs_ = 500;
  auto_ = false;
  eoi_ = true;
  eotEnable_ = false;
  saveConfig_ = true;
}

std::size_t PrologixAdapter::Send(std::uint8_t* buffer, std::size_t max, std::chrono::milliseconds timeout) {
  std::unique_lock lock(mutex_);
  if (!ready_.wait_for(lock, timeout, [this] { return outPos_ < out_.size(); })) return 0;
  const std::size_t n = std::min(max, out_.size() - outPos_);
  std::memcpy(buffer, out_.data() + outPos_, n);
  outPos_ += n;
  if (outPos_ == out_.size()) {
    out_.clear();
    outPos_ = 0;
  }
  return n;
}

}  // namespace cvn73100::sim
