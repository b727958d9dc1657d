#include "simulator/PtyServer.h"

#include <fcntl.h>
#include <stdlib.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace cvn73100::sim {
namespace {
[[noreturn]] void Fail(const char* what) { throw std::system_error(errno, std::generic_category(), what); }
}  // namespace

PtyServer::PtyServer(ByteDevice& device) {
  master_ = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
  if (master_ < 0) Fail("posix_openpt");
  char name[128];
  if (grantpt(master_) != 0 || unlockpt(master_) != 0 || ptsname_r(master_, name, sizeof name) != 0) {
    const int error = errno;
    close(master_);
    throw std::system_error(error, std::generic_category(), "pseudo-terminal");
  }
  path_ = name;
  slave_ = open(name, O_RDWR | O_NOCTTY | O_CLOEXEC);
  if (slave_ < 0) {
    const int error = errno;
    close(master_);
    throw std::system_error(error, std::generic_category(), path_);
  }
  // Raw, so that nothing echoes the instrument's replies back to it before a host sets the line up.
  termios settings{};
  tcgetattr(slave_, &settings);
  cfmakeraw(&settings);
  settings.c_cflag |= CLOCAL | CREAD;
  cfsetspeed(&settings, B9600);
  tcsetattr(slave_, TCSANOW, &settings);
  pump_ = std::make_unique<StreamPump>(master_, device, slave_);
}

PtyServer::~PtyServer() {
  pump_.reset();
  close(slave_);
  close(master_);
}

}  // namespace cvn73100::sim
