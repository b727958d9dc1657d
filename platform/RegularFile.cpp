#include "platform/RegularFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace cvn73100 {
namespace {

[[noreturn]] void Fail(const std::string& path, const std::string& step, int error) {
  throw FileError(path + ": " + step + ": " + std::strerror(error));
}

const char* KindOf(mode_t mode) {
  if (S_ISDIR(mode)) return "a folder";
  if (S_ISFIFO(mode)) return "a FIFO";
  if (S_ISCHR(mode) || S_ISBLK(mode)) return "a device";
  if (S_ISSOCK(mode)) return "a socket";
  return "not a regular file";
}

struct CloseFd {
  int fd;
  ~CloseFd() {
    if (fd >= 0) ::close(fd);
  }
};

}  // namespace

std::optional<std::string> ReadRegularFile(const std::string& path, std::size_t maxBytes) {
  // Non-blocking, so that opening a FIFO does not wait for a writer.
  CloseFd file{::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY)};
  if (file.fd < 0) {
    if (errno == ENOENT) return std::nullopt;
    Fail(path, "open", errno);
  }
  struct stat st {};
  if (::fstat(file.fd, &st) != 0) Fail(path, "stat", errno);
  if (!S_ISREG(st.st_mode)) throw FileError(path + ": is " + KindOf(st.st_mode) + ", where a regular file is expected");
  if (static_cast<std::uintmax_t>(st.st_size) > maxBytes)
    throw FileError(path + ": " + std::to_string(st.st_size) + " bytes, more than the " + std::to_string(maxBytes) +
                    " allowed");
  std::string text;
  char buffer[65536];
  for (;;) {
    const ssize_t n = ::read(file.fd, buffer, sizeof buffer);
    if (n < 0 && errno == EINTR) continue;
    if (n < 0) Fail(path, "read", errno);
    if (n == 0) break;
    text.append(buffer, static_cast<std::size_t>(n));
    if (text.size() > maxBytes)
      throw FileError(path + ": more than the " + std::to_string(maxBytes) + " bytes allowed");
  }
  return text;
}

}  // namespace cvn73100
