#include "platform/AtomicFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "platform/ScopeError.h"

namespace cvn73100 {
namespace {

constexpr std::int32_t FILE_ERROR = 75;  // Path/File access error
constexpr const char* CLI_SOURCE = "cvnscope";

}  // namespace

void WriteFileAtomically(const std::string& path, const std::string& bytes, const std::string& what) {
  const auto fail = [&](const std::string& why) { return ScopeError(FILE_ERROR, CLI_SOURCE, what + " " + path + ": " + why); };
  const std::filesystem::path target(path);
  std::error_code ec;
  if (target.has_parent_path()) std::filesystem::create_directories(target.parent_path(), ec);
  std::string temp = path + ".XXXXXX";
  const int fd = ::mkstemp(temp.data());
  if (fd < 0) throw fail(std::strerror(errno));
  std::size_t done = 0;
  while (done < bytes.size()) {
    const ssize_t n = ::write(fd, bytes.data() + done, bytes.size() - done);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) {
      const std::string why = std::strerror(errno);
      ::close(fd);
      ::unlink(temp.c_str());
      throw fail(why);
    }
    done += static_cast<std::size_t>(n);
  }
  // mkstemp makes the file private; an output file gets the usual permissions.
  const mode_t mask = ::umask(0);
  ::umask(mask);
  ::fchmod(fd, 0666 & ~mask);
  if (::fsync(fd) != 0 || ::close(fd) != 0) {
    const std::string why = std::strerror(errno);
    ::unlink(temp.c_str());
    throw fail(why);
  }
  if (std::rename(temp.c_str(), path.c_str()) != 0) {
    const std::string why = std::strerror(errno);
    ::unlink(temp.c_str());
    throw fail(why);
  }
}

}  // namespace cvn73100
