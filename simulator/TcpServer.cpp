#include "simulator/TcpServer.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>

namespace cvn73100::sim {

TcpServer::TcpServer(ByteDevice& device, std::uint16_t port) : device_(device) {
  listen_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (listen_ < 0) throw std::system_error(errno, std::generic_category(), "socket");
  const int yes = 1;
  setsockopt(listen_, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);  // loopback only, never another interface
  socklen_t length = sizeof address;
  if (bind(listen_, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 || listen(listen_, 4) != 0 ||
      getsockname(listen_, reinterpret_cast<sockaddr*>(&address), &length) != 0 ||
      pipe2(wake_, O_CLOEXEC | O_NONBLOCK) != 0) {
    const int error = errno;
    close(listen_);
    throw std::system_error(error, std::generic_category(), "127.0.0.1:" + std::to_string(port));
  }
  port_ = ntohs(address.sin_port);
  acceptor_ = std::thread([this] { AcceptLoop(); });
}

TcpServer::~TcpServer() {
  const char byte = 0;
  [[maybe_unused]] const auto written = write(wake_[1], &byte, 1);
  acceptor_.join();
  Disconnect();
  close(listen_);
  close(wake_[0]);
  close(wake_[1]);
}

void TcpServer::Disconnect() {
  if (client_ < 0) return;
  const bool wasOpen = !pump_->Closed();
  pump_.reset();
  close(client_);
  client_ = -1;
  if (wasOpen) device_.HostDisconnected();  // a host that closed was reported by the pump already
}

void TcpServer::AcceptLoop() {
  pollfd fds[2] = {{listen_, POLLIN, 0}, {wake_[0], POLLIN, 0}};
  for (;;) {
    if (poll(fds, 2, -1) < 0) {
      if (errno == EINTR) continue;
      return;
    }
    if (fds[1].revents != 0) return;
    const int client = accept4(listen_, nullptr, nullptr, SOCK_CLOEXEC);
    if (client < 0) continue;
    const int yes = 1;
    setsockopt(client, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);  // replies are small and awaited
    Disconnect();
    client_ = client;
    pump_ = std::make_unique<StreamPump>(client_, device_, -1, [this] { device_.HostDisconnected(); });
  }
}

}  // namespace cvn73100::sim
