#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "simulator/ScopeState.h"

namespace cvn73100::sim {

// The instrument's saved set-up: every setting of the setting table in a fixed binary layout.
//   "CVLS" | version (1 byte) | 0 (1 byte) | payload length (2 bytes) | payload | CRC-32 of all before (4 bytes)
// Multi-byte fields are big-endian; choices are 32-bit integers and numbers IEEE-754 doubles.
class LearnString {
 public:
  static constexpr std::string_view kMagic = "CVLS";
  static constexpr std::uint8_t kVersion = 1;

  static std::string Encode(const ScopeState& state);
  // Replaces `state` with the decoded set-up and returns 0, or returns the negative error number and leaves
  // `state` as it was: -224 for a block that is not one of ours, -230 for one that is damaged.
  static int Decode(std::string_view data, ScopeState& state);
  static std::uint32_t Crc32(std::string_view data);
};

}  // namespace cvn73100::sim
