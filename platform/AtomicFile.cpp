#include "platform/AtomicFile.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>

namespace cvn73100 {
namespace {

namespace fs = std::filesystem;

constexpr std::time_t STALE_AFTER_SECONDS = 60;

[[noreturn]] void Fail(const std::string& step, const std::string& path, int error) {
  throw AtomicFileError(path + ": " + step + ": " + std::strerror(error));
}

std::string TemporaryPrefix(const fs::path& target) {
  return "." + target.filename().string().substr(0, 200) + ".tmp-";
}

// The file a save replaces: `path` itself, or what a link of one's own points to.
fs::path SaveTarget(const std::string& path) {
  fs::path target(path);
  struct stat link {};
  if (::lstat(path.c_str(), &link) != 0 || !S_ISLNK(link.st_mode)) return target;
  fs::path folder = target.parent_path();
  if (folder.empty()) folder = ".";
  struct stat shared {};
  // The kernel's protected_symlinks rule: in a sticky folder others may write, only the link's owner
  // and the folder's owner may have it followed.
  if (::stat(folder.c_str(), &shared) == 0 && (shared.st_mode & S_ISVTX) && (shared.st_mode & S_IWOTH) &&
      link.st_uid != ::geteuid() && link.st_uid != shared.st_uid) {
    throw AtomicFileError(path + ": a link of another user in a shared folder; not followed");
  }
  std::error_code ec;
  fs::path resolved = fs::weakly_canonical(target, ec);
  if (ec) Fail("resolve the link", path, ec.value());
  return resolved;
}

// Temporary files of earlier saves of `target` whose writer has gone: old, and not locked by anyone.
void RemoveStaleTemporaries(const fs::path& folder, const fs::path& target) {
  DIR* dir = ::opendir(folder.c_str());
  if (!dir) return;
  const std::string prefix = TemporaryPrefix(target);
  const std::time_t now = std::time(nullptr);
  while (const dirent* entry = ::readdir(dir)) {
    if (std::string_view(entry->d_name).substr(0, prefix.size()) != prefix) continue;
    const fs::path candidate = folder / entry->d_name;
    const int fd = ::open(candidate.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) continue;
    struct stat st {};
    if (::fstat(fd, &st) == 0 && S_ISREG(st.st_mode) && st.st_uid == ::geteuid() &&
        now - st.st_mtime > STALE_AFTER_SECONDS && ::flock(fd, LOCK_EX | LOCK_NB) == 0) {
      ::unlink(candidate.c_str());
    }
    ::close(fd);
  }
  ::closedir(dir);
}

void WriteAll(int fd, std::string_view bytes, const std::string& temporary) {
  while (!bytes.empty()) {
    const ssize_t n = ::write(fd, bytes.data(), bytes.size());
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) Fail("write", temporary, n == 0 ? EIO : errno);
    bytes.remove_prefix(static_cast<std::size_t>(n));
  }
}

}  // namespace

void ReplaceFileAtomically(const std::string& path, std::initializer_list<std::string_view> parts) {
  const fs::path target = SaveTarget(path);
  if (target.filename().empty()) throw AtomicFileError("\"" + path + "\": no file name");
  fs::path folder = target.parent_path();
  if (folder.empty()) folder = ".";

  struct stat existing {};
  const bool exists = ::stat(target.c_str(), &existing) == 0;
  if (exists && !S_ISREG(existing.st_mode)) throw AtomicFileError(target.string() + ": not a regular file");
  RemoveStaleTemporaries(folder, target);

  std::string temporary = (folder / (TemporaryPrefix(target) + "XXXXXX")).string();
  const int fd = ::mkostemp(temporary.data(), O_CLOEXEC);
  if (fd < 0) Fail("create a file beside it", target.string(), errno);
  try {
    // Held until the file is renamed or removed: a lock nobody holds marks the file of a writer that died.
    ::flock(fd, LOCK_EX);
    mode_t mode = existing.st_mode & 07777;
    if (!exists) {
      const mode_t mask = ::umask(0);
      ::umask(mask);
      mode = 0666 & ~mask;
    }
    if (::fchmod(fd, mode) != 0) Fail("set the mode", temporary, errno);
    for (const std::string_view part : parts) WriteAll(fd, part, temporary);
    if (::fsync(fd) != 0) Fail("sync", temporary, errno);
    if (::rename(temporary.c_str(), target.c_str()) != 0) Fail("rename over it", target.string(), errno);
  } catch (...) {
    ::unlink(temporary.c_str());
    ::close(fd);
    throw;
  }
  ::close(fd);
  // The rename itself reaches the disk with the folder.
  if (const int dirFd = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); dirFd >= 0) {
    ::fsync(dirFd);
    ::close(dirFd);
  }
}

}  // namespace cvn73100
