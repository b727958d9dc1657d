#pragma once
#include <termios.h>

#include <string>

#include "iolib/SerialLine.h"

namespace cvn73100::io {

// The slave side of a pseudo-terminal driven through termios. libserialport cannot open a pseudo-terminal
// (it requires modem-control ioctls and a sysfs entry that a pty does not have), so this line stands in for it
// with the same behaviour: raw 8-bit line, baud rate, data and stop bits and XON/XOFF kept in the termios
// settings (where the program on the master side can read them). A pty has no modem-control lines: setting
// DTR or RTS succeeds without effect and DSR reads as asserted.
class PtyLine : public SerialLine {
 public:
  // Raises IOERR_OPEN_FAILED when `path` cannot be opened or is not a terminal.
  explicit PtyLine(const std::string& path);
  ~PtyLine() override;
  PtyLine(const PtyLine&) = delete;
  PtyLine& operator=(const PtyLine&) = delete;

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
  // Bytes written to a pty are with the other side at once; only input is dropped.
  void Flush(const Deadline& deadline) override;

  // Whether `path` names a pseudo-terminal slave (a UNIX 98 pty device).
  static bool IsPseudoTerminal(const std::string& path);

 private:
  template <typename Change>
  void Modify(Change change, const char* what);

  std::string m_path;
  int m_fd = -1;
  termios m_settings{};
};

}  // namespace cvn73100::io
