#pragma once
#include <cstddef>

namespace cvn73100 {

// One message of the compiled-in catalogue: language base + message number, and its UTF-8 text.
struct MessageEntry {
  int id;
  const char* text;
};

// Sorted by id; generated from resources/*.po.
extern const MessageEntry kMessageTable[];
extern const std::size_t kMessageTableSize;

}  // namespace cvn73100
