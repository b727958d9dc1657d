#pragma once
#include <dirent.h>
#include <fcntl.h>
#include <linux/fs.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>

// Process measurements and fault switches shared by the fault-injection and soak tests.
namespace cvn73100::hardening {

namespace fs = std::filesystem;

// CPU time (user + system, every thread) this process has used, in milliseconds.
inline double ProcessCpuMs() {
  rusage usage{};
  ::getrusage(RUSAGE_SELF, &usage);
  auto ms = [](const timeval& t) { return static_cast<double>(t.tv_sec) * 1e3 + static_cast<double>(t.tv_usec) * 1e-3; };
  return ms(usage.ru_utime) + ms(usage.ru_stime);
}

// Resident memory now, in bytes.
inline std::size_t ResidentBytes() {
  std::ifstream statm("/proc/self/statm");
  std::size_t size = 0, resident = 0;
  statm >> size >> resident;
  return resident * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
}

// Highest resident memory the process has had, in bytes.
inline std::size_t PeakResidentBytes() {
  rusage usage{};
  ::getrusage(RUSAGE_SELF, &usage);
  return static_cast<std::size_t>(usage.ru_maxrss) * 1024;
}

inline int OpenDescriptors() {
  DIR* dir = ::opendir("/proc/self/fd");
  if (dir == nullptr) return -1;
  int count = 0;
  while (const dirent* entry = ::readdir(dir)) {
    if (entry->d_name[0] != '.') ++count;
  }
  ::closedir(dir);
  return count - 1;  // the directory stream's own descriptor
}

inline std::string ReadWholeFile(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string((std::istreambuf_iterator<char>(in)), {});
}

inline void WriteWholeFile(const fs::path& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
}

// Names in `dir`, to see that a failed save leaves no temporary file behind.
inline std::set<std::string> Listing(const fs::path& dir) {
  std::set<std::string> names;
  for (const auto& entry : fs::directory_iterator(dir)) names.insert(entry.path().filename().string());
  return names;
}

// Sets or clears the immutable attribute; false when the file system or the process's rights do not allow it.
// Unlike permissions, the attribute also stops root, so the tests can make a rename fail whoever runs them.
inline bool SetImmutable(const fs::path& path, bool immutable) {
  const int fd = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  if (fd < 0) return false;
  int flags = 0;
  bool done = ::ioctl(fd, FS_IOC_GETFLAGS, &flags) == 0;
  if (done) {
    flags = immutable ? (flags | FS_IMMUTABLE_FL) : (flags & ~FS_IMMUTABLE_FL);
    done = ::ioctl(fd, FS_IOC_SETFLAGS, &flags) == 0;
  }
  ::close(fd);
  return done;
}

// A fresh directory under the system's temporary directory, removed with everything in it.
class TempDir {
 public:
  TempDir() {
    std::string pattern = (fs::temp_directory_path() / "cvnhardening.XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
    m_path = pattern;
  }
  ~TempDir() {
    std::error_code ec;
    for (const auto& entry : fs::recursive_directory_iterator(m_path, ec)) SetImmutable(entry.path(), false);
    SetImmutable(m_path, false);
    fs::permissions(m_path, fs::perms::owner_all, fs::perm_options::add, ec);
    fs::remove_all(m_path, ec);
  }
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;
  const fs::path& Path() const { return m_path; }

 private:
  fs::path m_path;
};

// Caps the size of every file this process writes (RLIMIT_FSIZE) while it lives: a write that would pass
// `bytes` fails with EFBIG, as on a full disk, at exactly that offset. SIGXFSZ is ignored meanwhile so the
// failure reaches the code as an error instead of ending the process.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) {
    ::getrlimit(RLIMIT_FSIZE, &m_old);
    m_oldHandler = ::signal(SIGXFSZ, SIG_IGN);
    rlimit limit = m_old;
    limit.rlim_cur = bytes;
    if (::setrlimit(RLIMIT_FSIZE, &limit) != 0) throw std::runtime_error("setrlimit failed");
  }
  ~FileSizeLimit() {
    ::setrlimit(RLIMIT_FSIZE, &m_old);
    ::signal(SIGXFSZ, m_oldHandler);
  }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;

 private:
  rlimit m_old{};
  sighandler_t m_oldHandler = SIG_DFL;
};

// Sets (or, with nullopt, removes) an environment variable for the life of the object.
class ScopedEnv {
 public:
  ScopedEnv(std::string name, const std::optional<std::string>& value) : m_name(std::move(name)) {
    if (const char* old = std::getenv(m_name.c_str())) m_old = old;
    if (value) {
      ::setenv(m_name.c_str(), value->c_str(), 1);
    } else {
      ::unsetenv(m_name.c_str());
    }
  }
  ~ScopedEnv() {
    if (m_old) {
      ::setenv(m_name.c_str(), m_old->c_str(), 1);
    } else {
      ::unsetenv(m_name.c_str());
    }
  }
  ScopedEnv(const ScopedEnv&) = delete;
  ScopedEnv& operator=(const ScopedEnv&) = delete;

 private:
  std::string m_name;
  std::optional<std::string> m_old;
};

}  // namespace cvn73100::hardening
