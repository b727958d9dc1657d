#include "simulator/LearnString.h"

#include <array>
#include <bit>

#include "simulator/ErrorCode.h"
#include "simulator/SettingTable.h"

namespace cvn73100::sim {
namespace {

constexpr std::size_t kHeaderSize = 8;
constexpr std::size_t kCrcSize = 4;

void PutBigEndian(std::string& out, std::uint64_t value, int bytes) {
  for (int i = bytes - 1; i >= 0; --i) out += static_cast<char>((value >> (8 * i)) & 0xFF);
}

std::uint64_t GetBigEndian(std::string_view in, std::size_t at, int bytes) {
  std::uint64_t value = 0;
  for (int i = 0; i < bytes; ++i)
    value = (value << 8) | static_cast<std::uint8_t>(in[at + static_cast<std::size_t>(i)]);
  return value;
}

std::size_t FieldSize(const SettingDef& def) { return def.kind == SettingKind::Number ? 8 : 4; }

std::size_t PayloadSize() {
  std::size_t size = 0;
  for (const SettingDef& def : SettingTable::All()) {
    size += FieldSize(def) * static_cast<std::size_t>(def.suffixMax - def.suffixMin + 1);
  }
  return size;
}

constexpr std::array<std::uint32_t, 256> MakeCrcTable() {
  std::array<std::uint32_t, 256> table{};
  for (std::uint32_t i = 0; i < 256; ++i) {
    std::uint32_t c = i;
    for (int k = 0; k < 8; ++k) c = (c & 1) ? 0xEDB88320u ^ (c >> 1) : c >> 1;
    table[i] = c;
  }
  return table;
}
constexpr auto kCrcTable = MakeCrcTable();

}  // namespace

std::uint32_t LearnString::Crc32(std::string_view data) {
  std::uint32_t crc = 0xFFFFFFFFu;
  for (char c : data) crc = kCrcTable[(crc ^ static_cast<std::uint8_t>(c)) & 0xFF] ^ (crc >> 8);
  return crc ^ 0xFFFFFFFFu;
}

std::string LearnString::Encode(const ScopeState& state) {
  std::string out;
  const std::size_t payload = PayloadSize();
  out.reserve(kHeaderSize + payload + kCrcSize);
  out += kMagic;
  out += static_cast<char>(kVersion);
  out += '\0';
  PutBigEndian(out, payload, 2);
  for (const SettingDef& def : SettingTable::All()) {
    for (int n = def.suffixMin; n <= def.suffixMax; ++n) {
      const double value = SettingTable::Get(def, state, n);
      if (def.kind == SettingKind::Number) {
        PutBigEndian(out, std::bit_cast<std::uint64_t>(value), 8);
      } else {
        PutBigEndian(out, static_cast<std::uint32_t>(static_cast<std::int32_t>(value)), 4);
      }
    }
  }
  PutBigEndian(out, Crc32(out), 4);
  return out;
}

int LearnString::Decode(std::string_view data, ScopeState& state) {
  if (data.size() < kMagic.size() || data.substr(0, kMagic.size()) != kMagic) return kIllegalParameterValue;
  if (data.size() < kHeaderSize + kCrcSize) return kDataCorruptOrStale;
  const std::size_t body = data.size() - kCrcSize;
  if (GetBigEndian(data, body, 4) != Crc32(data.substr(0, body))) return kDataCorruptOrStale;
  if (static_cast<std::uint8_t>(data[4]) != kVersion) return kIllegalParameterValue;
  const std::size_t payload = PayloadSize();
  if (GetBigEndian(data, 6, 2) != payload || body != kHeaderSize + payload) return kDataCorruptOrStale;

  ScopeState decoded = state;
  std::size_t at = kHeaderSize;
  for (const SettingDef& def : SettingTable::All()) {
    for (int n = def.suffixMin; n <= def.suffixMax; ++n) {
      double value = 0.0;
      if (def.kind == SettingKind::Number) {
        value = std::bit_cast<double>(GetBigEndian(data, at, 8));
      } else {
        value = static_cast<std::int32_t>(static_cast<std::uint32_t>(GetBigEndian(data, at, 4)));
      }
      at += FieldSize(def);
      if (!SettingTable::IsValid(def, value)) return kDataCorruptOrStale;
      SettingTable::Set(def, decoded, n, value);
    }
  }
  state = decoded;
  return kNoError;
}

}  // namespace cvn73100::sim
