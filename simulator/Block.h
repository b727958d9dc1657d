#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace cvn73100::sim {

// IEEE 488.2 definite-length arbitrary block: '#', the count of length digits, the length, the bytes.
class Block {
 public:
  // Appends the block header for `size` data bytes.
  static void AppendHeader(std::string& out, std::size_t size);
  // Appends `data` as a whole block.
  static void Append(std::string& out, std::string_view data);
  // The data of the block at the start of `text`, or nullopt when the header is malformed or claims more bytes
  // than `text` holds. `consumed` (optional) receives the header and data length.
  static std::optional<std::string_view> Parse(std::string_view text, std::size_t* consumed = nullptr);
};

}  // namespace cvn73100::sim
