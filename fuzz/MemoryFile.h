#pragma once
#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace cvn73100::fuzz {

// A file in memory with a path the file readers can open like any other, so that millions of inputs cost
// no disk writes. One per process, rewritten for every input.
class MemoryFile {
 public:
  MemoryFile() : m_fd(::memfd_create("cvn-fuzz", MFD_CLOEXEC)) {
    if (m_fd < 0) std::abort();
    m_path = "/proc/self/fd/" + std::to_string(m_fd);
  }
  ~MemoryFile() { ::close(m_fd); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  // Replaces the contents; returns the path.
  const std::string& Hold(const std::uint8_t* data, std::size_t size) {
    if (::ftruncate(m_fd, 0) != 0) std::abort();
    std::size_t done = 0;
    while (done < size) {
      const ssize_t n = ::pwrite(m_fd, data + done, size - done, static_cast<off_t>(done));
      if (n <= 0) std::abort();
      done += static_cast<std::size_t>(n);
    }
    return m_path;
  }

 private:
  int m_fd;
  std::string m_path;
};

}  // namespace cvn73100::fuzz
