#include "dialogs/LanguageSelection.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "diagnostics/CDebug.h"
#include "dialogs/Messages.h"
#include "platform/Os.h"
#include "platform/ScopeError.h"
#include "tests/support/ScriptedHost.h"
#include "tests/support/TempDir.h"

namespace cvn73100 {
namespace {

namespace fs = std::filesystem;

using test::ReadAll;
using test::WriteAll;

constexpr int ALL_CODE_PAGES[] = {932, 949, 950};

// A program folder of its own with localized help files, a fake OS, and the assertions raised.
class LanguageSelectionTest : public ::testing::Test {
 protected:
  void SetUp() override {
    fs::create_directory(m_dir / "Help");
    m_os.SetProgramFolder(m_dir.string() + "/");
    for (int codePage : ALL_CODE_PAGES) m_os.SetDoubleByte(codePage, true);
  }
  void TearDown() override { Messages::SetLanguageBase(Messages::ENGLISH); }

  void OnlyCodePage(int available) {
    for (int codePage : ALL_CODE_PAGES) m_os.SetDoubleByte(codePage, codePage == available);
  }
  void AddHelp(const std::string& name) { WriteAll(m_dir / "Help" / name, "help " + name); }
  std::vector<std::string> ProgramFolderFiles() const {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(m_dir))
      if (entry.is_regular_file()) names.push_back(entry.path().filename().string());
    return names;
  }

  test::TempDir m_temp{"cvn-language"};
  const fs::path& m_dir = m_temp.path();
  FakeOs m_os;
  ScopedOs m_scopedOs{m_os};
  test::SupportLog m_support;
  std::vector<std::string>& m_asserts = m_support.blocks;
};

struct AcceptCase {
  std::int32_t countryCode;
  int base;
  int codePage;  // the only double-byte code page the computer offers (0: none)
  const char* fontName;
  const char* help;
};

TEST_F(LanguageSelectionTest, EachCountryCodeSelectsItsLanguageFontAndHelpFiles) {
  const AcceptCase cases[] = {
      {1, 0, 0, "MS Sans Serif", "Cvn73100_en"},
      {49, 4000, 0, "MS Sans Serif", "Cvn73100_de"},
      {886, 7000, 950, "Noto Sans CJK TC", "Cvn73100_zh_TW"},
  };
  for (const AcceptCase& c : cases) {
    SCOPED_TRACE(c.countryCode);
    OnlyCodePage(c.codePage);
    AddHelp(std::string(c.help) + ".hlp");
    AddHelp(std::string(c.help) + ".cnt");

    const LanguageChoice choice = LanguageSelection::Select(c.countryCode);

    EXPECT_EQ(choice.countryCode, c.countryCode);
    EXPECT_EQ(choice.base, c.base);
    EXPECT_EQ(Messages::LanguageBase(), c.base);
    EXPECT_EQ(choice.fontName, c.fontName);
    EXPECT_EQ(choice.fontSize, 9);
    EXPECT_EQ(Messages::Load(106), Messages::Find(c.base + 106).value_or("missing"));
    EXPECT_EQ(ReadAll(m_dir / "Cvn73100.hlp"), "help " + std::string(c.help) + ".hlp");
    EXPECT_EQ(ReadAll(m_dir / "Cvn73100.cnt"), "help " + std::string(c.help) + ".cnt");
  }
  EXPECT_TRUE(m_asserts.empty());
}

struct RefuseCase {
  std::int32_t countryCode;
  int missingCodePage;
  int description;
};

TEST_F(LanguageSelectionTest, RefusedCodesChangeNothing) {
  const RefuseCase cases[] = {
      {44, 0, 106},
      {8860, 0, 106},
      {81, 932, 107},
  };
  AddHelp("Cvn73100_de.hlp");
  AddHelp("Cvn73100_ja.hlp");
  LanguageSelection::Select(49);
  fs::remove(m_dir / "Cvn73100.hlp");

  for (const RefuseCase& c : cases) {
    SCOPED_TRACE(c.countryCode);
    m_asserts.clear();
    for (int codePage : ALL_CODE_PAGES) m_os.SetDoubleByte(codePage, codePage != c.missingCodePage);
    try {
      LanguageSelection::Select(c.countryCode);
      ADD_FAILURE() << "accepted";
    } catch (const ScopeError& error) {
      EXPECT_EQ(error.Number(), -2147221124);
      // Still German: the error speaks the language that stays.
      EXPECT_EQ(error.Source(), "QD 73100 Oszilloskop-Steuerelement");
      EXPECT_EQ(error.Description(), Messages::Find(Messages::GERMAN + c.description).value_or("missing"));
      EXPECT_EQ(error.HelpFile(), "Cvn73100.hlp");
    }
    EXPECT_EQ(Messages::LanguageBase(), Messages::GERMAN);
    EXPECT_FALSE(fs::exists(m_dir / "Cvn73100.hlp"));
    EXPECT_EQ(m_asserts.size(), 1u);
  }
}

TEST_F(LanguageSelectionTest, CheckSaysWhatACodeSelectsWithoutSelectingIt) {
  AddHelp("Cvn73100_ko.hlp");
  const LanguageChoice choice = LanguageSelection::Check(82);
  EXPECT_EQ(choice.base, Messages::KOREAN);
  EXPECT_EQ(choice.fontName, "Noto Sans CJK KR");
  EXPECT_EQ(Messages::LanguageBase(), Messages::ENGLISH);
  EXPECT_TRUE(ProgramFolderFiles().empty());
}

TEST_F(LanguageSelectionTest, HelpFileCopiesFailSilently) {
  // No localized files at all: the language is still selected, and nothing appears.
  EXPECT_NO_THROW(LanguageSelection::Select(33));
  EXPECT_EQ(Messages::LanguageBase(), Messages::FRENCH);
  EXPECT_TRUE(ProgramFolderFiles().empty());

  // A help file that cannot be replaced keeps the other one going, and leaves no partial copy behind.
  AddHelp("Cvn73100_it.hlp");
  AddHelp("Cvn73100_it.cnt");
  fs::create_directory(m_dir / "Cvn73100.hlp");
  EXPECT_NO_THROW(LanguageSelection::Select(39));
  EXPECT_EQ(Messages::LanguageBase(), Messages::ITALIAN);
  EXPECT_EQ(ProgramFolderFiles(), std::vector<std::string>{"Cvn73100.cnt"});
  EXPECT_EQ(LanguageSelection::InstallHelpFiles(Messages::ITALIAN), 1);

  // A language without its own files leaves the earlier copies as they were.
  LanguageSelection::SetLanguage(Messages::SPANISH);
  EXPECT_EQ(ReadAll(m_dir / "Cvn73100.cnt"), "help Cvn73100_it.cnt");
}

}  // namespace
}  // namespace cvn73100
