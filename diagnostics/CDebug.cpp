#include "diagnostics/CDebug.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>

#include "platform/Host.h"
#include "platform/Os.h"
#include "platform/ScopeError.h"

namespace cvn73100 {
namespace {

constexpr const char* CRLF = "\r\n";
constexpr std::int32_t PATH_FILE_ACCESS_ERROR = 75;
// The temporary path is read into a 255-character buffer; a longer path leaves the directory empty.
constexpr std::size_t TEMP_PATH_BUFFER = 255;

std::shared_ptr<CDebug>& InstanceSlot() {
  static std::shared_ptr<CDebug> instance;
  return instance;
}

ScopeError FileError(const std::string& path, const std::string& why) {
  return ScopeError(PATH_FILE_ACCESS_ERROR, "CDebug", "Path/File access error: " + path + ": " + why);
}

// Opens the log for writing without following a symbolic link planted at its path, and only if it is
// a regular file: the temporary directory is shared with other users.
int OpenLog(const std::string& path, int extraFlags) {
  const int fd = ::open(path.c_str(), O_WRONLY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK | extraFlags, 0600);
  if (fd < 0) {
    if (errno == ELOOP) throw FileError(path, "refusing to write through a symbolic link");
    throw FileError(path, std::strerror(errno));
  }
  struct stat st {};
  if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
    ::close(fd);
    throw FileError(path, "not a regular file");
  }
  return fd;
}

void WriteAll(int fd, const std::string& text, const std::string& path) {
  std::size_t done = 0;
  while (done < text.size()) {
    const ssize_t n = ::write(fd, text.data() + done, text.size() - done);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) {
      const std::string why = std::strerror(errno);
      ::close(fd);
      throw FileError(path, why);
    }
    done += static_cast<std::size_t>(n);
  }
}

std::string Hex(std::int32_t code) {
  char buffer[16];
  std::snprintf(buffer, sizeof buffer, "%X", static_cast<unsigned>(code));
  return buffer;
}

// Short time and date forms: 24-hour time and the ISO date, the same on every host locale.
std::string Now() {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  char buffer[64];
  std::strftime(buffer, sizeof buffer, "%H:%M:%S %Y-%m-%d", &local);
  return buffer;
}

}  // namespace

std::string CDebug::FormatMessageBlock(std::int32_t code, const std::string& text, const std::string& className,
                                       const std::string& procedure, const std::string& location) {
  std::string block = "Error Code: " + std::to_string(code) + " 0x" + Hex(code) + CRLF;
  if (!text.empty()) block += text + CRLF;
  block += "At: " + Now() + CRLF;
  if (!className.empty()) block += "File: " + className + CRLF;
  if (!procedure.empty()) block += "Function: " + procedure + CRLF;
  if (!location.empty()) block += "Location: " + location + CRLF;
  block += CRLF;
  return block;
}

std::string CDebug::FormatTraceLine(const std::string& text, const std::string& className, const std::string& procedure,
                                    const std::string& location) {
  std::string line = text.empty() ? "Trace:" : "Trace: " + text;
  if (!className.empty() || !procedure.empty() || !location.empty()) {
    line += " -- At: ";
    if (!className.empty()) line += "File: " + className + "; ";
    if (!procedure.empty()) line += "Function: " + procedure + "; ";
    if (!location.empty()) line += "Location: " + location;
  }
  return line + CRLF;
}

void CDebug::Assert(bool condition, const std::string& expression, const std::string& className,
                    const std::string& procedure, const std::string& location) {
  if (condition || !AnyOutput()) return;
  const std::string text = expression.empty() ? std::string() : "Assertion: " + expression;
  Deliver(FormatMessageBlock(ASSERTION_CODE, text, className, procedure, location));
}

void CDebug::Message(std::int32_t code, const std::string& text, const std::string& className,
                     const std::string& procedure, const std::string& location) {
  if (!AnyOutput()) return;
  Deliver(FormatMessageBlock(code, text, className, procedure, location));
}

void CDebug::Trace(const std::string& text, const std::string& className, const std::string& procedure,
                   const std::string& location) {
  if (!m_bLogEnabled) return;
  // The line carries its own CR LF and is then written like a block, which adds a line end.
  AppendToLog(FormatTraceLine(text, className, procedure, location) + CRLF);
}

std::int32_t CDebug::CalculateMode() const {
  std::int32_t mode = 0;
  if (m_bEventEnabled) mode += MODE_EVENT;
  if (m_bMessageBoxEnabled) mode += MODE_MESSAGE_BOX;
  if (m_bLogEnabled) mode += MODE_LOG;
  if (m_bAssertEnabled) mode += MODE_ASSERT;
  return mode;
}

void CDebug::SetMode(std::int32_t mode) {
  if (mode == CalculateMode()) return;
  m_bMessageBoxEnabled = (mode & MODE_MESSAGE_BOX) != 0;
  m_bEventEnabled = (mode & MODE_EVENT) != 0;
  m_bLogEnabled = (mode & MODE_LOG) != 0;
  m_bAssertEnabled = (mode & MODE_ASSERT) != 0;
  if (m_bLogEnabled) StartLogFile();
  PropertyChanged.Raise("DebugMode");
}

void CDebug::ReadProperties(const PropertyBag& bag) {
  m_bEventEnabled = bag.ReadBoolean("DebugEnableEvent", false);
  m_bMessageBoxEnabled = bag.ReadBoolean("DebugEnableMessageBox", false);
  m_bLogEnabled = bag.ReadBoolean("DebugEnableMessageLog", false);
  m_bAssertEnabled = bag.ReadBoolean("DebugAssert", false);
  if (m_bLogEnabled) StartLogFile();
}

void CDebug::WriteProperties(PropertyBag& bag) const {
  bag.WriteProperty("DebugEnableEvent", m_bEventEnabled, false);
  bag.WriteProperty("DebugEnableMessageBox", m_bMessageBoxEnabled, false);
  bag.WriteProperty("DebugEnableMessageLog", m_bLogEnabled, false);
  bag.WriteProperty("DebugAssert", m_bAssertEnabled, false);
}

void CDebug::Deliver(const std::string& block) {
  if (m_bEventEnabled) SupportMessage.Raise(block);
  if (m_bLogEnabled) AppendToLog(block + CRLF);
  if (m_bMessageBoxEnabled) {
    Host::Current().MsgBox(0, block, MsgBoxStyle::OKOnly | MsgBoxStyle::Information | MsgBoxStyle::SetForeground,
                           MESSAGE_BOX_TITLE);
  }
}

void CDebug::StartLogFile() {
  std::string directory = Os::Current().TempPath();
  if (directory.size() >= TEMP_PATH_BUFFER - 1) directory.clear();
  m_logPath = directory + LOG_FILE_NAME;
  const int fd = OpenLog(m_logPath, O_CREAT | O_TRUNC);
  ::fchmod(fd, 0600);
  ::close(fd);
}

void CDebug::AppendToLog(const std::string& text) {
  if (m_logPath.empty()) StartLogFile();
  const int fd = OpenLog(m_logPath, O_APPEND | O_CREAT);
  WriteAll(fd, text, m_logPath);
  ::close(fd);
}

CDebug& CDebug::Instance() {
  auto& slot = InstanceSlot();
  if (!slot) slot = std::make_shared<CDebug>();
  return *slot;
}

void CDebug::SetInstance(std::shared_ptr<CDebug> instance) { InstanceSlot() = std::move(instance); }

}  // namespace cvn73100
