#include "simulator/MessageFramer.h"

#include <algorithm>

namespace cvn73100::sim {

std::size_t MessageFramer::Feed(const std::uint8_t* data, std::size_t size, bool end) {
  std::size_t i = 0;
  while (i < size) {
    const char c = static_cast<char>(data[i]);
    switch (state_) {
      case State::BlockData: {
        const std::size_t n = static_cast<std::size_t>(std::min<std::uint64_t>(blockLeft_, size - i));
        Store(data + i, n);
        i += n;
        blockLeft_ -= n;
        if (blockLeft_ == 0) state_ = State::Text;
        break;
      }
      case State::Text: {
        std::size_t j = i;
        while (j < size && data[j] != '\n' && data[j] != '"' && data[j] != '\'' && data[j] != '#') ++j;
        Store(data + i, j - i);
        i = j;
        if (i == size) break;
        const char special = static_cast<char>(data[i++]);
        if (special == '\n') {
          Finish();
          return i;
        }
        Store(data + i - 1, 1);
        if (special == '#') {
          state_ = State::Hash;
        } else {
          state_ = State::Quoted;
          quote_ = special;
        }
        break;
      }
      case State::Quoted:
      case State::Indefinite:
        ++i;
        if (c == '\n') {
          Finish();
          return i;
        }
        Store(data + i - 1, 1);
        if (state_ == State::Quoted && c == quote_) state_ = State::Text;
        break;
      case State::Hash:
        if (c >= '1' && c <= '9') {
          lengthDigitsLeft_ = c - '0';
          blockLeft_ = 0;
          state_ = State::LengthDigits;
        } else if (c == '0') {
          state_ = State::Indefinite;
        } else {
          state_ = State::Text;  // not a block ("#H1F" or junk): look at this byte again as text
          break;
        }
        Store(data + i++, 1);
        break;
      case State::LengthDigits:
        if (c < '0' || c > '9') {
          state_ = State::Text;
          break;
        }
        // Saturate: a claim beyond the cap only needs to be known as "too big".
        blockLeft_ = std::min<std::uint64_t>(blockLeft_ * 10 + static_cast<std::uint64_t>(c - '0'), cap_ + 1);
        Store(data + i++, 1);
        if (--lengthDigitsLeft_ == 0) state_ = blockLeft_ > 0 ? State::BlockData : State::Text;
        break;
    }
  }
  if (end) Finish();
  return size;
}

void MessageFramer::Store(const std::uint8_t* data, std::size_t size) {
  if (overrun_ || size == 0) return;
  if (buffer_.size() + size > cap_) {
    overrun_ = true;
    std::string().swap(buffer_);
    return;
  }
  buffer_.append(reinterpret_cast<const char*>(data), size);
}

void MessageFramer::Finish() {
  complete_ = true;
  state_ = State::Text;
}

void MessageFramer::Take() {
  complete_ = false;
  overrun_ = false;
  if (buffer_.capacity() > (64u << 10)) {
    std::string().swap(buffer_);
  } else {
    buffer_.clear();
  }
}

void MessageFramer::Reset() {
  Take();
  state_ = State::Text;
  blockLeft_ = 0;
  lengthDigitsLeft_ = 0;
}

}  // namespace cvn73100::sim
