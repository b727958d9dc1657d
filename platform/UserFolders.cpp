#include "platform/UserFolders.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <vector>

namespace cvn73100 {

std::string HomeFolder() {
  if (const char* home = std::getenv("HOME"); home && *home) return home;
  long size = ::sysconf(_SC_GETPW_R_SIZE_MAX);
  std::vector<char> buffer(static_cast<std::size_t>(size > 0 ? size : 16384));
  passwd entry{};
  passwd* found = nullptr;
  if (::getpwuid_r(::geteuid(), &entry, buffer.data(), buffer.size(), &found) != 0 || !found || !found->pw_dir) {
    return "";
  }
  return found->pw_dir;
}

std::string ConfigFolder() {
  if (const char* xdg = std::getenv("XDG_CONFIG_HOME"); xdg && *xdg) return xdg;
  const std::string home = HomeFolder();
  return home.empty() ? "" : home + "/.config";
}

}  // namespace cvn73100
