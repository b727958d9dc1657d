// Outside programs the network tests and benchmarks talk to: rpcbind, ser2net, the simulator, PyVISA-py.
// Each is started on loopback, waited for within a bound, and stopped by its process id.
#pragma once
#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

extern char** environ;

namespace cvn73100::network {

// Whether something holds 127.0.0.1:port (found by failing to bind it, so no server sees a connection).
inline bool Listening(int port) {
  const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  const bool taken = ::bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 && errno == EADDRINUSE;
  ::close(fd);
  return taken;
}

// A loopback port nobody listens on right now.
inline int FreePort() {
  const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof address;
  const bool bound = ::bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0 &&
                     ::getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length) == 0;
  ::close(fd);
  return bound ? ntohs(address.sin_port) : 0;
}

inline bool WaitUntil(const std::function<bool()>& ready, std::chrono::milliseconds limit) {
  const auto end = std::chrono::steady_clock::now() + limit;
  while (!ready()) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return true;
}

// A program started with its output going to `log`, stopped (SIGTERM, then waited for) when this goes.
class ChildProcess {
 public:
  ChildProcess(const std::vector<std::string>& argv, const std::string& log = "/dev/null") {
    std::vector<char*> args;
    args.reserve(argv.size() + 1);
    for (const auto& a : argv) args.push_back(const_cast<char*>(a.c_str()));
    args.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, log.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    posix_spawn_file_actions_adddup2(&actions, 1, 2);
    if (posix_spawn(&m_pid, args[0], &actions, nullptr, args.data(), environ) != 0) m_pid = -1;
    posix_spawn_file_actions_destroy(&actions);
  }
  ~ChildProcess() { Stop(); }
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  bool Started() const { return m_pid > 0; }
  void Stop() {
    if (m_pid <= 0) return;
    ::kill(m_pid, SIGTERM);
    ::waitpid(m_pid, nullptr, 0);
    m_pid = -1;
  }

 private:
  pid_t m_pid = -1;
};

inline bool Executable(const std::string& path) { return ::access(path.c_str(), X_OK) == 0; }

// The host's portmapper on port 111: the one running, or rpcbind started here (which needs root). False when
// there is none and none can be started.
class Portmapper {
 public:
  bool Available() {
    if (Listening(111)) return true;
    if (::geteuid() != 0 || !Executable("/usr/sbin/rpcbind")) return false;
    m_rpcbind = std::make_unique<ChildProcess>(std::vector<std::string>{"/usr/sbin/rpcbind", "-f", "-w"});
    return WaitUntil([] { return Listening(111); }, std::chrono::seconds(5));
  }

 private:
  std::unique_ptr<ChildProcess> m_rpcbind;
};

// ser2net serving `device` (9600 8N1, no modem lines) with RFC 2217 on one port and raw TCP on another.
class Ser2net {
 public:
  static bool Installed() { return Executable("/usr/sbin/ser2net"); }

  Ser2net(const std::string& device, const std::string& directory) : rfc2217Port(FreePort()), rawPort(FreePort()) {
    const std::string config = directory + "/ser2net.yaml";
    std::ofstream(config) << Connection("rfc", "telnet(rfc2217),tcp,127.0.0.1," + std::to_string(rfc2217Port), device)
                          << Connection("raw", "tcp,127.0.0.1," + std::to_string(rawPort), device);
    m_process = std::make_unique<ChildProcess>(
        std::vector<std::string>{"/usr/sbin/ser2net", "-n", "-d", "-u", "-c", config}, directory + "/ser2net.log");
    const int rfc = rfc2217Port, raw = rawPort;
    ready = WaitUntil([rfc, raw] { return Listening(rfc) && Listening(raw); }, std::chrono::seconds(5));
  }

  int rfc2217Port;
  int rawPort;
  bool ready = false;

 private:
  static std::string Connection(const std::string& name, const std::string& accepter, const std::string& device) {
    return "connection: &" + name + "\n  accepter: " + accepter + "\n  connector: serialdev," + device +
           ",9600n81,local\n  options:\n    kickolduser: true\n";
  }
  std::unique_ptr<ChildProcess> m_process;
};

}  // namespace cvn73100::network
