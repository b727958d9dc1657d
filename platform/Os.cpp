#include "platform/Os.h"

#include <iconv.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <thread>

namespace cvn73100 {
namespace {

Os* g_current = nullptr;

}  // namespace

Os& Os::Current() {
  static RealOs real;
  return g_current ? *g_current : real;
}

void Os::SetCurrent(Os* os) { g_current = os; }

std::int32_t RealOs::GetTickCount() {
  const auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(
                      std::chrono::steady_clock::now().time_since_epoch())
                      .count();
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(ms));
}

void RealOs::Sleep(std::int32_t milliseconds) {
  if (milliseconds > 0) std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

std::string RealOs::TempPath() {
  std::string dir = "/tmp";
  if (const char* env = std::getenv("TMPDIR"); env && *env) dir = env;
  if (dir.back() != '/') dir += '/';
  return dir;
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
