// Native setup files (*.scp) as they arrive from anywhere: the format check and the reader.
// Input: the file's bytes.
#include "fuzz/SetupFileTarget.h"
#include "setups/CSetupFile.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  return cvn73100::fuzz::FuzzSetupFile<cvn73100::CSetupFile>(data, size);
}
