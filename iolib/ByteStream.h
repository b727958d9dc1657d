#pragma once
#include <cstddef>
#include <cstdint>

#include "iolib/Deadline.h"

namespace cvn73100::io {

// A full-duplex byte pipe to a device or adapter: a serial node, a TCP socket, an in-process instrument.
// Failures raise ScopeErrors made by IOError: IOERR_DEVICE_VANISHED when the other end is gone,
// IOERR_TIMEOUT when a write cannot finish in time, IOERR_IO_FAILURE for anything else.
class ByteStream {
 public:
  virtual ~ByteStream() = default;
  // Writes all `size` bytes before `deadline`.
  virtual void Write(const std::uint8_t* data, std::size_t size, const Deadline& deadline) = 0;
  // Blocks until at least one byte has arrived or `deadline` has passed; returns the count read (0: deadline passed).
  virtual std::size_t Read(std::uint8_t* buffer, std::size_t max, const Deadline& deadline) = 0;
  // Drops every byte that has arrived and not been read, without waiting.
  virtual void DropInput() = 0;
  // Releases the device; harmless when already closed.
  virtual void Close() noexcept = 0;
};

}  // namespace cvn73100::io
