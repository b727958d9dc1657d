#include "iolib/FdWait.h"

#include <poll.h>

#include <cerrno>

#include "platform/InstrumentIO.h"
#include "platform/Interrupt.h"

namespace cvn73100::io {
namespace {

FdWait::Result WaitFor(int fd, short events, const Deadline& deadline) {
  for (;;) {
    Interrupt::Check();
    pollfd entry{fd, events, 0};
    const int rc = ::poll(&entry, 1, Interrupt::Slice(std::chrono::milliseconds(deadline.RemainingMs())).count());
    if (rc < 0) {
      if (errno == EINTR) continue;
      return FdWait::Result::Hangup;
    }
    if (rc == 0) {
      if (deadline.Expired()) return FdWait::Result::Expired;
      continue;  // a slice ended, or poll rounded to milliseconds: wait out the rest
    }
    // Input still waiting after a hangup is delivered first; the next read reports the hangup.
    if (entry.revents & events) return FdWait::Result::Ready;
    return FdWait::Result::Hangup;
  }
}

}  // namespace

FdWait::Result FdWait::Readable(int fd, const Deadline& deadline) { return WaitFor(fd, POLLIN, deadline); }
FdWait::Result FdWait::Writable(int fd, const Deadline& deadline) { return WaitFor(fd, POLLOUT, deadline); }

bool FdWait::HungUp(int fd) {
  pollfd entry{fd, 0, 0};
  if (::poll(&entry, 1, 0) < 0) return errno != EINTR;
  return (entry.revents & (POLLHUP | POLLERR | POLLNVAL)) != 0;
}

void FdWait::UntilWritable(int fd, const Deadline& deadline, const std::string& name) {
  switch (Writable(fd, deadline)) {
    case Result::Expired:
      throw IOError(IOERR_TIMEOUT, "write to " + name);
    case Result::Hangup:
      throw IOError(IOERR_DEVICE_VANISHED, name);
    case Result::Ready:
      return;
  }
}

bool FdWait::UntilReadable(int fd, const Deadline& deadline, const std::string& name) {
  switch (Readable(fd, deadline)) {
    case Result::Expired:
      return false;
    case Result::Hangup:
      throw IOError(IOERR_DEVICE_VANISHED, name);
    case Result::Ready:
      break;
  }
  return true;
}

}  // namespace cvn73100::io
