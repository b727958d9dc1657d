#pragma once

// The host's end of a served stream in tests: a socket or an opened pty node, with deadline-bounded reads.
#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <termios.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

namespace cvn73100::sim::test {

class HostLine {
 public:
  explicit HostLine(int fd) : fd_(fd) {}
  ~HostLine() {
    if (fd_ >= 0) close(fd_);
  }
  HostLine(HostLine&& other) noexcept : fd_(other.fd_) { other.fd_ = -1; }
  HostLine(const HostLine&) = delete;

  // Opens a pty node as a serial port: raw 8N1 at `baud`, XON/XOFF when asked.
  static HostLine OpenSerial(const std::string& path, speed_t baud = B9600, bool xonXoff = false) {
    const int fd = open(path.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    termios t{};
    tcgetattr(fd, &t);
    cfmakeraw(&t);
    cfsetspeed(&t, baud);
    if (xonXoff) t.c_iflag |= IXON;
    tcsetattr(fd, TCSANOW, &t);
    return HostLine(fd);
  }
  static HostLine Connect(std::uint16_t port) {
    const int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address);
    return HostLine(fd);
  }

  bool Valid() const { return fd_ >= 0; }
  void Send(std::string_view bytes) {
    while (!bytes.empty()) {
      const ssize_t n = write(fd_, bytes.data(), bytes.size());
      if (n <= 0) return;
      bytes.remove_prefix(static_cast<std::size_t>(n));
    }
  }
  // Reads until `stop` has arrived (or `count` bytes when stop is empty), the peer closes, or the time is up.
  std::string ReadUntil(std::string_view stop, std::chrono::milliseconds timeout = std::chrono::milliseconds(1000),
                        std::size_t count = 0) {
    std::string got;
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    for (;;) {
      if (!stop.empty() && got.size() >= stop.size() && got.compare(got.size() - stop.size(), stop.size(), stop) == 0)
        break;
      if (stop.empty() && count > 0 && got.size() >= count) break;
      const auto left =
          std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
      if (left.count() <= 0) break;
      pollfd p{fd_, POLLIN, 0};
      if (poll(&p, 1, static_cast<int>(left.count())) <= 0) break;
      char c[4096];
      const std::size_t want = stop.empty() ? std::min(sizeof c, count - got.size()) : 1;
      const ssize_t n = read(fd_, c, want);
      if (n <= 0) break;
      got.append(c, static_cast<std::size_t>(n));
    }
    return got;
  }

 private:
  int fd_;
};

}  // namespace cvn73100::sim::test
