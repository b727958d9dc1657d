#include "platform/Os.h"

#include <iconv.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "platform/Interrupt.h"
#include "platform/ScopeError.h"

namespace cvn73100 {
namespace {

Os* g_current = nullptr;
constexpr std::int32_t PATH_FILE_ACCESS_ERROR = 75;

constexpr std::int64_t NS_PER_MS = 1'000'000;
constexpr std::int64_t NS_PER_S = 1'000'000'000;
constexpr std::int64_t FINAL_POLL_NS = 200'000;

// The tick counter's clock: CLOCK_MONOTONIC, whose whole milliseconds are the ticks, so that the start of a tick
// is an instant an absolute sleep can aim at.
std::int64_t MonotonicNs() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<std::int64_t>(now.tv_sec) * NS_PER_S + now.tv_nsec;
}

}  // namespace

Os& Os::Current() {
  static RealOs real;
  return g_current ? *g_current : real;
}

void Os::SetCurrent(Os* os) { g_current = os; }

std::int32_t RealOs::GetTickCount() {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(MonotonicNs() / NS_PER_MS));
}

void RealOs::SleepUntilTick(std::int32_t tick) {
  const std::int64_t nowNs = MonotonicNs();
  const std::int64_t nowMs = nowNs / NS_PER_MS;
  const auto ahead = static_cast<std::int32_t>(static_cast<std::uint32_t>(tick) - static_cast<std::uint32_t>(nowMs));
  if (ahead <= 0) return;
  const std::int64_t tickNs = (nowMs + ahead) * NS_PER_MS;
  // The kernel wakes a sleeper tens of microseconds late (more with the thread's timer slack): sleep to just
  // before the tick and read the clock for the rest, so that the wait ends on the tick itself.
  const std::int64_t wakeNs = tickNs - FINAL_POLL_NS;
  const std::int64_t sliceNs = std::chrono::nanoseconds(Interrupt::kPollInterval).count();
  for (std::int64_t now = nowNs; now < wakeNs; now = MonotonicNs()) {
    Interrupt::Check();
    const std::int64_t untilNs = Interrupt::Installed() ? std::min(wakeNs, now + sliceNs) : wakeNs;
    const timespec wake{static_cast<time_t>(untilNs / NS_PER_S), static_cast<long>(untilNs % NS_PER_S)};
    clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &wake, nullptr);
  }
  while (MonotonicNs() < tickNs) {
  }
}

namespace {

// A folder that only this user can enter: a real directory (not a link), owned by the user, with no
// rights for group or others. Shared temporary folders hold other users' files and links.
bool IsPrivateFolder(const std::string& path) {
  struct stat st {};
  return ::lstat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode) && st.st_uid == ::geteuid() && (st.st_mode & 077) == 0;
}

std::string WithSlash(std::string dir) {
  if (dir.empty() || dir.back() != '/') dir += '/';
  return dir;
}

}  // namespace

std::string RealOs::TempPath() {
  if (const char* runtime = std::getenv("XDG_RUNTIME_DIR"); runtime && *runtime && IsPrivateFolder(runtime)) {
    return WithSlash(runtime);
  }
  std::string shared = "/tmp";
  if (const char* env = std::getenv("TMPDIR"); env && *env) shared = env;
  const std::string own = WithSlash(shared) + "cvn73100-" + std::to_string(::geteuid());
  if (::mkdir(own.c_str(), 0700) != 0 && errno != EEXIST) {
    throw ScopeError(PATH_FILE_ACCESS_ERROR, "Os", "Path/File access error: " + own + ": " + std::strerror(errno));
  }
  if (!IsPrivateFolder(own)) {
    throw ScopeError(PATH_FILE_ACCESS_ERROR, "Os",
                     "Path/File access error: " + own + ": not a folder of this user's own with mode 0700");
  }
  return own + "/";
}

bool RealOs::CodePageIsDoubleByte(int codePage) {
  // A code page is usable when the C library can convert to it; the Asian ones are multi-byte.
  const std::string name = "CP" + std::to_string(codePage);
  iconv_t cd = iconv_open(name.c_str(), "UTF-8");
  if (cd == reinterpret_cast<iconv_t>(-1)) return false;
  // U+4E00 takes two bytes in every double-byte Asian code page.
  char in[] = "\xE4\xB8\x80";
  char out[8];
  char* inPtr = in;
  char* outPtr = out;
  std::size_t inLeft = 3, outLeft = sizeof out;
  const bool converted = iconv(cd, &inPtr, &inLeft, &outPtr, &outLeft) != static_cast<std::size_t>(-1);
  iconv_close(cd);
  return converted && (sizeof out - outLeft) > 1;
}

std::string RealOs::ProgramFolder() {
  std::error_code ec;
  auto exe = std::filesystem::read_symlink("/proc/self/exe", ec);
  if (ec) return "./";
  std::string folder = exe.parent_path().string();
  return folder.empty() || folder.back() == '/' ? folder : folder + '/';
}

}  // namespace cvn73100
