// cvnscope doctor: checks what users trip over on a Linux machine and says how to put each right.
#include <dlfcn.h>
#include <fcntl.h>
#include <grp.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cstring>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <vector>

#include "cli/CliContext.h"
#include "cli/JsonText.h"
#include "iolib/BoardMap.h"

namespace cvn73100 {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;

struct Finding {
  std::string subject;
  bool ok;
  std::string detail;
  std::string fix;  // empty when ok
};

bool InGroup(gid_t group) {
  if (group == ::getegid()) return true;
  std::vector<gid_t> groups(static_cast<std::size_t>(std::max(::getgroups(0, nullptr), 0)));
  const int n = ::getgroups(static_cast<int>(groups.size()), groups.data());
  return std::find(groups.begin(), groups.begin() + std::max(n, 0), group) != groups.begin() + std::max(n, 0);
}

std::string GroupName(gid_t group) {
  const struct group* entry = ::getgrgid(group);
  return entry ? entry->gr_name : std::to_string(group);
}

// A device node the tools open for reading and writing.
Finding CheckNode(const std::string& subject, const std::string& node) {
  struct stat st {};
  if (::stat(node.c_str(), &st) != 0) {
    return {subject, false, node + ": " + std::strerror(errno),
            "connect the adapter, or point the port elsewhere in io.conf (cvnscope resources shows the map)"};
  }
  if (!S_ISCHR(st.st_mode)) return {subject, false, node + " is not a character device", "name the device node in io.conf"};
  if (::access(node.c_str(), R_OK | W_OK) == 0) return {subject, true, node + " can be opened", ""};
  const std::string group = GroupName(st.st_gid);
  if (!InGroup(st.st_gid)) {
    return {subject, false, node + " belongs to group " + group + ", which you are not in",
            "sudo usermod -aG " + group + " $USER, then log in again"};
  }
  return {subject, false, node + ": permission denied", "ask the administrator for read and write access to " + node};
}

std::vector<Finding> Examine(const CliContext& context) {
  std::vector<Finding> findings;
  const io::BoardMap map = io::BoardMap::Load();
  for (const std::string& problem : map.Problems()) {
    findings.push_back({"io.conf", false, problem, "correct " + map.ConfigPath() + " (see iolib/README.md)"});
  }
  if (map.Problems().empty()) {
    findings.push_back({"io.conf", true, map.ConfigFound() ? map.ConfigPath() + " read" : "none: built-in simulated bus", ""});
  }
  bool linuxGpib = false;
  for (int port = io::BoardMap::kFirstCom; port <= io::BoardMap::kLastCom; ++port) {
    const auto& com = map.Com(port);
    if (com.kind == io::BoardMap::ComKind::Node) findings.push_back(CheckNode("COM" + std::to_string(port), com.node));
  }
  for (int board = io::BoardMap::kFirstGpib; board <= io::BoardMap::kLastGpib; ++board) {
    const auto& gpib = map.Gpib(board);
    const std::string subject = "GPIB" + std::to_string(board);
    if (gpib.kind == io::BoardMap::GpibKind::PrologixSerial) findings.push_back(CheckNode(subject, gpib.node));
    if (gpib.kind == io::BoardMap::GpibKind::LinuxGpib) {
      linuxGpib = true;
      findings.push_back(CheckNode(subject, "/dev/gpib" + std::to_string(gpib.board)));
    }
  }
  if (linuxGpib) {
    void* library = ::dlopen(map.LibGpibPath().c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library) ::dlclose(library);
    findings.push_back({"linux-gpib", library != nullptr,
                        map.LibGpibPath() + (library ? " loads" : ": " + std::string(::dlerror())),
                        library ? "" : "install linux-gpib and configure its boards (gpib_config), or set libgpib in io.conf"});
  }
  // A lock left by a command that died is harmless (locks end with their process); one held is a command
  // still running, or hanging.
  const std::string lockPath = context.formPath + ".lock";
  if (const int fd = ::open(lockPath.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC); fd >= 0) {
    const bool held = ::flock(fd, LOCK_EX | LOCK_NB) != 0;
    ::close(fd);
    findings.push_back({"form", !held, held ? context.formPath + " is being changed by another command right now" : context.formPath + " is free",
                        held ? "wait for it, or end the command that hangs (it holds " + lockPath + ")" : ""});
  }
  return findings;
}

}  // namespace

void RegisterDoctorCommand(CLI::App& app, CliContext& context) {
  app.add_subcommand("doctor", "Check device nodes, permissions, linux-gpib, io.conf and the form, and say how to fix what is wrong")
      ->callback([&context] {
        const std::vector<Finding> findings = Examine(context);
        bool allOk = true;
        json rows = json::array();
        for (const Finding& f : findings) {
          allOk = allOk && f.ok;
          rows.push_back({{"subject", f.subject}, {"ok", f.ok}, {"detail", f.detail}, {"fix", f.fix}});
          if (context.json) continue;
          context.out << (f.ok ? "ok       " : "PROBLEM  ") << f.subject << ": " << f.detail << "\n";
          if (!f.ok) context.out << "         fix: " << f.fix << "\n";
        }
        if (context.json) context.out << json{{"findings", rows}, {"ok", allOk}}.dump(-1, ' ', false, kReplaceInvalidUtf8) << "\n";
        if (!allOk) context.exitStatus = ExitStatus::ERROR;
      });
}

}  // namespace cvn73100
