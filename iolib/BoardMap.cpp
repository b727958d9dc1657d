#include "iolib/BoardMap.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <sstream>

#include "platform/RegularFile.h"
#include "platform/UserFolders.h"

namespace cvn73100::io {
namespace {

constexpr std::size_t kMaxConfigBytes = 1u << 20;
constexpr int kMaxLinuxGpibBoard = 15;

std::string Trim(const std::string& text) {
  const auto first = text.find_first_not_of(" \t\r\n");
  if (first == std::string::npos) return {};
  const auto last = text.find_last_not_of(" \t\r\n");
  return text.substr(first, last - first + 1);
}

std::string Upper(std::string text) {
  for (char& c : text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return text;
}

std::string Lower(std::string text) {
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

bool StartsWithNoCase(const std::string& text, const std::string& prefix) {
  return text.size() >= prefix.size() && Lower(text.substr(0, prefix.size())) == prefix;
}

// A whole decimal number in [low, high], or nullopt.
std::optional<int> Number(const std::string& text, int low, int high) {
  if (text.empty() || text.size() > 6) return std::nullopt;
  if (!std::all_of(text.begin(), text.end(), [](unsigned char c) { return std::isdigit(c); })) return std::nullopt;
  const int value = std::stoi(text);
  if (value < low || value > high) return std::nullopt;
  return value;
}

// "COM3" -> 3 and "GPIB2" -> 2 when `key` names a port of that kind, else -1.
int PortNumber(const std::string& key, const std::string& prefix, int first, int last) {
  if (key.size() != prefix.size() + 1 || key.compare(0, prefix.size(), prefix) != 0) return -1;
  const int n = key.back() - '0';
  return n >= first && n <= last ? n : -1;
}

// Splits "HOST", "HOST:PORT", "[IPv6]" or "[IPv6]:PORT" (a bare IPv6 address has no port); `port` is left alone
// when none is given. Returns false with `error` set when the text does not parse.
bool ParseHostPort(const std::string& address, const std::string& value, std::string& host, int& port,
                   bool portRequired, std::string& error) {
  std::string portText;
  bool portGiven = false;
  if (!address.empty() && address[0] == '[') {
    const auto close = address.find(']');
    if (close == std::string::npos) {
      error = "unclosed [ in \"" + value + "\"";
      return false;
    }
    host = address.substr(1, close - 1);
    if (close + 1 < address.size()) {
      if (address[close + 1] != ':') {
        error = "expected :PORT after ] in \"" + value + "\"";
        return false;
      }
      portText = address.substr(close + 2);
      portGiven = true;
    }
  } else if (std::count(address.begin(), address.end(), ':') == 1) {
    const auto colon = address.find(':');
    host = address.substr(0, colon);
    portText = address.substr(colon + 1);
    portGiven = true;
  } else {
    host = address;  // a host name, an IPv4 address or a bare IPv6 address
  }
  if (host.empty()) {
    error = "a host is needed in \"" + value + "\"";
    return false;
  }
  if (portGiven || portRequired) {
    const auto number = Number(portText, 1, 65535);
    if (!number) {
      error = "TCP port must be 1..65535 in \"" + value + "\"";
      return false;
    }
    port = *number;
  }
  return true;
}

std::string HostPort(const std::string& host, int port) {
  const bool v6 = host.find(':') != std::string::npos;
  return (v6 ? "[" + host + "]" : host) + ":" + std::to_string(port);
}

// A FIFO, device or folder in the file's place is refused without waiting: reported as a problem.
std::optional<std::string> ReadFile(const std::string& path) { return ReadRegularFile(path, kMaxConfigBytes); }

// The process's environment; HOME, when unset, is the home folder of the password database.
std::optional<std::string> GetEnv(const std::string& name) {
  if (name == "HOME") {
    std::string home = HomeFolder();
    return home.empty() ? std::nullopt : std::optional(std::move(home));
  }
  const char* value = std::getenv(name.c_str());
  if (value == nullptr) return std::nullopt;
  return std::string(value);
}

}  // namespace

BoardMap BoardMap::FileDefaults() {
  BoardMap map;
  for (int port = kFirstCom; port <= kLastCom; ++port)
    map.m_com[port - kFirstCom] = {ComKind::Node, "/dev/ttyS" + std::to_string(port - 1), "default"};
  for (auto& gpib : map.m_gpib) gpib.origin = "default";
  return map;
}

BoardMap BoardMap::EmbeddedDefault() {
  BoardMap map = FileDefaults();
  map.m_gpib[0].kind = GpibKind::Simulated;
  map.m_embedded = true;
  return map;
}

BoardMap BoardMap::FromText(const std::string& text, const std::string& origin) {
  BoardMap map = FileDefaults();
  map.ApplyText(text, origin);
  return map;
}

BoardMap BoardMap::Load() { return Load(GetEnv, ReadFile); }

BoardMap BoardMap::Load(const Environment& environment, const FileReader& readFile) {
  auto nonEmpty = [&](const std::string& name) -> std::optional<std::string> {
    auto value = environment(name);
    if (value && !Trim(*value).empty()) return Trim(*value);
    return std::nullopt;
  };
  std::string path;
  const auto explicitPath = nonEmpty("CVN73100_IO_CONF");
  if (explicitPath)
    path = *explicitPath;
  else if (const auto xdg = nonEmpty("XDG_CONFIG_HOME"))
    path = *xdg + "/cvn73100/io.conf";
  else if (const auto home = nonEmpty("HOME"))
    path = *home + "/.config/cvn73100/io.conf";

  std::optional<std::string> text;
  std::string refused;
  try {
    if (!path.empty()) text = readFile(path);
  } catch (const FileError& error) {
    refused = std::string(error.what()) + ", not read";
  }
  BoardMap map = text ? FileDefaults() : EmbeddedDefault();
  if (!refused.empty()) map.m_problems.push_back(refused);
  map.m_configPath = path;
  map.m_configFound = text.has_value();
  if (text) {
    if (text->size() > kMaxConfigBytes)
      map.m_problems.push_back(path + ": larger than 1 MiB, not read");
    else
      map.ApplyText(*text, path);
  } else if (explicitPath && refused.empty()) {
    map.m_problems.push_back("CVN73100_IO_CONF: cannot read " + path);
  }

  for (int port = kFirstCom; port <= kLastCom; ++port) {
    const std::string name = "CVN73100_COM" + std::to_string(port);
    if (const auto value = nonEmpty(name)) map.ApplySetting("COM" + std::to_string(port), *value, "env " + name);
  }
  for (int board = kFirstGpib; board <= kLastGpib; ++board) {
    const std::string name = "CVN73100_GPIB" + std::to_string(board);
    if (const auto value = nonEmpty(name)) map.ApplySetting("GPIB" + std::to_string(board), *value, "env " + name);
  }
  if (const auto value = nonEmpty("CVN73100_LIBGPIB")) map.ApplySetting("LIBGPIB", *value, "env CVN73100_LIBGPIB");
  return map;
}

void BoardMap::ApplyText(const std::string& text, const std::string& origin) {
  std::istringstream lines(text);
  std::string line;
  int number = 0;
  while (std::getline(lines, line)) {
    ++number;
    const std::string content = Trim(line);
    if (content.empty() || content[0] == '#' || content[0] == ';' || content[0] == '[') continue;
    const std::string where = origin + ":" + std::to_string(number);
    const auto equals = content.find('=');
    if (equals == std::string::npos) {
      m_problems.push_back(where + ": expected KEY = VALUE");
      continue;
    }
    ApplySetting(Trim(content.substr(0, equals)), Trim(content.substr(equals + 1)), where);
  }
}

bool BoardMap::ApplySetting(const std::string& rawKey, const std::string& value, const std::string& origin) {
  const std::string key = Upper(rawKey);
  std::string error;
  if (const int port = PortNumber(key, "COM", kFirstCom, kLastCom); port > 0) {
    if (auto target = ParseComValue(value, error)) {
      target->origin = origin;
      m_com[port - kFirstCom] = *target;
      return true;
    }
  } else if (const int board = PortNumber(key, "GPIB", kFirstGpib, kLastGpib); board >= 0) {
    if (auto target = ParseGpibValue(value, board, error)) {
      target->origin = origin;
      m_gpib[board - kFirstGpib] = *target;
      return true;
    }
  } else if (const auto dot = key.find('.');
             dot != std::string::npos && PortNumber(key.substr(0, dot), "GPIB", kFirstGpib, kLastGpib) >= 0) {
    const auto address = Number(key.substr(dot + 1), 0, 30);
    if (!address) {
      error = "GPIB address must be 0..30 in \"" + rawKey + "\"";
    } else if (auto target = ParseStandInValue(value, error)) {
      target->origin = origin;
      m_standIns[{PortNumber(key.substr(0, dot), "GPIB", kFirstGpib, kLastGpib), *address}] = *target;
      return true;
    }
  } else if (key == "LIBGPIB") {
    if (!value.empty()) {
      m_libGpib = value;
      m_libGpibOrigin = origin;
      return true;
    }
    error = "expected a library path";
  } else {
    error = "unknown key \"" + rawKey + "\" (COM1..COM4, GPIB0..GPIB3, GPIBn.ADDR, LIBGPIB)";
  }
  m_problems.push_back(origin + ": " + error);
  return false;
}

std::optional<BoardMap::ComTarget> BoardMap::ParseComValue(const std::string& rawValue, std::string& error) {
  const std::string value = Trim(rawValue);
  const std::string lower = Lower(value);
  if (lower == "sim") return ComTarget{ComKind::Simulated, {}, {}};
  if (lower == "none") return ComTarget{ComKind::None, {}, {}};
  if (!value.empty() && value[0] == '/') return ComTarget{ComKind::Node, value, {}};
  for (const auto& [prefix, kind] : {std::pair{"rfc2217:", ComKind::Rfc2217}, std::pair{"tcp:", ComKind::RawTcp}}) {
    if (!StartsWithNoCase(value, prefix)) continue;
    ComTarget target{kind, {}, {}};
    if (!ParseHostPort(Trim(value.substr(std::strlen(prefix))), value, target.host, target.port, true, error))
      return std::nullopt;
    return target;
  }
  error = "\"" + value + "\" is not an absolute device node, rfc2217:HOST:PORT, tcp:HOST:PORT, sim or none";
  return std::nullopt;
}

std::optional<BoardMap::GpibTarget> BoardMap::ParseGpibValue(const std::string& rawValue, int index,
                                                             std::string& error) {
  const std::string value = Trim(rawValue);
  const std::string lower = Lower(value);
  GpibTarget target;
  if (lower == "sim") {
    target.kind = GpibKind::Simulated;
    return target;
  }
  if (lower == "none") return target;
  if (lower == "linux-gpib") {
    target.kind = GpibKind::LinuxGpib;
    target.board = index;
    return target;
  }
  if (StartsWithNoCase(value, "linux-gpib:")) {
    const auto board = Number(value.substr(11), 0, kMaxLinuxGpibBoard);
    if (!board) {
      error = "linux-gpib board must be 0..15 in \"" + value + "\"";
      return std::nullopt;
    }
    target.kind = GpibKind::LinuxGpib;
    target.board = *board;
    return target;
  }
  if (StartsWithNoCase(value, "prologix-serial:")) {
    target.node = Trim(value.substr(16));
    if (target.node.empty() || target.node[0] != '/') {
      error = "prologix-serial needs an absolute device node in \"" + value + "\"";
      return std::nullopt;
    }
    target.kind = GpibKind::PrologixSerial;
    return target;
  }
  if (StartsWithNoCase(value, "prologix-tcp:")) {
    if (!ParseHostPort(Trim(value.substr(13)), value, target.host, target.port, false, error)) return std::nullopt;
    target.kind = GpibKind::PrologixTcp;
    return target;
  }
  if (StartsWithNoCase(value, "vxi11:")) {
    std::string address = Trim(value.substr(6));
    target.interfaceName = "gpib0";
    if (const auto slash = address.find('/'); slash != std::string::npos) {
      target.interfaceName = Lower(Trim(address.substr(slash + 1)));
      address = Trim(address.substr(0, slash));
    }
    target.port = 0;
    if (!ParseHostPort(address, value, target.host, target.port, false, error)) return std::nullopt;
    if (target.interfaceName.empty() || target.interfaceName.find_first_of(" ,\t") != std::string::npos) {
      error = "expected an interface name such as gpib0 after / in \"" + value + "\"";
      return std::nullopt;
    }
    target.kind = GpibKind::Vxi11;
    return target;
  }
  error =
      "\"" + value +
      "\" is not linux-gpib[:N], prologix-serial:NODE, prologix-tcp:HOST[:PORT], vxi11:HOST[:PORT][/INTERFACE], sim "
      "or none";
  return std::nullopt;
}

std::optional<BoardMap::GpibTarget> BoardMap::ParseStandInValue(const std::string& rawValue, std::string& error) {
  const std::string value = Trim(rawValue);
  GpibTarget target;
  if (StartsWithNoCase(value, "socket:")) {
    if (!ParseHostPort(Trim(value.substr(7)), value, target.host, target.port, true, error)) return std::nullopt;
    target.kind = GpibKind::Socket;
    return target;
  }
  const auto slash = value.find('/');
  if (StartsWithNoCase(value, "vxi11:") && slash != std::string::npos) {
    target.interfaceName = Trim(value.substr(slash + 1));  // the whole device name: "inst0", "gpib0,5"
    target.port = 0;
    if (!ParseHostPort(Trim(value.substr(6, slash - 6)), value, target.host, target.port, false, error))
      return std::nullopt;
    if (!target.interfaceName.empty()) {
      target.kind = GpibKind::Vxi11;
      return target;
    }
  }
  error = "\"" + value + "\" is not vxi11:HOST[:PORT]/DEVICE or socket:HOST:PORT";
  return std::nullopt;
}

const BoardMap::GpibTarget* BoardMap::StandIn(int board, int address) const {
  const auto found = m_standIns.find({board, address});
  return found == m_standIns.end() ? nullptr : &found->second;
}

const BoardMap::ComTarget& BoardMap::Com(int port) const {
  return m_com.at(static_cast<std::size_t>(port - kFirstCom));
}
const BoardMap::GpibTarget& BoardMap::Gpib(int board) const {
  return m_gpib.at(static_cast<std::size_t>(board - kFirstGpib));
}
void BoardMap::SetCom(int port, ComTarget target) {
  m_com.at(static_cast<std::size_t>(port - kFirstCom)) = std::move(target);
}
void BoardMap::SetGpib(int board, GpibTarget target) {
  m_gpib.at(static_cast<std::size_t>(board - kFirstGpib)) = std::move(target);
}

bool BoardMap::UsingEmbeddedDefault() const {
  return m_embedded && m_gpib[0].kind == GpibKind::Simulated && m_gpib[0].origin == "default";
}

std::string BoardMap::DescribeCom(const ComTarget& target) {
  switch (target.kind) {
    case ComKind::Node:
      return target.node;
    case ComKind::Simulated:
      return "simulated RS-232 instrument";
    case ComKind::Rfc2217:
      return "serial device server (RFC 2217) at " + HostPort(target.host, target.port);
    case ComKind::RawTcp:
      return "serial device server (raw TCP) at " + HostPort(target.host, target.port);
    case ComKind::None:
      break;
  }
  return "not mapped";
}

std::string BoardMap::DescribeGpib(const GpibTarget& target) {
  switch (target.kind) {
    case GpibKind::LinuxGpib:
      return "linux-gpib board " + std::to_string(target.board);
    case GpibKind::PrologixSerial:
      return "Prologix-style adapter on " + target.node;
    case GpibKind::PrologixTcp:
      return "Prologix-style adapter at " + HostPort(target.host, target.port);
    case GpibKind::Vxi11:
      return "VXI-11 device " + (target.port > 0 ? HostPort(target.host, target.port) : target.host) + ", " +
             target.interfaceName;
    case GpibKind::Socket:
      return "SCPI socket " + HostPort(target.host, target.port);
    case GpibKind::Simulated:
      return "simulated bus";
    case GpibKind::None:
      break;
  }
  return "not mapped";
}

std::string BoardMap::Describe() const {
  std::ostringstream out;
  if (m_configFound)
    out << "I/O board map from " << m_configPath << "\n";
  else if (m_configPath.empty())
    out << "I/O board map: embedded default (no config file location)\n";
  else
    out << "I/O board map: embedded default (no config file at " << m_configPath << ")\n";
  auto row = [&out](const std::string& name, const std::string& what, const std::string& origin) {
    std::string padded = "  " + name;
    padded.resize(12, ' ');
    std::string text = padded + what;
    if (text.size() < 58) text.resize(58, ' ');
    out << text << " [" << origin << "]\n";
  };
  for (int port = kFirstCom; port <= kLastCom; ++port)
    row("COM" + std::to_string(port), DescribeCom(Com(port)), Com(port).origin);
  for (int board = kFirstGpib; board <= kLastGpib; ++board)
    row("GPIB" + std::to_string(board), DescribeGpib(Gpib(board)), Gpib(board).origin);
  for (const auto& [where, target] : m_standIns)
    row("GPIB" + std::to_string(where.first) + "." + std::to_string(where.second), DescribeGpib(target), target.origin);
  row("libgpib", m_libGpib, m_libGpibOrigin);
  if (UsingEmbeddedDefault()) out << "The simulated instrument answers on GPIB0 (no hardware configured).\n";
  for (const auto& problem : m_problems) out << "Problem: " << problem << "\n";
  return out.str();
}

}  // namespace cvn73100::io
