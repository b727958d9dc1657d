#pragma once

#include <cstdint>
#include <memory>
#include <thread>

#include "simulator/ByteDevice.h"
#include "simulator/StreamPump.h"

namespace cvn73100::sim {

// Serves a ByteDevice on a TCP port of 127.0.0.1, one host at a time: a new connection replaces the current
// one (a host that vanished without closing must not lock the instrument away).
class TcpServer {
 public:
  // `device` must outlive the server; port 0 takes any free port. Throws std::system_error when the port
  // cannot be bound.
  TcpServer(ByteDevice& device, std::uint16_t port);
  ~TcpServer();
  TcpServer(const TcpServer&) = delete;
  TcpServer& operator=(const TcpServer&) = delete;

  std::uint16_t Port() const { return port_; }

 private:
  void AcceptLoop();
  void Disconnect();

  ByteDevice& device_;
  int listen_ = -1;
  int wake_[2] = {-1, -1};
  std::uint16_t port_ = 0;
  int client_ = -1;
  std::unique_ptr<StreamPump> pump_;
  std::thread acceptor_;
};

}  // namespace cvn73100::sim
