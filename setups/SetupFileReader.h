#pragma once
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/Variant.h"

namespace cvn73100 {

// Sequential binary reading of one setup file, counting the bytes consumed. Only regular files are
// opened (a FIFO or a device would block or never end). Not copyable; the file closes on destruction.
class SetupFileReader {
 public:
  SetupFileReader() = default;
  ~SetupFileReader();
  SetupFileReader(const SetupFileReader&) = delete;
  SetupFileReader& operator=(const SetupFileReader&) = delete;

  // False when the path cannot be opened for reading or is not a regular file.
  bool Open(const std::string& path);
  void Close();

  // True when every byte of the file has been consumed (or a read failed).
  bool AtEnd();
  // The next byte, or nullopt at the end.
  std::optional<std::uint8_t> ReadByte();
  // Appends exactly `count` bytes to `out`; false when the file ends first.
  bool ReadExactly(std::size_t count, Bytes& out);
  // Appends every remaining byte to `out`, growing as bytes arrive; false when more than `cap` remain.
  bool ReadToEnd(std::size_t cap, Bytes& out);

  // Bytes consumed since the start of the file.
  std::int64_t Position() const { return m_position; }
  // Bytes the file held when it was opened.
  std::int64_t Size() const { return m_size; }

  // The most setup data a file may hold: the most an instrument's learn string may have, so that a setup
  // read from a file can be sent, and stored in the form.
  static constexpr std::size_t MAX_LEARN_STRING_BYTES = LEARN_STRING_CAP;
  // Raises the setup-file error that says `length` bytes of setup data are more than that.
  [[noreturn]] static void RefuseLearnStringOf(std::size_t length);

  // A whole decimal number with optional sign and surrounding white space (a line's carriage return
  // included); nullopt for anything else or a value outside 32 bits.
  static std::optional<std::int32_t> ToLong(std::string_view text);
  // The same number, or the conversion error (type mismatch, 13) for text that is none.
  static std::int32_t ConvertToLong(std::string_view text);

 private:
  bool Fill();

  static constexpr std::size_t BUFFER_SIZE = std::size_t{64} << 10;
  int m_fd = -1;
  std::int64_t m_position = 0;
  std::int64_t m_size = 0;
  bool m_failed = false;
  std::size_t m_begin = 0;
  std::size_t m_end = 0;
  std::unique_ptr<std::uint8_t[]> m_buffer;
};

}  // namespace cvn73100
