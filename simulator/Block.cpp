#include "simulator/Block.h"

#include <charconv>

namespace cvn73100::sim {

void Block::AppendHeader(std::string& out, std::size_t size) {
  char digits[24];
  const auto end = std::to_chars(digits, digits + sizeof digits, size).ptr;
  out += '#';
  out += static_cast<char>('0' + (end - digits));
  out.append(digits, end);
}

void Block::Append(std::string& out, std::string_view data) {
  AppendHeader(out, data.size());
  out.append(data);
}

std::optional<std::string_view> Block::Parse(std::string_view text, std::size_t* consumed) {
  if (text.size() < 2 || text[0] != '#' || text[1] < '1' || text[1] > '9') return std::nullopt;
  const std::size_t digits = static_cast<std::size_t>(text[1] - '0');
  if (text.size() < 2 + digits) return std::nullopt;
  std::size_t length = 0;
  for (std::size_t i = 0; i < digits; ++i) {
    const char c = text[2 + i];
    if (c < '0' || c > '9') return std::nullopt;
    length = length * 10 + static_cast<std::size_t>(c - '0');
  }
  if (length > text.size() - 2 - digits) return std::nullopt;
  if (consumed != nullptr) *consumed = 2 + digits + length;
  return text.substr(2 + digits, length);
}

}  // namespace cvn73100::sim
