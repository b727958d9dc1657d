#include "diagnostics/CDebug.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "platform/Host.h"
#include "platform/Os.h"
#include "platform/PropertyBag.h"
#include "platform/ScopeError.h"
#include "tests/support/ScriptedHost.h"
#include "tests/support/TempDir.h"

namespace cvn73100 {
namespace {

namespace fs = std::filesystem;

using test::ReadAll;
using test::WriteAll;

// The "At:" line carries the clock; tests compare everything else byte for byte.
std::string MaskTime(std::string text) {
  for (std::size_t at = text.find("At: "); at != std::string::npos; at = text.find("At: ", at + 1)) {
    if (at != 0 && text[at - 1] != '\n') continue;  // "-- At: " of a trace line is no time line
    const std::size_t end = text.find("\r\n", at);
    if (end == std::string::npos) break;
    EXPECT_GT(end, at + 4) << "empty time in " << text;
    text.replace(at + 4, end - (at + 4), "<time>");
  }
  return text;
}

// A private temporary directory for the log, a recording host, and one fresh CDebug per test.
class CDebugTest : public ::testing::Test {
 protected:
  void SetUp() override {
    m_os.SetTempPath(m_dir.string() + "/");
    m_debug.SupportMessage.Connect([this](const std::string& block) {
      m_events.push_back(block);
      if (m_onEvent) m_onEvent();
    });
    m_debug.PropertyChanged.Connect([this](const std::string& name) { m_changes.push_back(name); });
  }

  fs::path LogFile() const { return m_dir / "CvnScope.DBG"; }
  std::string Log() const { return ReadAll(LogFile()); }

