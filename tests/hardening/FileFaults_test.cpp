// Faults of the file system under the control's saves and its support-message log: a write that fails at
// every 1 KiB offset (RLIMIT_FSIZE, as a disk that fills up there), a rename that fails, an unwritable
// temporary directory and a symbolic link planted where the log goes.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "control/Cvn73100Scope.h"
#include "diagnostics/CDebug.h"
#include "form/FormFile.h"
#include "iolib/BoardMap.h"
#include "iolib/IOManager.h"
#include "platform/Components.h"
#include "platform/Host.h"
#include "platform/PropertyBag.h"
#include "server/Cvn73100Server.h"
#include "setups/CSetupFile.h"
#include "setups/SetupsCvn73100Scope.h"
#include "tests/hardening/Hardening.h"

namespace cvn73100::hardening {
namespace {

Bytes Pattern(std::size_t size, unsigned seed) {
  Bytes bytes(size);
  for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<std::uint8_t>((i * 131 + seed) ^ (i >> 7));
  return bytes;
}

// A native setup file holding `learnString`, written the ordinary way.
void WriteSetupFile(const fs::path& path, const std::string& model, const Bytes& learnString) {
  CSetupFile file;
  file.SetModel(model);
  file.SetVersion("A.02.10");
  file.SetUserComments("comments of " + model);
  file.SetLearnString(learnString);
  file.WriteFile(path.string());
}

// What the control keeps in memory, as text that compares exactly.
std::string Snapshot(const SetupsCvn73100Scope& setups) {
  MemoryPropertyBag bag;
  setups.WriteProperties(bag);
  return FormFile::ToJson(bag);
}
std::string Snapshot(const Cvn73100Scope& control) {
  MemoryPropertyBag bag;
  control.WriteProperties(bag);
  return FormFile::ToJson(bag);
}

// The control needs an I/O library and a server; none of these tests reaches an instrument.
void RegisterComponents() {
  server::RegisterAutomationServer();
  Components::SetIOManagerFactory([] { return std::make_shared<io::IOManager>(io::BoardMap::EmbeddedDefault()); });
}

// One kind of save: it writes `old` contents over the target first, then saves the new contents through the
// code under test, and describes what it holds in memory.
class Saver {
 public:
  virtual ~Saver() = default;
  virtual void SaveOld(const fs::path& path) = 0;
  virtual void SaveNew(const fs::path& path) = 0;
  virtual std::string Memory() const = 0;
};

class SetupFileSaver : public Saver {
 public:
  void SaveOld(const fs::path& path) override { WriteSetupFile(path, "73105B", Pattern(3000, 1)); }
  void SaveNew(const fs::path& path) override {
    CSetupFile file;
    file.SetModel("73135D");
    file.SetManufacturer("Corvane Technologies");
    file.SetVersion("A.02.10");
    file.SetLearnString(Pattern(5200, 2));
    file.WriteFile(path.string());
  }
  std::string Memory() const override { return {}; }
};

// A setup of a collection saved with SaveToFile.
class SetupSaver : public Saver {
 public:
  explicit SetupSaver(const fs::path& scratch) {
    CDebug::SetInstance(nullptr);
    const fs::path source = scratch / "source.scp";
    WriteSetupFile(source, "73135D", Pattern(6000, 3));
    m_setups->Add("Kept")->ReadFromFile(source.string());
    m_setup = m_setups->Add("Saved");
    m_setup->ReadFromFile(source.string());
    m_setup->SetComments("saved from the collection");
    fs::remove(source);
  }
  void SaveOld(const fs::path& path) override { WriteSetupFile(path, "73105B", Pattern(2500, 4)); }
  void SaveNew(const fs::path& path) override { m_setup->SaveToFile(path.string()); }
  std::string Memory() const override { return Snapshot(*m_setups); }

