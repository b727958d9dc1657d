#include "iolib/FdWait.h"

#include <poll.h>

#include <cerrno>

namespace cvn73100::io {
namespace {

FdWait::Result WaitFor(int fd, short events, const Deadline& deadline) {
  for (;;) {
    pollfd entry{fd, events, 0};
    const int rc = ::poll(&entry, 1, deadline.RemainingMs());
    if (rc < 0) {
      if (errno == EINTR) continue;
      return FdWait::Result::Hangup;
    }
    if (rc == 0) {
      if (deadline.Expired()) return FdWait::Result::Expired;
      continue;  // poll rounds to milliseconds; wait out the rest
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

}  // namespace cvn73100::io
