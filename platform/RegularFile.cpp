#include "platform/RegularFile.h"

#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

namespace cvn73100 {
namespace {

namespace fs = std::filesystem;

constexpr int MAX_LINK_HOPS = 40;
constexpr std::size_t MAX_NAME_IN_TEMPORARY = 200;
constexpr const char* TEMPORARY_MARK = ".tmp-";

std::atomic<void (*)(const char*)> g_stepHook{nullptr};

void Step(const char* step) {
  if (auto* hook = g_stepHook.load()) hook(step);
}

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

[[noreturn]] void RefuseKind(const std::string& path, mode_t mode) {
  throw FileError(path + ": is " + std::string(KindOf(mode)) + ", where a regular file is expected");
}

fs::path FolderOf(const fs::path& path) { return path.has_parent_path() ? path.parent_path() : fs::path("."); }

// The kernel's rule for links in shared folders: in a sticky world-writable folder only a link of the
// follower's own, or of the folder's owner, is followed.
bool MayFollow(const struct stat& link, const fs::path& folder) {
  struct stat dir {};
  if (::stat(folder.c_str(), &dir) != 0) return false;
  const bool shared = (dir.st_mode & S_ISVTX) != 0 && (dir.st_mode & S_IWOTH) != 0;
  return !shared || link.st_uid == ::geteuid() || link.st_uid == dir.st_uid;
}

// Temporaries of `target` are named ".<name>.tmp-<pid>-<n>" in its folder.
std::string TemporaryPrefix(const fs::path& target) {
  return "." + target.filename().string().substr(0, MAX_NAME_IN_TEMPORARY) + TEMPORARY_MARK;
}

struct CloseFd {
  int fd;
  ~CloseFd() {
    if (fd >= 0) ::close(fd);
  }
};

void WriteAll(int fd, std::string_view bytes, const std::string& path) {
  while (!bytes.empty()) {
    const ssize_t n = ::write(fd, bytes.data(), bytes.size());
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) Fail(path, "write", n < 0 ? errno : EIO);
    bytes.remove_prefix(static_cast<std::size_t>(n));
  }
}

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
  if (!S_ISREG(st.st_mode)) RefuseKind(path, st.st_mode);
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
    if (text.size() > maxBytes) throw FileError(path + ": more than the " + std::to_string(maxBytes) + " bytes allowed");
  }
  return text;
}

fs::path WriteTarget(const std::string& path) {
  fs::path target(path);
  for (int hop = 0; hop < MAX_LINK_HOPS; ++hop) {
    struct stat st {};
    if (::lstat(target.c_str(), &st) != 0) {
      if (errno == ENOENT) return target;
      Fail(path, "stat", errno);
    }
    if (!S_ISLNK(st.st_mode)) {
      if (!S_ISREG(st.st_mode)) RefuseKind(path, st.st_mode);
      return target;
    }
    const fs::path folder = FolderOf(target);
    if (!MayFollow(st, folder))
      throw FileError(path + ": a link owned by another user in a shared folder; not followed");
    std::error_code ec;
    const fs::path next = fs::read_symlink(target, ec);
    if (ec) Fail(path, "read link", ec.value());
    target = next.is_absolute() ? next : folder / next;
  }
  Fail(path, "follow links", ELOOP);
}

void RemoveStaleTemporaries(const fs::path& target) {
  const fs::path folder = FolderOf(target);
  const std::string prefix = TemporaryPrefix(target);
  std::unique_ptr<DIR, int (*)(DIR*)> dir(::opendir(folder.c_str()), ::closedir);
  if (!dir) return;
  while (const dirent* entry = ::readdir(dir.get())) {
    const std::string name = entry->d_name;
    if (name.compare(0, prefix.size(), prefix) != 0) continue;
    const pid_t pid = static_cast<pid_t>(std::atol(name.c_str() + prefix.size()));
    // Only a temporary of one's own whose writer is gone: a live writer may still rename it.
    struct stat st {};
    const fs::path temporary = folder / name;
    if (pid <= 0 || ::lstat(temporary.c_str(), &st) != 0 || st.st_uid != ::geteuid() || !S_ISREG(st.st_mode))
      continue;
    if (pid == ::getpid() || ::kill(pid, 0) == 0 || errno != ESRCH) continue;
    ::unlink(temporary.c_str());
  }
}

void WriteRegularFile(const std::string& path, std::string_view bytes, mode_t newFileMode) {
  static std::atomic<unsigned> counter{0};
  const fs::path target = WriteTarget(path);
  if (target.filename().empty()) throw FileError(path + ": no file name");
  const fs::path folder = FolderOf(target);
  RemoveStaleTemporaries(target);

  struct stat existing {};
  const bool exists = ::stat(target.c_str(), &existing) == 0;
  fs::path temporary;
  CloseFd file{-1};
  for (int attempt = 0; file.fd < 0; ++attempt) {
    temporary = folder / (TemporaryPrefix(target) + std::to_string(::getpid()) + "-" + std::to_string(counter++));
    file.fd = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, newFileMode);
    if (file.fd < 0 && (errno != EEXIST || attempt >= 100)) Fail(path, "create " + temporary.string(), errno);
  }
  try {
    Step("created");
    if (exists && ::fchmod(file.fd, existing.st_mode & 07777) != 0) Fail(path, "keep mode", errno);
    WriteAll(file.fd, bytes, path);
    Step("written");
    if (::fsync(file.fd) != 0) Fail(path, "sync", errno);
    Step("synced");
    const int closed = ::close(file.fd);
    file.fd = -1;
    if (closed != 0) Fail(path, "close", errno);
    if (::rename(temporary.c_str(), target.c_str()) != 0) Fail(path, "rename", errno);
  } catch (...) {
    ::unlink(temporary.c_str());
    throw;
  }
  Step("renamed");
  // The rename is durable only once the folder is: sync it (file systems that cannot are left as they are).
  CloseFd dir{::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)};
  if (dir.fd >= 0) (void)::fsync(dir.fd);
}

void SetWriteStepHook(void (*hook)(const char* step)) { g_stepHook = hook; }

}  // namespace cvn73100
