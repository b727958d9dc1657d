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
#include "cli/CliText.h"
#include "cli/JsonText.h"
#include "cli/TextWidth.h"
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
            CliText(CliMsg::DOCTOR_FIX_CONNECT)};
  }
  if (!S_ISCHR(st.st_mode))
    return {subject, false, CliText(CliMsg::DOCTOR_NOT_CHAR_DEVICE, {node}), CliText(CliMsg::DOCTOR_FIX_NAME_NODE)};
  if (::access(node.c_str(), R_OK | W_OK) == 0) return {subject, true, CliText(CliMsg::DOCTOR_NODE_OPENS, {node}), ""};
  const std::string group = GroupName(st.st_gid);
  if (!InGroup(st.st_gid)) {
    return {subject, false, CliText(CliMsg::DOCTOR_NOT_IN_GROUP, {node, group}),
            CliText(CliMsg::DOCTOR_FIX_JOIN_GROUP, {group})};
  }
  return {subject, false, CliText(CliMsg::DOCTOR_PERMISSION_DENIED, {node}), CliText(CliMsg::DOCTOR_FIX_ASK_ADMIN, {node})};
}

std::vector<Finding> Examine(const CliContext& context) {
  std::vector<Finding> findings;
  const io::BoardMap map = io::BoardMap::Load();
  for (const std::string& problem : map.Problems()) {
    findings.push_back({"io.conf", false, problem, CliText(CliMsg::DOCTOR_FIX_IO_CONF, {map.ConfigPath()})});
  }
  if (map.Problems().empty()) {
    findings.push_back({"io.conf", true,
                        map.ConfigFound() ? CliText(CliMsg::DOCTOR_IO_CONF_READ, {map.ConfigPath()})
                                          : CliText(CliMsg::DOCTOR_IO_CONF_NONE),
                        ""});
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
                        library ? CliText(CliMsg::DOCTOR_LIBRARY_LOADS, {map.LibGpibPath()})
                                : map.LibGpibPath() + ": " + ::dlerror(),
                        library ? "" : CliText(CliMsg::DOCTOR_FIX_LIBGPIB)});
  }
  // A lock left by a command that died is harmless (locks end with their process); one held is a command
  // still running, or hanging.
  const std::string lockPath = context.formPath + ".lock";
  if (const int fd = ::open(lockPath.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC); fd >= 0) {
    const bool held = ::flock(fd, LOCK_EX | LOCK_NB) != 0;
    ::close(fd);
    findings.push_back({"form", !held,
                        CliText(held ? CliMsg::DOCTOR_FORM_BUSY : CliMsg::DOCTOR_FORM_FREE, {context.formPath}),
                        held ? CliText(CliMsg::DOCTOR_FIX_FORM_BUSY, {lockPath}) : ""});
  }
  return findings;
}

}  // namespace

void RegisterDoctorCommand(CLI::App& app, CliContext& context) {
  app.add_subcommand("doctor", CliText(CliMsg::DOCTOR_COMMAND))
      ->callback([&context] {
        const std::vector<Finding> findings = Examine(context);
        // The verdicts make a column as wide as the wider of them; the fix lines start under the subjects.
        const std::string ok = CliText(CliMsg::DOCTOR_OK);
        const std::string problem = CliText(CliMsg::DOCTOR_PROBLEM);
        const std::size_t column = std::max(DisplayWidth(ok), DisplayWidth(problem)) + 2;
        bool allOk = true;
        json rows = json::array();
        for (const Finding& f : findings) {
          allOk = allOk && f.ok;
          rows.push_back({{"subject", f.subject}, {"ok", f.ok}, {"detail", f.detail}, {"fix", f.fix}});
          if (context.json) continue;
          const std::string subject = f.subject == "form" ? CliText(CliMsg::DOCTOR_FORM_SUBJECT) : f.subject;
          context.out << PadToWidth(f.ok ? ok : problem, column) << subject << ": " << f.detail << "\n";
          if (!f.ok) context.out << std::string(column, ' ') << CliText(CliMsg::DOCTOR_FIX, {f.fix}) << "\n";
        }
        if (context.json) context.out << json{{"findings", rows}, {"ok", allOk}}.dump(-1, ' ', false, kReplaceInvalidUtf8) << "\n";
        if (!allOk) context.exitStatus = ExitStatus::ERROR;
      });
}

}  // namespace cvn73100
