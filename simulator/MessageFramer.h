#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace cvn73100::sim {

// Cuts the host's byte stream into program messages. A message ends at an LF or at END (GPIB EOI), except that
// an LF inside the data of a definite-length block is data. Bytes beyond the cap are not stored: the message
// is then reported as overrun and its bytes are discarded.
class MessageFramer {
 public:
  static constexpr std::size_t kDefaultCap = 4u << 20;
  explicit MessageFramer(std::size_t cap = kDefaultCap) : cap_(cap) {}

  // Consumes bytes up to and including the end of the first message that completes; returns how many were
  // consumed. `end` marks END on the last byte of `data`. After a completed message, call Take().
  std::size_t Feed(const std::uint8_t* data, std::size_t size, bool end);
  bool Complete() const { return complete_; }
  // The completed message (terminator removed) and whether it overran the cap. Valid until the next Feed.
  std::string_view Message() const { return buffer_; }
  bool Overrun() const { return overrun_; }
  // Forgets the completed message so the next one can start.
  void Take();
  // Drops everything pending (device clear).
  void Reset();
  std::size_t Pending() const { return buffer_.size(); }

 private:
  enum class State { Text, Quoted, Hash, LengthDigits, BlockData, Indefinite };
  void Store(const std::uint8_t* data, std::size_t size);
  void Finish();

  std::size_t cap_;
  std::string buffer_;
  State state_ = State::Text;
  char quote_ = 0;
  int lengthDigitsLeft_ = 0;
  std::uint64_t blockLeft_ = 0;
  bool overrun_ = false;
  bool complete_ = false;
};

}  // namespace cvn73100::sim
