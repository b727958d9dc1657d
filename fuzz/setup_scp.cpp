// Native setup files (*.scp) as they arrive from anywhere: the format check and the reader.
// Input: the file's bytes.
#include <cstddef>
#include <cstdint>

#include "fuzz/FuzzInput.h"
#include "fuzz/MemoryFile.h"
#include "platform/ScopeError.h"
#include "setups/CSetupFile.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static cvn73100::fuzz::MemoryFile file;
  const std::string& path = file.Hold(data, size);
  cvn73100::CSetupFile setup;
  setup.IsACompatibleFile(path);
  try {
    setup.ReadFile(path);
  } catch (const cvn73100::ScopeError&) {
    return 0;
  }
  // Nothing read can be larger than the file it came from.
  const auto& learnString = setup.LearnString();
  cvn73100::fuzz::Require(!learnString || learnString->size() <= size, "a learn string larger than its file");
  return 0;
}