  test::TempDir m_temp{"cvn-cdebug"};
  const fs::path& m_dir = m_temp.path();
  FakeOs m_os;
  ScopedOs m_scopedOs{m_os};
  test::ScriptedHost m_host;
  test::ScopedHost m_scopedHost{m_host};
  CDebug m_debug;
  std::vector<std::string> m_events;
  std::vector<std::string> m_changes;
  std::function<void()> m_onEvent;
};

const std::string ASSERT_BLOCK =
    "Error Code: -2147221453 0x80040033\r\n"
    "Assertion: false\r\n"
    "At: <time>\r\n"
    "File: CCvn73100EZ\r\n"
    "Function: Let TXDelay\r\n"
    "Location: Else\r\n"
    "\r\n";

struct ModeCase {
  std::int32_t set;
  std::int32_t mode;
};

TEST_F(CDebugTest, ModeKeepsOnlyTheFourSwitchBits) {
  const ModeCase cases[] = {{0, 0},   {1, 1},  {2, 2},  {4, 4},   {8, 8},   {5, 5},
                            {15, 15}, {16, 0}, {17, 1}, {31, 15}, {-1, 15}, {0x7FFFFFF0, 0}};
  for (const ModeCase& c : cases) {
    SCOPED_TRACE(c.set);
    CDebug debug;
    std::vector<std::string> changes;
    debug.PropertyChanged.Connect([&](const std::string& name) { changes.push_back(name); });
    debug.SetMode(c.set);
    EXPECT_EQ(debug.Mode(), c.mode);
    EXPECT_EQ(debug.CalculateMode(), c.mode);
    // Only a value equal to the current mode (0) is a no-op; 16 is not, although it ends at 0 again.
    EXPECT_EQ(changes, c.set == 0 ? std::vector<std::string>{} : std::vector<std::string>{"DebugMode"});
  }
}

TEST_F(CDebugTest, EachOutputOnlyWhenItsSwitchIsOn) {
  struct Case {
    const char* name;
    std::int32_t mode;
    bool event, box, log;
  };
  const Case cases[] = {
      {"all off", 0, false, false, false},
      {"assert switch alone", CDebug::MODE_ASSERT, false, false, false},
      {"16 switches everything off", 16, false, false, false},
      {"event", CDebug::MODE_EVENT, true, false, false},
      {"box", CDebug::MODE_MESSAGE_BOX, false, true, false},
      {"log", CDebug::MODE_LOG, false, false, true},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    m_events.clear();
    m_host.boxes.clear();
    fs::remove(LogFile());
    m_debug.SetMode(15);  // on and off again: 16 must really switch off what was on
    m_debug.SetMode(c.mode);
    m_debug.Assert(false, "false", "C", "P", "L");
    m_debug.Message(1, "text", "C", "P", "L");
    EXPECT_EQ(m_events.size(), c.event ? 2u : 0u);
    EXPECT_EQ(m_host.boxes.size(), c.box ? 2u : 0u);
    EXPECT_EQ(Log().empty(), !c.log);
  }
}

TEST_F(CDebugTest, SettingTheLogOnAgainStartsAFreshFileOnlyAfterItWasOff) {
  m_debug.SetMode(2);
  m_debug.Trace("kept", "", "", "");
  m_debug.SetMode(2);
  EXPECT_NE(Log().find("Trace: kept"), std::string::npos);
  EXPECT_EQ(m_changes, std::vector<std::string>{"DebugMode"});
  m_debug.SetMode(0);
  m_debug.SetMode(2);
  EXPECT_EQ(Log(), "");
}

struct BlockCase {
  const char* name;
  bool isAssert;
  std::int32_t code;
  std::string text, className, procedure, location;
  std::string block;
};

TEST_F(CDebugTest, MessageBlocksByteForByte) {
  const BlockCase cases[] = {
      {"assertion", true, 0, "false", "CCvn73100EZ", "Let TXDelay", "Else", ASSERT_BLOCK},
      {"message, all parts", false, -2147221124, "Invalid property value.", "CIOConfiguration", "Let ActiveIOPort", "1",
       "Error Code: -2147221124 0x8004017C\r\nInvalid property value.\r\nAt: <time>\r\nFile: CIOConfiguration\r\n"
       "Function: Let ActiveIOPort\r\nLocation: 1\r\n\r\n"},
      {"message, nothing but the code", false, 0, "", "", "", "", "Error Code: 0 0x0\r\nAt: <time>\r\n\r\n"},
      {"positive code, location only", false, 380, "", "", "", "End",
       "Error Code: 380 0x17C\r\nAt: <time>\r\nLocation: End\r\n\r\n"},
      {"minus one", false, -1, "x", "", "P", "", "Error Code: -1 0xFFFFFFFF\r\nx\r\nAt: <time>\r\nFunction: P\r\n\r\n"},
  };
  m_debug.SetMode(CDebug::MODE_EVENT);
  for (const BlockCase& c : cases) {
    SCOPED_TRACE(c.name);
    m_events.clear();
    if (c.isAssert)
      m_debug.Assert(false, c.text, c.className, c.procedure, c.location);
    else
      m_debug.Message(c.code, c.text, c.className, c.procedure, c.location);
    ASSERT_EQ(m_events.size(), 1u);
    EXPECT_EQ(MaskTime(m_events[0]), c.block);
  }
  EXPECT_FALSE(fs::exists(LogFile()));
}

struct TraceCase {
  std::string text, className, procedure, location;
  std::string line;
};

// Trace lines go only to the log, each ending with CR LF and the line end the write adds.
TEST_F(CDebugTest, TraceLinesByteForByteAndOnlyInTheLog) {
  const TraceCase cases[] = {
      {"", "", "", "", "Trace:\r\n"},
      {"x", "", "Go", "", "Trace: x -- At: Function: Go; \r\n"},
      {"UserControl_Initialize", "Cvn73100Scope", "", "",
       "Trace: UserControl_Initialize -- At: File: Cvn73100Scope; \r\n"},
      {"t", "C", "P", "Start", "Trace: t -- At: File: C; Function: P; Location: Start\r\n"},
  };
  m_debug.SetMode(CDebug::MODE_EVENT | CDebug::MODE_MESSAGE_BOX | CDebug::MODE_LOG);
  std::string log;
  for (const TraceCase& c : cases) {
    EXPECT_EQ(CDebug::FormatTraceLine(c.text, c.className, c.procedure, c.location), c.line) << c.line;
    m_debug.Trace(c.text, c.className, c.procedure, c.location);
    log += c.line + "\r\n";
  }
  EXPECT_EQ(Log(), log);
  EXPECT_TRUE(m_events.empty());
  EXPECT_TRUE(m_host.boxes.empty());
}

TEST_F(CDebugTest, DeliveryRunsEventThenLogThenMessageBox) {
  m_debug.SetMode(CDebug::MODE_EVENT | CDebug::MODE_LOG | CDebug::MODE_MESSAGE_BOX);
  std::string logAtEvent = "unset", logAtBox = "unset";
  m_onEvent = [&] { logAtEvent = Log(); };
  m_host.onBox = [&] { logAtBox = Log(); };
  m_debug.Assert(true, "true", "CCvn73100EZ", "Let TXDelay", "Else");
  EXPECT_TRUE(m_events.empty() && m_host.boxes.empty() && Log().empty()) << "a holding assertion reports nothing";
  m_debug.Assert(false, "false", "CCvn73100EZ", "Let TXDelay", "Else");
  ASSERT_EQ(m_events.size(), 1u);
  ASSERT_EQ(m_host.boxes.size(), 1u);
  EXPECT_EQ(m_host.boxes[0].parent, 0);
  EXPECT_EQ(m_host.boxes[0].style, 65600);
  EXPECT_EQ(m_host.boxes[0].title, "Remote Support Assistant");
  EXPECT_EQ(MaskTime(m_host.boxes[0].prompt), ASSERT_BLOCK);
  EXPECT_EQ(m_host.boxes[0].prompt, m_events[0]);
  EXPECT_EQ(logAtEvent, "");
  // The block ends with its empty line; the write adds one more line end.
  EXPECT_EQ(logAtBox, m_events[0] + "\r\n");
  EXPECT_EQ(m_debug.LogPath(), LogFile().string());
}

TEST_F(CDebugTest, LogFileIsPrivateWhetherNewOrLeftOver) {
  const auto privateMode = [&] {
    struct stat st {};
    EXPECT_EQ(::lstat(LogFile().c_str(), &st), 0);
    EXPECT_TRUE(S_ISREG(st.st_mode));
    return st.st_mode & 0777;
  };
  const mode_t old = ::umask(0);
  m_debug.SetMode(CDebug::MODE_LOG);
  ::umask(old);
  EXPECT_EQ(privateMode(), 0600u);

  m_debug.SetMode(0);
  WriteAll(LogFile(), "someone else's text");
  ASSERT_EQ(::chmod(LogFile().c_str(), 0644), 0);
  m_debug.SetMode(CDebug::MODE_LOG);
  EXPECT_EQ(privateMode(), 0600u);
  EXPECT_EQ(Log(), "");
}

TEST_F(CDebugTest, SymbolicLinkAtTheLogPathIsRefused) {
  const fs::path target = m_dir / "victim";
  WriteAll(target, "keep");
  struct When {
    const char* name;
    bool logOnBeforeLink;
  };
  for (const When when : {When{"while starting the log", false}, When{"while appending", true}}) {
    SCOPED_TRACE(when.name);
    CDebug debug;
    fs::remove(LogFile());
    if (when.logOnBeforeLink) {
      debug.SetMode(CDebug::MODE_LOG);
      fs::remove(LogFile());
    }
    fs::create_symlink(target, LogFile());
    try {
      if (when.logOnBeforeLink)
        debug.Trace("through the link", "", "", "");
      else
        debug.SetMode(CDebug::MODE_LOG);
      ADD_FAILURE() << "no error";
    } catch (const ScopeError& error) {
      EXPECT_NE(std::string(error.Description()).find("symbolic link"), std::string::npos) << error.Description();
    }
    EXPECT_EQ(ReadAll(target), "keep");
    EXPECT_TRUE(fs::is_symlink(LogFile()));
  }
}

TEST_F(CDebugTest, SwitchesAreSavedUnderTheirKeysInOrderDefaultsNot) {
  MemoryPropertyBag bag;
  bag.Set("DebugAssert", true);  // a value equal to its default replaces an earlier one
  m_debug.WriteProperties(bag);
  EXPECT_TRUE(bag.Entries().empty());

  m_debug.SetMode(CDebug::MODE_EVENT | CDebug::MODE_MESSAGE_BOX | CDebug::MODE_ASSERT);
  m_debug.WriteProperties(bag);
  std::vector<std::string> keys;
  for (const auto& entry : bag.Entries()) keys.push_back(entry.first);
  EXPECT_EQ(keys, (std::vector<std::string>{"DebugEnableEvent", "DebugEnableMessageBox", "DebugAssert"}));
  CDebug restored;
  restored.ReadProperties(bag);
  EXPECT_EQ(restored.Mode(), CDebug::MODE_EVENT | CDebug::MODE_MESSAGE_BOX | CDebug::MODE_ASSERT);

  // Reading the log switch starts a fresh log.
  WriteAll(LogFile(), "previous run");
  MemoryPropertyBag logOn;
  logOn.Set("DebugEnableMessageLog", true);
  m_debug.ReadProperties(logOn);
  EXPECT_EQ(m_debug.Mode(), CDebug::MODE_LOG);
  EXPECT_EQ(Log(), "");

  // Reading a bag without the keys switches everything off again (the defaults are False).
  m_debug.ReadProperties(MemoryPropertyBag());
  EXPECT_EQ(m_debug.Mode(), 0);
}

}  // namespace
}  // namespace cvn73100
