#pragma once
#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

extern char** environ;

namespace cvn73100::test {

// A new private folder under the system's temporary folder.
inline std::filesystem::path MakeTempDir(const std::string& prefix) {
  std::string pattern = (std::filesystem::temp_directory_path() / (prefix + ".XXXXXX")).string();
  EXPECT_NE(::mkdtemp(pattern.data()), nullptr) << pattern;
  return pattern;
}

struct RunResult {
  int status = -1;
  std::string out;
  std::string err;
  std::chrono::milliseconds sinceInterrupt{0};  // from SIGINT to the program's end
};

// A pseudo-terminal nobody answers on: a silent serial port.
class SilentPty {
 public:
  SilentPty() : m_master(::posix_openpt(O_RDWR | O_NOCTTY)) {
    EXPECT_GE(m_master, 0);
    ::grantpt(m_master);
    ::unlockpt(m_master);
  }
  ~SilentPty() { ::close(m_master); }
  SilentPty(const SilentPty&) = delete;
  SilentPty& operator=(const SilentPty&) = delete;
  std::string Path() const { return ::ptsname(m_master); }

 private:
  int m_master;
};

// Runs the built cvnscope in a private folder: its own form (XDG_CONFIG_HOME), temporary folder (TMPDIR, where
// the support log goes) and working directory, no io.conf, and the COM ports mapped to nothing unless a test maps
// one, so that a search never waits on the computer's own serial ports.
class CliTest : public ::testing::Test {
 protected:
  void SetUp() override {
    dir = MakeTempDir("cvnscope-cli");
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
      if (key.rfind("CVN73100_", 0) == 0 || key == "XDG_CONFIG_HOME" || key == "XDG_RUNTIME_DIR" || key == "TMPDIR" ||
          key == "HOME")
        continue;
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

    // The output goes to unnamed files, read once the program has ended.
    FILE* out = std::tmpfile();
    FILE* err = std::tmpfile();
    FILE* in = std::tmpfile();
    if (!out || !err || !in) return {};
    std::fwrite(input.data(), 1, input.size(), in);
    std::fflush(in);
    std::rewind(in);
    const pid_t pid = ::fork();
    if (pid == 0) {
      ::dup2(::fileno(in), STDIN_FILENO);
      ::dup2(::fileno(out), STDOUT_FILENO);
      ::dup2(::fileno(err), STDERR_FILENO);
      if (::chdir(workDir.c_str()) != 0) ::_exit(126);
      ::execve(argv[0], argv.data(), envp.data());
      ::_exit(127);
    }
    int status = 0;
    std::chrono::steady_clock::time_point interrupted;
    if (interruptAfter) {
      std::this_thread::sleep_for(*std::exchange(interruptAfter, std::nullopt));
      interrupted = std::chrono::steady_clock::now();
      ::kill(pid, SIGINT);
    }
    ::waitpid(pid, &status, 0);
    const auto since =
        std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - interrupted);
    std::fclose(in);
    if (!input.empty()) input.clear();
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, ReadAndClose(out), ReadAndClose(err), since};
  }

  static std::string ReadAndClose(FILE* file) {
    std::string text;
    std::rewind(file);
    char buffer[4096];
    for (std::size_t n; (n = std::fread(buffer, 1, sizeof buffer, file)) > 0;) text.append(buffer, n);
    std::fclose(file);
    return text;
  }

  std::filesystem::path dir;
  std::map<std::string, std::string> env;
  std::string input;                                        // standard input of the next Run
  std::optional<std::chrono::milliseconds> interruptAfter;  // Ctrl-C this long into the next Run
};

}  // namespace cvn73100::test
