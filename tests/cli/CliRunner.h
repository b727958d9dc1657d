#pragma once
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <map>
#include <sstream>
#include <string>
#include <vector>

extern char** environ;

namespace cvn73100::test {

struct RunResult {
  int status = -1;
  std::string out;
  std::string err;
};

// Runs the built cvnscope in a private folder: its own form (XDG_CONFIG_HOME), temporary folder (TMPDIR, where
// the support log goes) and working directory, no io.conf, and the COM ports mapped to nothing unless a test maps
// one, so that a search never waits on the computer's own serial ports.
class CliTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = (std::filesystem::temp_directory_path() / "cvnscope-cli.XXXXXX").string();
    ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
    dir = pattern;
    for (int port = 1; port <= 4; ++port) env["CVN73100_COM" + std::to_string(port)] = "none";
  }
  void TearDown() override { std::filesystem::remove_all(dir); }

  std::filesystem::path FormPath() const { return dir / "config" / "cvn73100" / "form.json"; }

  static std::string ReadFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
  }

  RunResult Run(std::initializer_list<std::string> args) { return Run(std::vector<std::string>(args)); }

  RunResult Run(const std::vector<std::string>& args) {
    std::vector<std::string> envStrings;
    for (char** e = environ; *e; ++e) {
      const std::string entry = *e;
      const std::string key = entry.substr(0, entry.find('='));
      if (key.rfind("CVN73100_", 0) == 0 || key == "XDG_CONFIG_HOME" || key == "TMPDIR" || key == "HOME") continue;
      envStrings.push_back(entry);
    }
    envStrings.push_back("XDG_CONFIG_HOME=" + (dir / "config").string());
    envStrings.push_back("TMPDIR=" + dir.string());
    envStrings.push_back("HOME=" + dir.string());
    for (const auto& [key, value] : env) envStrings.push_back(key + "=" + value);

    std::vector<std::string> argStrings{CVNSCOPE_PATH};
    argStrings.insert(argStrings.end(), args.begin(), args.end());
    std::vector<char*> argv, envp;
    for (auto& a : argStrings) argv.push_back(a.data());
    argv.push_back(nullptr);
    for (auto& e : envStrings) envp.push_back(e.data());
    envp.push_back(nullptr);
    const std::string workDir = dir.string();

    int outPipe[2], errPipe[2];
    if (::pipe2(outPipe, O_CLOEXEC) != 0 || ::pipe2(errPipe, O_CLOEXEC) != 0) return {};
    const pid_t pid = ::fork();
    if (pid == 0) {
      const int devNull = ::open("/dev/null", O_RDONLY);
      ::dup2(devNull, STDIN_FILENO);
      ::dup2(outPipe[1], STDOUT_FILENO);
      ::dup2(errPipe[1], STDERR_FILENO);
      if (::chdir(workDir.c_str()) != 0) ::_exit(126);
      ::execve(argv[0], argv.data(), envp.data());
      ::_exit(127);
    }
    ::close(outPipe[1]);
    ::close(errPipe[1]);
    RunResult result;
    pollfd fds[2] = {{outPipe[0], POLLIN, 0}, {errPipe[0], POLLIN, 0}};
    std::string* sinks[2] = {&result.out, &result.err};
    int open = 2;
    while (open > 0) {
      if (::poll(fds, 2, 60000) <= 0) break;
      for (int i = 0; i < 2; ++i) {
        if (fds[i].fd < 0 || fds[i].revents == 0) continue;
        char buffer[4096];
        const ssize_t n = ::read(fds[i].fd, buffer, sizeof buffer);
        if (n > 0) {
          sinks[i]->append(buffer, static_cast<std::size_t>(n));
        } else {
          ::close(fds[i].fd);
          fds[i].fd = -1;
          --open;
        }
      }
    }
    for (auto& fd : fds)
      if (fd.fd >= 0) ::close(fd.fd);
    int status = 0;
    ::waitpid(pid, &status, 0);
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result;
  }

  std::filesystem::path dir;
  std::map<std::string, std::string> env;
};

}  // namespace cvn73100::test