 private:
  std::shared_ptr<SetupsCvn73100Scope> m_setups = SetupsCvn73100Scope::Create();
  std::shared_ptr<SetupCvn73100Scope> m_setup;
};

// The control's properties saved as the form file.
class FormSaver : public Saver {
 public:
  explicit FormSaver(const fs::path& scratch) : m_tmp("TMPDIR", scratch.string()) {
    RegisterComponents();
    m_control = std::make_unique<Cvn73100Scope>();
    m_control->SetAddress("COM2::Baud=19200,Handshake=DTR_DSR");
    m_control->SetTXDelay(20);
    const fs::path source = scratch / "source.scp";
    WriteSetupFile(source, "73135D", Pattern(3000, 5));
    for (const char* name : {"One", "Two"}) m_control->Setups()->Add(name)->ReadFromFile(source.string());
    fs::remove(source);
  }
  void SaveOld(const fs::path& path) override {
    MemoryPropertyBag bag;
    bag.Set("Address", Variant(std::string("GPIB0::9::INSTR")));
    bag.Set("Blob", Variant(Pattern(1500, 6)));
    FormFile(path.string()).Save(bag);
  }
  void SaveNew(const fs::path& path) override {
    MemoryPropertyBag bag;
    m_control->WriteProperties(bag);
    FormFile(path.string()).Save(bag);
  }
  std::string Memory() const override { return Snapshot(*m_control); }

 private:
  ScopedEnv m_tmp;
  std::unique_ptr<Cvn73100Scope> m_control;
};

struct SaveCase {
  const char* name;
  const char* fileName;
  std::function<std::unique_ptr<Saver>(const fs::path& scratch)> make;
};

void PrintTo(const SaveCase& c, std::ostream* os) { *os << c.name; }

// Runs `save` and tells whether it raised a ScopeError.
bool Fails(const std::function<void()>& save) {
  try {
    save();
  } catch (const ScopeError&) {
    return true;
  }
  return false;
}

class FailedSave : public ::testing::TestWithParam<SaveCase> {
 protected:
  void SetUp() override {
    saver = GetParam().make(scratch.path());
    const fs::path probe = folder.path() / "probe";
    saver->SaveNew(probe);
    newBytes = ReadAll(probe);
    saver->SaveOld(probe);
    oldBytes = ReadAll(probe);
    fs::remove(probe);
    ASSERT_NE(oldBytes, newBytes);
    ASSERT_GT(newBytes.size(), 4096u);
    target = folder.path() / GetParam().fileName;
  }
  void TearDown() override {
    saver.reset();
    CDebug::SetInstance(nullptr);
    Components::SetIOManagerFactory(nullptr);
  }

