#include "simulator/ProgramOptions.h"

#include <algorithm>
#include <charconv>
#include <deque>
#include <fstream>
#include <set>
#include <sstream>
#include <stdexcept>

namespace cvn73100::sim {
namespace {

const std::set<std::string, std::less<>> kFlags = {"instrument", "silent",       "garbage", "drop-mid-block",
                                                   "pty",        "prologix-pty", "help"};

std::string_view Trim(std::string_view s) {
  while (!s.empty() && std::isspace(static_cast<unsigned char>(s.front()))) s.remove_prefix(1);
  while (!s.empty() && std::isspace(static_cast<unsigned char>(s.back()))) s.remove_suffix(1);
  return s;
}

int ToInt(std::string_view text, int min, int max, std::string_view option) {
  int value = 0;
  const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (ec != std::errc() || end != text.data() + text.size() || value < min || value > max) {
    throw std::invalid_argument("--" + std::string(option) + ": expected a number from " + std::to_string(min) +
                                " to " + std::to_string(max) + ", got '" + std::string(text) + "'");
  }
  return value;
}

std::uint16_t LoopbackPort(std::string_view endpoint, std::string_view option) {
  const std::size_t colon = endpoint.rfind(':');
  const std::string_view host = colon == std::string_view::npos ? "" : endpoint.substr(0, colon);
  if (host != "127.0.0.1" && host != "localhost") {
    throw std::invalid_argument("--" + std::string(option) + ": serves on 127.0.0.1 only (give 127.0.0.1:PORT)");
  }
  return static_cast<std::uint16_t>(ToInt(endpoint.substr(colon + 1), 0, 65535, option));
}

bool IsTrue(std::string_view value, std::string_view key) {
  if (value == "true" || value == "yes" || value == "on" || value == "1") return true;
  if (value == "false" || value == "no" || value == "off" || value == "0") return false;
  throw std::invalid_argument("config: " + std::string(key) + " takes true or false");
}

std::string ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::invalid_argument("--config: cannot read " + path);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

}  // namespace

std::vector<std::string> ProgramOptions::ConfigWords(std::string_view text) {
  std::vector<std::string> words;
  while (!text.empty()) {
    const std::size_t eol = std::min(text.find('\n'), text.size());
    const std::string_view line = Trim(text.substr(0, eol));
    text.remove_prefix(std::min(eol + 1, text.size()));
    if (line.empty() || line.front() == '#' || line.front() == ';') continue;
    if (line == "[instrument]") {
      words.emplace_back("--instrument");
      continue;
    }
    const std::size_t equals = line.find('=');
    const std::string key(Trim(line.substr(0, equals)));
    if (equals == std::string_view::npos) {
      words.push_back("--" + key);
      continue;
    }
    const std::string_view value = Trim(line.substr(equals + 1));
    if (kFlags.count(key) != 0) {
      if (IsTrue(value, key)) words.push_back("--" + key);
    } else {
      words.push_back("--" + key);
      words.emplace_back(value);
    }
  }
  return words;
}

ProgramOptions ProgramOptions::Parse(const std::vector<std::string>& args) {
  ProgramOptions options;
  std::deque<std::string> words(args.begin(), args.end());
  int configsRead = 0;
  auto current = [&]() -> InstrumentConfig& {
    if (options.instruments.empty()) options.instruments.emplace_back();
    return options.instruments.back();
  };
  while (!words.empty()) {
    std::string word = std::move(words.front());
    words.pop_front();
    if (word == "-h") word = "--help";
    if (word.rfind("--", 0) != 0) throw std::invalid_argument("unexpected argument '" + word + "'");
    std::string name = word.substr(2);
    std::optional<std::string> inlineValue;
    if (const std::size_t equals = name.find('='); equals != std::string::npos) {
      inlineValue = name.substr(equals + 1);
      name.resize(equals);
    }
    const bool flag = kFlags.count(name) != 0;
    if (flag && inlineValue) throw std::invalid_argument("--" + name + " takes no value");
    std::string value;
    if (!flag) {
      if (inlineValue) {
        value = *inlineValue;
      } else if (!words.empty()) {
        value = std::move(words.front());
        words.pop_front();
      } else {
        throw std::invalid_argument("--" + name + " needs a value");
      }
    }

    if (name == "help") {
      options.help = true;
    } else if (name == "instrument") {
      const int next = options.instruments.empty() ? 7 : options.instruments.back().gpibAddress + 1;
      options.instruments.emplace_back().gpibAddress = next > 30 ? 0 : next;
    } else if (name == "config") {
      if (++configsRead > 16) throw std::invalid_argument("--config: too many config files (a loop?)");
      const std::vector<std::string> more = ConfigWords(ReadFile(value));
      words.insert(words.begin(), more.begin(), more.end());
    } else if (name == "address") {
      current().gpibAddress = ToInt(value, 0, 30, name);
    } else if (name == "manufacturer") {
      current().identity.manufacturer = value;
    } else if (name == "model") {
      current().identity.model = value;
    } else if (name == "serial") {
      current().identity.serial = value;
    } else if (name == "firmware") {
      current().identity.firmware = value;
    } else if (name == "idn") {
      // Up to four comma-separated fields; fewer give the shorter replies ("73135D" alone has no comma).
      std::string* fields[] = {&current().identity.manufacturer, &current().identity.model, &current().identity.serial,
                               &current().identity.firmware};
      std::string_view rest = value;
      for (int i = 0; i < 4; ++i) {
        const std::size_t comma = i < 3 ? rest.find(',') : std::string_view::npos;
        *fields[i] = std::string(rest.substr(0, comma));
        rest = comma == std::string_view::npos ? std::string_view() : rest.substr(comma + 1);
      }
    } else if (name == "silent") {
      current().faults.silent = true;
    } else if (name == "garbage") {
      current().faults.garbage = true;
    } else if (name == "drop-mid-block") {
      current().faults.dropMidBlock = true;
    } else if (name == "late-reply") {
      current().faults.lateReplyMs = ToInt(value, 0, 3'600'000, name);
    } else if (name == "line-baud") {
      current().faults.lineBaud = ToInt(value, 0, 4'000'000, name);
    } else if (name == "wrong-parameter") {
      const std::size_t comma = value.find(',');
      if (comma == std::string::npos) throw std::invalid_argument("--wrong-parameter: give BAUD,HANDSHAKE");
      Faults& f = current().faults;
      f.wrongParameter = true;
      f.requiredBaud = ToInt(std::string_view(value).substr(0, comma), 1, 4'000'000, name);
      f.requiredHandshake = ToInt(std::string_view(value).substr(comma + 1), 1, 4, name);
      if (f.requiredHandshake == 3) throw std::invalid_argument("--wrong-parameter: handshake is 1, 2 or 4");
    } else if (name == "pty") {
      options.pty = true;
    } else if (name == "prologix-pty") {
      options.prologixPty = true;
    } else if (name == "tcp") {
      options.tcpPort = LoopbackPort(value, name);
    } else if (name == "prologix-tcp") {
      options.prologixTcpPort = LoopbackPort(value, name);
    } else if (name == "vxi11") {
      options.vxi11Port =
          value.find(':') == std::string::npos ? LoopbackPort(value + ":0", name) : LoopbackPort(value, name);
    } else {
      throw std::invalid_argument("unknown option --" + name);
    }
  }
  if (options.help) return options;
  current();
  std::set<int> addresses;
  for (const InstrumentConfig& c : options.instruments) {
    if (!addresses.insert(c.gpibAddress).second) {
      throw std::invalid_argument("two instruments at GPIB address " + std::to_string(c.gpibAddress));
    }
  }
  if (!options.pty && !options.tcpPort && !options.prologixTcpPort && !options.prologixPty && !options.vxi11Port) {
    throw std::invalid_argument("nothing to serve: give --pty, --tcp, --prologix-tcp, --prologix-pty or --vxi11");
  }
  return options;
}

std::string ProgramOptions::Help() {
  return R"(Usage: cvn73100-sim [SERVE...] [INSTRUMENT OPTIONS...] [--instrument INSTRUMENT OPTIONS...]...

Simulated 73100 oscilloscopes on a pseudo-terminal and on loopback TCP. Each endpoint served is printed on
stdout on a line of its own (a device node, or 127.0.0.1:PORT), in the order below; what it is goes to
stderr. Runs until SIGINT or SIGTERM.

Serve:
  --pty                     each instrument on its own pseudo-terminal, as an RS-232 instrument
  --tcp 127.0.0.1:PORT      each instrument on a raw SCPI socket (PORT, PORT+1, ...; 0 = any free port)
  --prologix-tcp 127.0.0.1:PORT
                            a Prologix-style GPIB-ETHERNET adapter with every instrument behind it
  --prologix-pty            a Prologix-style GPIB-USB adapter on a pseudo-terminal
  --vxi11 127.0.0.1[:PORT]  a VXI-11 LAN/GPIB gateway (interface gpib0) with every instrument at its GPIB address,
                            registered with the host's portmapper (rpcbind) when one runs; PORT: its core
                            channel's port (default: any free port)
  --config FILE             read options from FILE: "key = value" lines with the option names as keys,
                            flags as "key = true", and "[instrument]" to start another instrument

Instrument (applies to the latest --instrument; the first one needs none):
  --instrument              start another instrument (GPIB address: the previous one + 1)
  --address N               GPIB address 0..30 (default 7)
  --manufacturer TEXT  --model TEXT  --serial TEXT  --firmware TEXT
                            the *IDN? fields (default Corvane Technologies,73135D,QX40001234,A.02.10)
  --idn TEXT                all four fields at once; with fewer fields the reply is shorter ("--idn 73135D"
                            answers without a comma, --idn "" answers an empty line)
  --silent                  never answer
  --garbage                 answer every query with garbage bytes (no comma)
  --drop-mid-block          stop block replies half-way
  --late-reply MS           replies become readable MS milliseconds after the query
  --line-baud BAUD          send replies at BAUD/10 bytes per second
  --wrong-parameter BAUD,HANDSHAKE
                            on a serial line, answer only when the host uses BAUD and HANDSHAKE
                            (2 XON/XOFF, 4 DTR/DSR, 1 none; a pty cannot tell 4 from 1)
  --help                    this text
)";
}

}  // namespace cvn73100::sim
