#pragma once
#include <string>

#include "iolib/SerialLine.h"

struct sp_port;

namespace cvn73100::io {

// A serial device node driven through libserialport: line settings, XON/XOFF in the driver, DTR/RTS/DSR lines.
// Opens at 9600 baud, 8 data bits, no parity, 1 stop bit, no flow control, DTR and RTS asserted.
class LibSerialPortLine : public SerialLine {
 public:
  // Raises IOERR_OPEN_FAILED when libserialport cannot open `path` (symlinks such as /dev/serial/by-id/* are resolved).
  explicit LibSerialPortLine(const std::string& path);
  ~LibSerialPortLine() override;
  LibSerialPortLine(const LibSerialPortLine&) = delete;
  LibSerialPortLine& operator=(const LibSerialPortLine&) = delete;

  void Write(const std::uint8_t* data, std::size_t size, const Deadline& deadline) override;
  std::size_t Read(std::uint8_t* buffer, std::size_t max, const Deadline& deadline) override;
  void DropInput() override;
  void Close() noexcept override;

  void SetBaudRate(std::int32_t baud) override;
  void SetDataBits(int bits) override;
  void SetStopBits(int bits) override;
  void SetHandshake(std::int16_t handshake) override;
  void SetDTR(bool asserted) override;
  void SetRTS(bool asserted) override;
  bool DSR() override;
  void Flush(const Deadline& deadline) override;

 private:
  void Check(int result, const char* what);
  sp_port* OpenPort() const;

  std::string m_path;
  sp_port* m_port = nullptr;
  int m_fd = -1;
};

}  // namespace cvn73100::io
