#pragma once
#include <fcntl.h>
#include <linux/fs.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

#include "platform/ScopeError.h"
#include "tests/support/Process.h"

namespace cvn73100::test {

inline std::string ReadAll(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

inline void WriteAll(const std::filesystem::path& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

// Sets or clears the immutable attribute; false when the file system or the process's rights do not allow it.
// Unlike permissions, the attribute also stops root, so a test can make a rename fail whoever runs it.
inline bool SetImmutable(const std::filesystem::path& path, bool immutable) {
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

// A private folder under the system's temporary directory, removed with everything in it when the object goes,
// whatever a test did to the rights or attributes of what is inside.
class TempDir {
 public:
  explicit TempDir(const std::string& prefix = "cvn-test") {
    std::string pattern = (std::filesystem::temp_directory_path() / (prefix + "-XXXXXX")).string();
    if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("mkdtemp failed for " + pattern);
    m_path = pattern;
  }
  ~TempDir() {
    namespace fs = std::filesystem;
    std::error_code ec;
    SetImmutable(m_path, false);
    for (auto it = fs::recursive_directory_iterator(m_path, fs::directory_options::skip_permission_denied, ec);
         it != fs::recursive_directory_iterator(); it.increment(ec)) {
      if (it->is_symlink(ec)) continue;
      SetImmutable(it->path(), false);
      if (it->is_directory(ec)) fs::permissions(it->path(), fs::perms::owner_all, fs::perm_options::add, ec);
    }
    fs::permissions(m_path, fs::perms::owner_all, fs::perm_options::add, ec);
    fs::remove_all(m_path, ec);
  }
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  const std::filesystem::path& path() const { return m_path; }
  std::string Path(const std::string& name) const { return (m_path / name).string(); }
  // Writes `bytes` to the file `name` in the folder and returns its path.
  std::string Make(const std::string& name, const std::string& bytes) const {
    WriteAll(m_path / name, bytes);
    return Path(name);
  }

 private:
  std::filesystem::path m_path;
};

// Points TMPDIR at a private folder for the life of the object, so that logs the control writes go there.
class ScopedTmpDir {
 public:
  explicit ScopedTmpDir(const std::string& prefix) : m_dir(prefix), m_env("TMPDIR", m_dir.path().string()) {}
  const TempDir& dir() const { return m_dir; }

 private:
  TempDir m_dir;
  ScopedEnv m_env;
};

// Runs `action` and returns the error it raises (number 0 when it raises none).
template <class F>
ScopeError ErrorOf(F&& action) {
  try {
    action();
  } catch (const ScopeError& error) {
    return error;
  }
  return ScopeError(0, "", "");
}

}  // namespace cvn73100::test
