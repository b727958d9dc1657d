#include "form/FormLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "platform/RegularFile.h"

namespace cvn73100 {

FormLock::FormLock(const std::string& formPath) {
  const std::filesystem::path target = WriteTarget(formPath);
  std::error_code ec;
  if (target.has_parent_path()) std::filesystem::create_directories(target.parent_path(), ec);
  const std::string lockPath = target.string() + ".lock";
  const auto fail = [&](const char* step) {
    const int error = errno;
    if (m_fd >= 0) ::close(m_fd);
    throw FileError(lockPath + ": " + step + ": " + std::strerror(error));
  };
  m_fd = ::open(lockPath.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC | O_NOCTTY, 0600);
  if (m_fd < 0) fail("open");
  struct stat st {};
  if (::fstat(m_fd, &st) != 0) fail("stat");
  if (!S_ISREG(st.st_mode)) {
    errno = EINVAL;
    fail("not a regular file");
  }
  while (::flock(m_fd, LOCK_EX) != 0)
    if (errno != EINTR) fail("lock");
}

FormLock::~FormLock() { ::close(m_fd); }

}  // namespace cvn73100
