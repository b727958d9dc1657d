// cvnscope-gui stopped by its session (SIGTERM) or by Ctrl-C (SIGINT) saves its form and exits normally.
#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>

#include "tests/hardening/Hardening.h"

extern char** environ;

namespace cvn73100 {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

// True once `pid` catches `signal`: its handler is installed.
bool Catches(pid_t pid, int signal) {
  std::ifstream status("/proc/" + std::to_string(pid) + "/status");
  for (std::string line; std::getline(status, line);) {
    if (line.rfind("SigCgt:", 0) == 0) return (std::stoull(line.substr(7), nullptr, 16) >> (signal - 1)) & 1;
  }
  return false;
}

// Waits up to `limit` for `pid` to end; -1 when it did not.
int WaitFor(pid_t pid, std::chrono::milliseconds limit) {
  const auto end = std::chrono::steady_clock::now() + limit;
  int status = 0;
  while (std::chrono::steady_clock::now() < end) {
    if (::waitpid(pid, &status, WNOHANG) == pid) return status;
    std::this_thread::sleep_for(10ms);
  }
  ::kill(pid, SIGKILL);
  ::waitpid(pid, &status, 0);
  return -1;
}

class GuiSignals : public ::testing::TestWithParam<int> {};

TEST_P(GuiSignals, TheFormIsSavedAndTheProgramExitsNormally) {
  hardening::TempDir dir;
  const std::string form = (dir.path() / "form.json").string();
  ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
  ::setenv("XDG_CONFIG_HOME", dir.path().c_str(), 1);
  const char* argv[] = {CVNSCOPE_GUI_PATH, "--form", form.c_str(), nullptr};
  pid_t pid = 0;
  ASSERT_EQ(::posix_spawn(&pid, CVNSCOPE_GUI_PATH, nullptr, nullptr, const_cast<char**>(argv), environ), 0);
  const auto ready = std::chrono::steady_clock::now() + 20s;
  while (!Catches(pid, GetParam()) && std::chrono::steady_clock::now() < ready) std::this_thread::sleep_for(10ms);
  ASSERT_TRUE(Catches(pid, GetParam())) << "the program never came up";

  ASSERT_EQ(::kill(pid, GetParam()), 0);
  const int status = WaitFor(pid, 10s);
  ASSERT_NE(status, -1) << "still running 10 s after the signal";
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "status " << status;
  std::ifstream saved(form);
  std::stringstream text;
  text << saved.rdbuf();
  EXPECT_NE(text.str().find("\"cvn73100-form\""), std::string::npos) << text.str();
}

INSTANTIATE_TEST_SUITE_P(Hardening, GuiSignals, ::testing::Values(SIGTERM, SIGINT));

}  // namespace
}  // namespace cvn73100
