#pragma once
#include <cstddef>
#include <cstdint>

#include "fuzz/FuzzInput.h"
#include "fuzz/MemoryFile.h"
#include "platform/ScopeError.h"

namespace cvn73100::fuzz {

// A setup-file reader given the bytes of a file from anywhere: the format check, then the reader, which may
// refuse the file but never returns a learn string larger than the file it came from.
template <class Reader>
int FuzzSetupFile(const std::uint8_t* data, std::size_t size) {
  static MemoryFile file;
  const std::string& path = file.Hold(data, size);
  Reader setup;
  setup.IsACompatibleFile(path);
  try {
    setup.ReadFile(path);
  } catch (const ScopeError&) {
    return 0;
  }
  const auto& learnString = setup.LearnString();
  Require(!learnString || learnString->size() <= size, "a learn string larger than its file");
  return 0;
}

}  // namespace cvn73100::fuzz
