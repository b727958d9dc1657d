#include "simulator/StreamPump.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <system_error>

namespace cvn73100::sim {
namespace {

constexpr auto kSendSlice = std::chrono::milliseconds(100);
// A pty host that reads nothing for this long is taken to be absent.
constexpr auto kStallLimit = std::chrono::milliseconds(500);

int BaudOf(speed_t speed) {
  struct Entry {
    speed_t speed;
    int baud;
  };
  static constexpr Entry kTable[] = {
      {B300, 300},       {B600, 600},       {B1200, 1200},     {B2400, 2400},   {B4800, 4800},
      {B9600, 9600},     {B19200, 19200},   {B38400, 38400},   {B57600, 57600}, {B115200, 115200},
      {B230400, 230400}, {B460800, 460800}, {B921600, 921600},
  };
  for (const Entry& e : kTable) {
    if (e.speed == speed) return e.baud;
  }
  return 0;
}

}  // namespace

StreamPump::StreamPump(int fd, ByteDevice& device, int termiosFd, std::function<void()> onClosed)
    : fd_(fd), device_(device), termiosFd_(termiosFd), onClosed_(std::move(onClosed)) {
  struct stat info {};
  socket_ = fstat(fd_, &info) == 0 && S_ISSOCK(info.st_mode);
  if (pipe2(wake_, O_CLOEXEC | O_NONBLOCK) != 0) throw std::system_error(errno, std::generic_category(), "pipe2");
  fcntl(fd_, F_SETFL, fcntl(fd_, F_GETFL) | O_NONBLOCK);
  reader_ = std::thread([this] { ReadLoop(); });
  writer_ = std::thread([this] { WriteLoop(); });
}

StreamPump::~StreamPump() {
  stop_ = true;
  const char byte = 0;
  [[maybe_unused]] const auto written = write(wake_[1], &byte, 1);
  reader_.join();
  writer_.join();
  close(wake_[0]);
  close(wake_[1]);
}

void StreamPump::ReportLineSettings() {
  termios settings{};
  if (termiosFd_ < 0 || tcgetattr(termiosFd_, &settings) != 0) return;
  device_.HostLineSettings(BaudOf(cfgetospeed(&settings)), (settings.c_iflag & IXON) != 0);
}

void StreamPump::ReadLoop() {
  std::uint8_t buffer[65536];
  pollfd fds[2] = {{fd_, POLLIN, 0}, {wake_[0], POLLIN, 0}};
  while (!stop_) {
    if (poll(fds, 2, -1) < 0) {
      if (errno == EINTR) continue;
      break;
    }
    if (fds[1].revents != 0) break;
    if (fds[0].revents == 0) continue;
    const ssize_t n = read(fd_, buffer, sizeof buffer);
    if (n > 0) {
      ReportLineSettings();
      device_.Receive(buffer, static_cast<std::size_t>(n));
      continue;
    }
    if (n < 0 && (errno == EAGAIN || errno == EINTR)) continue;
    if (n < 0 && errno == EIO && termiosFd_ >= 0) {
      // A pty master reads EIO while no slave is open; ours always is, but do not spin if it is not.
      poll(&fds[1], 1, 50);
      continue;
    }
    closed_ = true;
    if (onClosed_) onClosed_();
    break;
  }
}

void StreamPump::WriteLoop() {
  std::uint8_t buffer[4096];
  while (!stop_ && !closed_) {
    const std::size_t n = device_.Send(buffer, sizeof buffer, kSendSlice);
    if (n > 0) WriteAll(buffer, n);
  }
}

void StreamPump::WriteAll(const std::uint8_t* data, std::size_t size) {
  auto stalledSince = std::chrono::steady_clock::now();
  while (size > 0 && !stop_) {
    const ssize_t n = socket_ ? send(fd_, data, size, MSG_NOSIGNAL) : write(fd_, data, size);
    if (n > 0) {
      data += n;
      size -= static_cast<std::size_t>(n);
      stalledSince = std::chrono::steady_clock::now();
      continue;
    }
    if (n < 0 && errno != EAGAIN && errno != EINTR) return;  // the host is gone; its bytes are lost
    if (termiosFd_ >= 0 && std::chrono::steady_clock::now() - stalledSince > kStallLimit) {
      tcflush(termiosFd_, TCIFLUSH);  // nobody reads the pty: what the line carried is lost
      return;
    }
    pollfd fds[2] = {{fd_, POLLOUT, 0}, {wake_[0], POLLIN, 0}};
    poll(fds, 2, 100);
  }
}

}  // namespace cvn73100::sim
