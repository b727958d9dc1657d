#pragma once
#include <cstdint>
#include <memory>
#include <string>

#include "iolib/ByteStream.h"

namespace cvn73100::io {

// An RS-232 line: a byte stream with line settings and modem-control lines.
// Settings raise IOERR_BAD_ARGUMENT for values the line cannot take and IOERR_IO_FAILURE when the driver refuses.
class SerialLine : public ByteStream {
 public:
  virtual void SetBaudRate(std::int32_t baud) = 0;
  virtual void SetDataBits(int bits) = 0;
  virtual void SetStopBits(int bits) = 0;
  // One of the RS232_HandShake_* values. The line applies what its driver does itself (XON/XOFF);
  // the DTR/DSR wait before writing is done by the caller, which alone knows the deadline.
  virtual void SetHandshake(std::int16_t handshake) = 0;
  virtual void SetDTR(bool asserted) = 0;
  virtual void SetRTS(bool asserted) = 0;
  // Whether the device asserts DSR. Lines without modem-control inputs report it asserted.
  virtual bool DSR() = 0;
  // Lets bytes already written leave the host (until `deadline`), then drops whatever is buffered either way.
  virtual void Flush(const Deadline& deadline) = 0;

  // Opens a device node: a pseudo-terminal through the termios line, any other node through libserialport.
  // Raises IOERR_OPEN_FAILED when the node is missing, busy or not a terminal.
  static std::unique_ptr<SerialLine> OpenNode(const std::string& path);
  // Whether `path` opens as a terminal right now (opened and closed again at once, with no line settings touched).
  static bool NodeIsOpenable(const std::string& path);
};

}  // namespace cvn73100::io
