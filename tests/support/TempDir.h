#pragma once
#include <stdlib.h>

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

// A private folder under the system's temporary directory, removed with everything in it when the object goes.
class TempDir {
 public:
  explicit TempDir(const std::string& prefix = "cvn-test") {
    std::string pattern = (std::filesystem::temp_directory_path() / (prefix + "-XXXXXX")).string();
    if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("mkdtemp failed for " + pattern);
    m_path = pattern;
  }
  ~TempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
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
