#include "iolib/PtyLine.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

#include "iolib/ErrnoError.h"
#include "iolib/FdWait.h"

namespace cvn73100::io {
namespace {

// UNIX 98 pty slaves use majors 136 to 143.
constexpr unsigned kFirstPtySlaveMajor = 136;
constexpr unsigned kLastPtySlaveMajor = 143;

speed_t SpeedOf(std::int32_t baud) {
  static constexpr std::pair<std::int32_t, speed_t> kSpeeds[] = {
      {50, B50},         {75, B75},         {110, B110},       {134, B134},       {150, B150},        {200, B200},
      {300, B300},       {600, B600},       {1200, B1200},     {1800, B1800},     {2400, B2400},      {4800, B4800},
      {9600, B9600},     {19200, B19200},   {38400, B38400},   {57600, B57600},   {115200, B115200},  {230400, B230400},
      {460800, B460800}, {500000, B500000}, {576000, B576000}, {921600, B921600}, {1000000, B1000000}};
  for (const auto& [rate, speed] : kSpeeds)
    if (rate == baud) return speed;
  throw IOError(IOERR_BAD_ARGUMENT, "baud rate " + std::to_string(baud));
}

}  // namespace

bool PtyLine::IsPseudoTerminal(const std::string& path) {
  struct stat info {};
  if (::stat(path.c_str(), &info) != 0 || !S_ISCHR(info.st_mode)) return false;
  const unsigned major = ::major(info.st_rdev);
  return major >= kFirstPtySlaveMajor && major <= kLastPtySlaveMajor;
}

PtyLine::PtyLine(const std::string& path) : m_path(path) {
  m_fd = ::open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
  if (m_fd < 0) throw IOError(IOERR_OPEN_FAILED, path + ": " + std::strerror(errno));
  termios settings{};
  if (::tcgetattr(m_fd, &settings) != 0) {
    const int err = errno;
    Close();
    throw IOError(IOERR_OPEN_FAILED, path + ": " + std::strerror(err));
  }
  // Raw before anything can arrive, so nothing is echoed back to the device.
  ::cfmakeraw(&settings);
  settings.c_cflag |= CLOCAL | CREAD;
  settings.c_cflag &= ~(CSTOPB | PARENB | CRTSCTS);
  settings.c_iflag &= ~(IXON | IXOFF | IXANY);
  settings.c_cc[VMIN] = 0;
  settings.c_cc[VTIME] = 0;
  ::cfsetispeed(&settings, B9600);
  ::cfsetospeed(&settings, B9600);
  if (::tcsetattr(m_fd, TCSANOW, &settings) != 0) {
    const int err = errno;
    Close();
    throw IOError(IOERR_OPEN_FAILED, path + ": " + std::strerror(err));
  }
  m_settings = settings;
  ::tcflush(m_fd, TCIFLUSH);
}

PtyLine::~PtyLine() { Close(); }

void PtyLine::Close() noexcept {
  if (m_fd < 0) return;
  ::close(m_fd);
  m_fd = -1;
}

template <typename Change>
void PtyLine::Modify(Change change, const char* what) {
  // Only this side sets the line, so the settings it last applied are the line's: an unchanged setting
  // costs no system call (a query sets the same handshake several times).
  termios settings = m_settings;
  change(settings);
  if (std::memcmp(&settings, &m_settings, sizeof settings) == 0) return;
  if (::tcsetattr(m_fd, TCSANOW, &settings) != 0) throw ErrnoError::Make(errno, m_path + " " + what);
  m_settings = settings;
}

// Both directions try the descriptor first and wait only when it would block: the line is usually ready (a
// reply has arrived by the time it is read), and a wait costs a system call.
void PtyLine::Write(const std::uint8_t* data, std::size_t size, const Deadline& deadline) {
  std::size_t done = 0;
  while (done < size) {
    const ssize_t n = ::write(m_fd, data + done, size - done);
    if (n >= 0) {
      done += static_cast<std::size_t>(n);
    } else if (errno == EAGAIN) {
      FdWait::UntilWritable(m_fd, deadline, m_path);
    } else if (errno != EINTR) {
      throw ErrnoError::Make(errno, "write to " + m_path);
    }
  }
}

std::size_t PtyLine::Read(std::uint8_t* buffer, std::size_t max, const Deadline& deadline) {
  for (bool readable = false;;) {
    const ssize_t n = ::read(m_fd, buffer, max);
    if (n > 0) return static_cast<std::size_t>(n);
    const int err = n < 0 ? errno : 0;
    if (err == EINTR) continue;
    // An empty raw line reads as 0 bytes; once the wait has said it is readable, 0 bytes (or EIO) mean that the
    // master side closed.
    if ((n == 0 && !readable) || err == EAGAIN) {
      if (!FdWait::UntilReadable(m_fd, deadline, m_path)) return 0;
      readable = true;
      continue;
    }
    if (n == 0 || ErrnoError::MeansVanished(err)) throw IOError(IOERR_DEVICE_VANISHED, m_path);
    throw ErrnoError::Make(err, "read from " + m_path);
  }
}

void PtyLine::DropInput() {
  int waiting = 0;
  if (::ioctl(m_fd, FIONREAD, &waiting) == 0 && waiting == 0) return;  // the common case costs no flush
  if (::tcflush(m_fd, TCIFLUSH) != 0) throw ErrnoError::Make(errno, "flush " + m_path);
}

void PtyLine::Flush(const Deadline&) { DropInput(); }

void PtyLine::SetBaudRate(std::int32_t baud) {
  const speed_t speed = SpeedOf(baud);
  Modify(
      [speed](termios& settings) {
        ::cfsetispeed(&settings, speed);
        ::cfsetospeed(&settings, speed);
      },
      "baud rate");
}

void PtyLine::SetDataBits(int bits) {
  tcflag_t size = 0;
  switch (bits) {
    case 5:
      size = CS5;
      break;
    case 6:
      size = CS6;
      break;
    case 7:
      size = CS7;
      break;
    case 8:
      size = CS8;
      break;
    default:
      throw IOError(IOERR_BAD_ARGUMENT, "data bits " + std::to_string(bits));
  }
  Modify([size](termios& settings) { settings.c_cflag = (settings.c_cflag & ~CSIZE) | size; }, "data bits");
}

void PtyLine::SetStopBits(int bits) {
  if (bits != 1 && bits != 2) throw IOError(IOERR_BAD_ARGUMENT, "stop bits " + std::to_string(bits));
  Modify(
      [bits](termios& settings) {
        if (bits == 2)
          settings.c_cflag |= CSTOPB;
        else
          settings.c_cflag &= ~CSTOPB;
      },
      "stop bits");
}

void PtyLine::SetHandshake(std::int16_t handshake) {
  const bool xonXoff = handshake == RS232_HandShake_XON_XOFF;
  Modify(
      [xonXoff](termios& settings) {
        if (xonXoff)
          settings.c_iflag |= IXON | IXOFF;
        else
          settings.c_iflag &= ~(IXON | IXOFF);
      },
      "XON/XOFF");
}

void PtyLine::SetDTR(bool) {}
void PtyLine::SetRTS(bool) {}
bool PtyLine::DSR() { return true; }

}  // namespace cvn73100::io
