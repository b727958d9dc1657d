#pragma once
#include <string>

#include "iolib/SerialLine.h"
#include "iolib/TcpStream.h"

namespace cvn73100::io {

// A serial port of a serial device server reached over a raw TCP socket: the bytes pass unchanged and the line
// settings are fixed at the server. Setting them succeeds without effect (the handshake check tells the user),
// and DSR reads asserted, as on a line without modem-control inputs.
class TcpSerialLine : public SerialLine {
 public:
  // Raises IOERR_OPEN_FAILED when host:port does not accept a connection within 3 s.
  TcpSerialLine(const std::string& host, int port);

  void Write(const std::uint8_t* data, std::size_t size, const Deadline& deadline) override {
    m_stream.Write(data, size, deadline);
  }
  std::size_t Read(std::uint8_t* buffer, std::size_t max, const Deadline& deadline) override {
    return m_stream.Read(buffer, max, deadline);
  }
  void DropInput() override { m_stream.DropInput(); }
  void Close() noexcept override { m_stream.Close(); }

  void SetBaudRate(std::int32_t) override {}
  void SetDataBits(int) override {}
  void SetStopBits(int) override {}
  void SetHandshake(std::int16_t) override {}
  void SetDTR(bool) override {}
  void SetRTS(bool) override {}
  bool DSR() override { return true; }
  // What the socket holds is dropped; bytes written are with the server already.
  void Flush(const Deadline&) override { m_stream.DropInput(); }

 private:
  TcpStream m_stream;
};

}  // namespace cvn73100::io
