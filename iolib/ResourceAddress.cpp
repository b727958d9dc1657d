#include "iolib/ResourceAddress.h"

#include <cctype>
#include <vector>

namespace cvn73100::io {
namespace {

std::string Upper(std::string text) {
  for (char& c : text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return text;
}

std::vector<std::string> SplitFields(const std::string& text) {
  std::vector<std::string> fields;
  std::size_t start = 0;
  for (;;) {
    const auto next = text.find("::", start);
    fields.push_back(text.substr(start, next == std::string::npos ? std::string::npos : next - start));
    if (next == std::string::npos) return fields;
    start = next + 2;
  }
}

std::optional<int> SmallNumber(const std::string& text, int high) {
  if (text.empty() || text.size() > 2) return std::nullopt;
  for (char c : text)
    if (!std::isdigit(static_cast<unsigned char>(c))) return std::nullopt;
  const int value = std::stoi(text);
  return value <= high ? std::optional<int>(value) : std::nullopt;
}

}  // namespace

std::optional<ResourceAddress> ResourceAddress::Parse(const std::string& text) {
  const std::vector<std::string> fields = SplitFields(Upper(text));
  const std::string& port = fields[0];
  if (port.size() == 4 && port.compare(0, 3, "COM") == 0 && port[3] >= '1' && port[3] <= '4')
    return Serial(port[3] - '0');
  if (port.size() != 5 || port.compare(0, 4, "GPIB") != 0 || port[4] < '0' || port[4] > '3') return std::nullopt;
  const int board = port[4] - '0';
  if (fields.size() == 2 && fields[1] == "INTFC") return GpibInterface(board);
  if (fields.size() == 2 || (fields.size() == 3 && fields[2] == "INSTR")) {
    if (const auto address = SmallNumber(fields[1], kMaxGpibAddress)) return GpibInstrument(board, *address);
  }
  return std::nullopt;
}

std::string ResourceAddress::PortName() const {
  return (m_kind == Kind::Serial ? "COM" : "GPIB") + std::to_string(m_port);
}

std::string ResourceAddress::Name() const {
  switch (m_kind) {
    case Kind::Serial:
      return PortName();
    case Kind::GpibInterface:
      return PortName() + "::INTFC";
    case Kind::GpibInstrument:
      return PortName() + "::" + std::to_string(m_address) + "::INSTR";
  }
  return {};
}

bool ResourceAddress::Glob(const std::string& pattern, const std::string& text) {
  const std::string p = Upper(pattern);
  const std::string t = Upper(text);
  // Iterative wildcard match with one backtrack point.
  std::size_t pi = 0, ti = 0, star = std::string::npos, mark = 0;
  while (ti < t.size()) {
    if (pi < p.size() && (p[pi] == '?' || p[pi] == t[ti])) {
      ++pi;
      ++ti;
    } else if (pi < p.size() && p[pi] == '*') {
      star = pi++;
      mark = ti;
    } else if (star != std::string::npos) {
      pi = star + 1;
      ti = ++mark;
    } else {
      return false;
    }
  }
  while (pi < p.size() && p[pi] == '*') ++pi;
  return pi == p.size();
}

bool ResourceAddress::Matches(const std::string& pattern, const std::string& resourceName) {
  if (pattern.find("::") != std::string::npos) return Glob(pattern, resourceName);
  return Glob(pattern, resourceName.substr(0, resourceName.find("::")));
}

}  // namespace cvn73100::io
