#pragma once
#include <string>

#include "iolib/MessageIO.h"
#include "iolib/TcpStream.h"

namespace cvn73100::io {

// A LAN instrument's raw SCPI socket standing in for a GPIB address (IOType "GPIB"). Messages end with LF only
// (a socket has no END). There is no device clear on a socket: Clear drops what has arrived, and a read that
// timed out in the middle of a reply waits for the socket to fall quiet (at most 1 s) and drops the rest.
class SocketIO : public MessageIO {
 public:
  // Connects within 3 s; raises IOERR_OPEN_FAILED when host:port does not accept.
  SocketIO(std::string resourceName, const std::string& host, int port);
  ~SocketIO() override;

  std::string IOType() const override { return "GPIB"; }

 protected:
  void DoWrite(const std::uint8_t* data, std::size_t size, bool end, const Deadline& deadline) override;
  std::size_t DoRead(std::uint8_t* buffer, std::size_t max, ReadKind kind, const Deadline& deadline,
                     bool& end) override;
  void DoClear(const Deadline& deadline) override;
  void DoDropInput() override;
  void AfterReadTimeout(bool partial) override;
  void DoClose() noexcept override;

 private:
  TcpStream m_stream;
};

}  // namespace cvn73100::io
