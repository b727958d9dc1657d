#pragma once
#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <set>
#include <stdexcept>
#include <string>

#include "tests/support/Process.h"
#include "tests/support/TempDir.h"

// Process measurements and fault switches shared by the fault-injection and soak tests.
namespace cvn73100::hardening {

namespace fs = std::filesystem;
using test::OpenDescriptorCount;
using test::ReadAll;
using test::ScopedEnv;
using test::SetImmutable;
using test::TempDir;
using test::WriteAll;

// CPU time (user + system, every thread) this process has used, in milliseconds.
inline double ProcessCpuMs() {
  rusage usage{};
  ::getrusage(RUSAGE_SELF, &usage);
  auto ms = [](const timeval& t) {
    return static_cast<double>(t.tv_sec) * 1e3 + static_cast<double>(t.tv_usec) * 1e-3;
  };
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

// Names in `dir`, to see that a failed save leaves no temporary file behind.
inline std::set<std::string> Listing(const fs::path& dir) {
  std::set<std::string> names;
  for (const auto& entry : fs::directory_iterator(dir)) names.insert(entry.path().filename().string());
  return names;
}

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

}  // namespace cvn73100::hardening
