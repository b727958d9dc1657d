#include "iolib/TcpStream.h"

#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "iolib/ErrnoError.h"
#include "iolib/FdWait.h"

namespace cvn73100::io {
namespace {

// Connects one address within the deadline; returns the socket or -1 with `error` set.
int ConnectOne(const addrinfo& address, const Deadline& deadline, int& error) {
  const int fd = ::socket(address.ai_family, address.ai_socktype | SOCK_NONBLOCK | SOCK_CLOEXEC, address.ai_protocol);
  if (fd < 0) {
    error = errno;
    return -1;
  }
  if (::connect(fd, address.ai_addr, address.ai_addrlen) != 0) {
    if (errno != EINPROGRESS) {
      error = errno;
      ::close(fd);
      return -1;
    }
    if (FdWait::Writable(fd, deadline) == FdWait::Result::Expired) {
      error = ETIMEDOUT;
      ::close(fd);
      return -1;
    }
    socklen_t length = sizeof error;
    if (::getsockopt(fd, SOL_SOCKET, SO_ERROR, &error, &length) != 0 || error != 0) {
      if (error == 0) error = errno;
      ::close(fd);
      return -1;
    }
  }
  const int on = 1;
  ::setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  return fd;
}

}  // namespace

TcpStream::TcpStream(const std::string& host, int port, const Deadline& deadline)
    : m_name(host + ":" + std::to_string(port)) {
  addrinfo hints{};
  hints.ai_family = AF_UNSPEC;
  hints.ai_socktype = SOCK_STREAM;
  addrinfo* addresses = nullptr;
  const int rc = ::getaddrinfo(host.c_str(), std::to_string(port).c_str(), &hints, &addresses);
  if (rc != 0) throw IOError(IOERR_OPEN_FAILED, m_name + ": " + ::gai_strerror(rc));
  int error = 0;
  for (const addrinfo* address = addresses; address && m_fd < 0; address = address->ai_next)
    m_fd = ConnectOne(*address, deadline, error);
  ::freeaddrinfo(addresses);
  if (m_fd < 0) throw IOError(IOERR_OPEN_FAILED, m_name + ": " + std::strerror(error));
}

TcpStream::~TcpStream() { Close(); }

void TcpStream::Close() noexcept {
  if (m_fd < 0) return;
  ::close(m_fd);
  m_fd = -1;
}

int TcpStream::Release() {
  const int fd = m_fd;
  m_fd = -1;
  return fd;
}

void TcpStream::Write(const std::uint8_t* data, std::size_t size, const Deadline& deadline) {
  std::size_t done = 0;
  while (done < size) {
    FdWait::UntilWritable(m_fd, deadline, m_name);
    const ssize_t n = ::send(m_fd, data + done, size - done, MSG_NOSIGNAL);
    if (n < 0) {
      if (errno == EAGAIN || errno == EINTR) continue;
      throw ErrnoError::Make(errno, "write to " + m_name);
    }
    done += static_cast<std::size_t>(n);
  }
}

std::size_t TcpStream::Read(std::uint8_t* buffer, std::size_t max, const Deadline& deadline) {
  for (;;) {
    if (!FdWait::UntilReadable(m_fd, deadline, m_name)) return 0;
    const ssize_t n = ::recv(m_fd, buffer, max, 0);
    if (n > 0) return static_cast<std::size_t>(n);
    if (n == 0) throw IOError(IOERR_DEVICE_VANISHED, m_name + ": connection closed");
    if (errno == EAGAIN || errno == EINTR) continue;
    throw ErrnoError::Make(errno, "read from " + m_name);
  }
}

void TcpStream::DropInput() {
  std::uint8_t sink[4096];
  for (;;) {
    const ssize_t n = ::recv(m_fd, sink, sizeof sink, MSG_DONTWAIT);
    if (n > 0) continue;
    if (n == 0) throw IOError(IOERR_DEVICE_VANISHED, m_name + ": connection closed");
    if (errno == EINTR) continue;
    if (errno == EAGAIN || errno == EWOULDBLOCK) return;
    throw ErrnoError::Make(errno, "read from " + m_name);
  }
}

}  // namespace cvn73100::io
