#pragma once
#include <string>

#include "iolib/ByteStream.h"

namespace cvn73100::io {

// A TCP connection (the raw socket of a networked GPIB adapter). The peer closing or resetting the connection
// is IOERR_DEVICE_VANISHED.
class TcpStream : public ByteStream {
 public:
  // Connects within `deadline`; raises IOERR_OPEN_FAILED when the host is unknown, refuses or does not answer.
  TcpStream(const std::string& host, int port, const Deadline& deadline);
  ~TcpStream() override;
  TcpStream(const TcpStream&) = delete;
  TcpStream& operator=(const TcpStream&) = delete;

  void Write(const std::uint8_t* data, std::size_t size, const Deadline& deadline) override;
  std::size_t Read(std::uint8_t* buffer, std::size_t max, const Deadline& deadline) override;
  void DropInput() override;
  void Close() noexcept override;
  // Hands the connected socket (non-blocking) over to the caller, who then owns it; the stream is closed.
  int Release();

 private:
  std::string m_name;
  int m_fd = -1;
};

}  // namespace cvn73100::io