  TempDir scratch;
  TempDir folder;  // holds the target and nothing else, so a temporary file left behind shows
  std::unique_ptr<Saver> saver;
  std::string oldBytes;
  std::string newBytes;
  fs::path target;
};

TEST_P(FailedSave, AtEveryKibibyteTheFileIsWholeAndMemoryUnchanged) {
  for (std::size_t offset = 0; offset < newBytes.size() + 1024; offset += 1024) {
    SCOPED_TRACE("write fails at offset " + std::to_string(offset));
    WriteAll(target, oldBytes);
    const std::string memory = saver->Memory();
    bool failed = false;
    {
      FileSizeLimit limit(offset);
      failed = Fails([&] { saver->SaveNew(target); });
    }
    const bool fits = offset >= newBytes.size();
    EXPECT_EQ(failed, !fits);
    EXPECT_TRUE(ReadAll(target) == (fits ? newBytes : oldBytes)) << "the file is neither whole old nor whole new";
    EXPECT_EQ(Listing(folder.path()), std::set<std::string>{target.filename().string()});
    EXPECT_EQ(saver->Memory(), memory);
  }
}

TEST_P(FailedSave, ARenameThatFailsLeavesTheOldFile) {
  WriteAll(target, oldBytes);
  if (!SetImmutable(target, true)) GTEST_SKIP() << "the immutable attribute is not available here";
  const std::string memory = saver->Memory();
  const bool failed = Fails([&] { saver->SaveNew(target); });
  SetImmutable(target, false);
  EXPECT_TRUE(failed);
  EXPECT_TRUE(ReadAll(target) == oldBytes);
  EXPECT_EQ(Listing(folder.path()), std::set<std::string>{target.filename().string()});
  EXPECT_EQ(saver->Memory(), memory);
}

// What stands at the target decides: a FIFO, a directory or another user's link in a shared folder is refused
// (without hanging), a link of one's own keeps pointing where it did, the mode stays, and what a crashed
// save left behind goes.
TEST_P(FailedSave, WhatStandsAtTheTargetIsRespected) {
  const fs::path dir = folder.path();
  const struct {
    const char* name;
    std::function<fs::path()> prepare;  // returns the path to save to
    bool saves;
    std::function<void()> check;
  } cases[] = {
      {"fifo",
       [&] {
         ::mkfifo((dir / "fifo").c_str(), 0600);
         return dir / "fifo";
       },
       false, [&] { EXPECT_EQ(fs::status(dir / "fifo").type(), fs::file_type::fifo); }},
      {"directory",
       [&] {
         fs::create_directory(target);
         WriteAll(target / "inside", oldBytes);
         return target;
       },
       false, [&] { EXPECT_TRUE(ReadAll(target / "inside") == oldBytes); }},
      {"own link",
       [&] {
         WriteAll(dir / "real", oldBytes);
         fs::create_symlink(dir / "real", dir / "link");
         return dir / "link";
       },
       true,
       [&] {
         EXPECT_TRUE(fs::is_symlink(dir / "link"));
         EXPECT_TRUE(ReadAll(dir / "real") == newBytes);
       }},
      {"mode kept",
       [&] {
         WriteAll(target, oldBytes);
         fs::permissions(target, fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
         return target;
       },
       true, [&] { EXPECT_EQ(fs::status(target).permissions() & fs::perms::all, fs::perms(0640)); }},
      {"stale temporary",
       [&] {
         const fs::path stale = dir / ("." + target.filename().string() + ".tmp-stale1");
         WriteAll(stale, "left by a crash");
         fs::last_write_time(stale, fs::file_time_type::clock::now() - std::chrono::hours(1));
         WriteAll(dir / ("." + target.filename().string() + ".tmp-young1"), "being written");
         return target;
       },
       true,
       [&] {
         EXPECT_FALSE(fs::exists(dir / ("." + target.filename().string() + ".tmp-stale1")));
         EXPECT_TRUE(fs::exists(dir / ("." + target.filename().string() + ".tmp-young1")));
       }},
      {"another user's link in a shared folder",
       [&] {
         fs::create_directory(dir / "shared");
         fs::permissions(dir / "shared", fs::perms::all | fs::perms::sticky_bit);
         WriteAll(dir / "victim", oldBytes);
         fs::create_symlink(dir / "victim", dir / "shared" / "planted");
         if (::lchown((dir / "shared" / "planted").c_str(), 65534, 65534) != 0) return fs::path();
         return dir / "shared" / "planted";
       },
       false, [&] { EXPECT_TRUE(ReadAll(dir / "victim") == oldBytes); }},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const fs::path path = c.prepare();
    if (path.empty()) continue;  // needs rights this process lacks
    EXPECT_EQ(Fails([&] { saver->SaveNew(path); }), !c.saves);
    c.check();
    for (const auto& entry : fs::directory_iterator(dir)) fs::remove_all(entry.path());
  }
}

INSTANTIATE_TEST_SUITE_P(
    Hardening, FailedSave,
    ::testing::Values(SaveCase{"SetupFileWrite", "scope.scp",
                               [](const fs::path&) { return std::make_unique<SetupFileSaver>(); }},
                      SaveCase{"SetupSaveToFile", "setup.scp",
                               [](const fs::path& scratch) { return std::make_unique<SetupSaver>(scratch); }},
                      SaveCase{"FormFileSave", "form.json",
                               [](const fs::path& scratch) { return std::make_unique<FormSaver>(scratch); }}),
    [](const ::testing::TestParamInfo<SaveCase>& param) { return std::string(param.param.name); });

// --- The support-message log. ---

// The per-user folder the control keeps its log in, below a TMPDIR of the test's choosing.
fs::path OwnFolder(const fs::path& tmp) { return tmp / ("cvn73100-" + std::to_string(::geteuid())); }

struct LogCase {
  const char* name;
  // Prepares `dir` and returns the directory to use as TMPDIR; nullopt when the fault cannot be made here.
  std::function<std::optional<fs::path>(const fs::path& dir)> prepare;
};

void PrintTo(const LogCase& c, std::ostream* os) { *os << c.name; }

class WarningHost : public SilentHost {
 public:
  void Warning(const std::string& text) override { warnings.push_back(text); }
  std::vector<std::string> warnings;
};

class UnusableLog : public ::testing::TestWithParam<LogCase> {
 protected:
  void SetUp() override {
    RegisterComponents();
    Host::SetCurrent(&host);
    WriteAll(victim, "not yours\n");
  }
  void TearDown() override {
    Host::SetCurrent(nullptr);
    CDebug::SetInstance(nullptr);
    Components::SetIOManagerFactory(nullptr);
  }

  WarningHost host;
  TempDir dir;
  fs::path victim = dir.path() / "victim";
  ScopedEnv noRuntimeDir{"XDG_RUNTIME_DIR", std::nullopt};
};

// A log that cannot be opened is no reason to refuse work: the control starts without it, says so once,
// and writes nothing through a link or into a folder that is not the user's own.
TEST_P(UnusableLog, TheControlStartsWithoutItsLogAndWarnsOnce) {
  const auto tmp = GetParam().prepare(dir.path());
  if (!tmp) GTEST_SKIP() << "this fault cannot be made with the rights of this process";
  ScopedEnv env("TMPDIR", tmp->string());
  {
    Cvn73100Scope control;
    EXPECT_EQ(control.SupportMessageMode() & CDebug::MODE_LOG, 0);
    MemoryPropertyBag logOn;
    logOn.Set("DebugEnableMessageLog", Variant(true));
    control.ReadProperties(logOn);
  }
  ASSERT_EQ(host.warnings.size(), 1u);
  EXPECT_NE(host.warnings[0].find("Path/File access error"), std::string::npos) << host.warnings[0];
  EXPECT_EQ(ReadAll(victim), "not yours\n");
  EXPECT_FALSE(fs::is_regular_file(dir.path() / "elsewhere"));
  EXPECT_FALSE(fs::exists(dir.path() / "elsewhere" / CDebug::LOG_FILE_NAME));
}

fs::path WithLinkAtTheLog(const fs::path& dir, const fs::path& to) {
  fs::create_directories(OwnFolder(dir / "tmp"));
  fs::permissions(OwnFolder(dir / "tmp"), fs::perms::owner_all);
  fs::create_symlink(to, OwnFolder(dir / "tmp") / CDebug::LOG_FILE_NAME);
  return dir / "tmp";
}

INSTANTIATE_TEST_SUITE_P(
    Hardening, UnusableLog,
    ::testing::Values(
        LogCase{"TemporaryDirectoryMissing", [](const fs::path& dir) { return std::optional(dir / "missing"); }},
        LogCase{"TemporaryDirectoryIsAFile",
                [](const fs::path& dir) {
                  WriteAll(dir / "file", "");
                  return std::optional(dir / "file");
                }},
        LogCase{"TemporaryDirectoryReadOnly",
                [](const fs::path& dir) -> std::optional<fs::path> {
                  fs::create_directory(dir / "ro");
                  fs::permissions(dir / "ro", fs::perms::owner_read | fs::perms::owner_exec);
                  // Permissions do not stop root; the immutable attribute does.
                  if (::geteuid() == 0 && !SetImmutable(dir / "ro", true)) return std::nullopt;
                  return dir / "ro";
                }},
        LogCase{"OwnFolderOpenToOthers",
                [](const fs::path& dir) {
                  fs::create_directories(OwnFolder(dir / "tmp"));
                  fs::permissions(OwnFolder(dir / "tmp"), fs::perms::all);
                  return std::optional(dir / "tmp");
                }},
        LogCase{"OwnFolderIsALink",
                [](const fs::path& dir) {
                  fs::create_directories(dir / "tmp");
                  fs::create_directory(dir / "elsewhere");
                  fs::permissions(dir / "elsewhere", fs::perms::owner_all);
                  fs::create_directory_symlink(dir / "elsewhere", OwnFolder(dir / "tmp"));
                  return std::optional(dir / "tmp");
                }},
        LogCase{"LinkToAFile",
                [](const fs::path& dir) { return std::optional(WithLinkAtTheLog(dir, dir / "victim")); }},
        LogCase{"LinkToNothing",
                [](const fs::path& dir) { return std::optional(WithLinkAtTheLog(dir, dir / "elsewhere")); }}),
    [](const ::testing::TestParamInfo<LogCase>& param) { return std::string(param.param.name); });

}  // namespace
}  // namespace cvn73100::hardening
