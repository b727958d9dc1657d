#pragma once
#include <cstddef>
#include <string>

#include "setups/SetupFileProperties.h"
#include "setups/SetupFileReader.h"

namespace cvn73100 {

// The Wrenfold setup file (*.stp), read but never written: four lines ending in a line feed (a
// carriage return before it stays part of the line), the command ":SYSTEM:SETUP " and the learn string
// up to the end of the file. The format carries no firmware version, so a setup read from it gets the
// wildcard version "X.XX.XX".
class CWrenfoldFile : public SetupFileProperties {
 public:
  static constexpr const char* FILE_TYPE = "stp";
  static constexpr const char* SETUP_COMMAND = ":SYSTEM:SETUP ";
  static constexpr const char* WILDCARD_VERSION = "X.XX.XX";
  static constexpr const char* MAKER_CODE = "CVN";
  static constexpr std::size_t MAX_LEARN_STRING_BYTES = SetupFileReader::MAX_LEARN_STRING_BYTES;
  static constexpr std::size_t MAX_LINE_LENGTH = std::size_t{64} << 10;

  bool IsACompatibleFile(const std::string& fileName) noexcept override;
  // Always refused with the setup-file error (messages 670/681); no file is created.
  void WriteFile(const std::string& fileName) override;
  // Raises the setup-file error with messages 670/673 for a damaged file, 670/681 for a wrong type or
  // ROM version.
  void ReadFile(const std::string& fileName) override;

 private:
  std::string ReadField(SetupFileReader& file);
  // Reads line 1; true when the ROM version has three characters, false when it has four.
  bool ReadFileTypeAndROMVersion(SetupFileReader& file, std::string& type, std::string& romVersion);
};

}  // namespace cvn73100
