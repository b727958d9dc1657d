#pragma once
#include <cstddef>
#include <cstdint>
#include <string>

#include "setups/SetupFileProperties.h"
#include "setups/SetupFileReader.h"

namespace cvn73100 {

// The native setup file (*.scp), the only format the control writes: a header of 13 fields, each
// terminated by "|", followed directly by the learn-string bytes. Saving replaces the file whole or
// leaves it untouched; reading checks every length against the file itself before using it.
class CSetupFile : public SetupFileProperties {
 public:
  static constexpr const char* FILE_TYPE = "scp";
  static constexpr const char* FORMAT_VERSION = "1";
  static constexpr const char* DESCRIPTION = "KSR Standard Setup File, Version: 1";
  static constexpr char FIELD_TERMINATOR = '|';
  // No learn string the instrument family produces comes near this; a larger claim is a broken file.
  static constexpr std::size_t MAX_LEARN_STRING_BYTES = SetupFileReader::MAX_LEARN_STRING_BYTES;
  // Longest header field read or written.
  static constexpr std::size_t MAX_FIELD_LENGTH = std::size_t{64} << 10;

  bool IsACompatibleFile(const std::string& fileName) noexcept override;
  // Replaces the file atomically (a temporary file in the same folder, synced, then renamed). A field
  // holding "|" or longer than MAX_FIELD_LENGTH, or a learn string over MAX_LEARN_STRING_BYTES, is
  // refused. Raises the setup-file error (messages 670/681); a failed save leaves an existing file as
  // it was.
  void WriteFile(const std::string& fileName) override;
  // Raises the setup-file error with messages 670/673 for a damaged file, 670/681 for a wrong type or
  // format version.
  void ReadFile(const std::string& fileName) override;

  // The value of field 1 for a header whose fields 2 to 13 with their terminators take `tailLength`
  // bytes; -1 when no length fits.
  static std::int64_t HeaderLength(std::int64_t tailLength);

 private:
  // Fields 1 to 13 with their terminators for the current properties.
  std::string HeaderText() const;
  std::string ReadField(SetupFileReader& file, std::size_t limit = 0);
  void ReadFileTypeAndVersion(SetupFileReader& file, std::string& headerLength);
};

}  // namespace cvn73100
