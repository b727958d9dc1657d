#pragma once
#include <dirent.h>
#include <stdlib.h>

#include <optional>
#include <string>

namespace cvn73100::test {

// Open file descriptors of this process.
inline int OpenDescriptorCount() {
  DIR* dir = ::opendir("/proc/self/fd");
  int count = 0;
  while (::readdir(dir) != nullptr) ++count;
  ::closedir(dir);
  return count;
}

// Sets (or, with nullopt, removes) an environment variable for the life of the object.
class ScopedEnv {
 public:
  ScopedEnv(std::string name, const std::optional<std::string>& value) : m_name(std::move(name)) {
    if (const char* old = std::getenv(m_name.c_str())) m_old = old;
    Set(value);
  }
  ~ScopedEnv() { Set(m_old); }
  ScopedEnv(const ScopedEnv&) = delete;
  ScopedEnv& operator=(const ScopedEnv&) = delete;

 private:
  void Set(const std::optional<std::string>& value) {
    value ? (void)::setenv(m_name.c_str(), value->c_str(), 1) : (void)::unsetenv(m_name.c_str());
  }
  std::string m_name;
  std::optional<std::string> m_old;
};

}  // namespace cvn73100::test
