// The compiled-in message catalogue and the PO files it is made from.
#include <gtest/gtest.h>
#include <stdio.h>
#include <sys/wait.h>

#include <charconv>
#include <cstdlib>
#include <map>
#include <ostream>
#include <set>
#include <string>

#include "dialogs/MessageTable.h"
#include "dialogs/Messages.h"

namespace cvn73100 {
namespace {

struct Language {
  const char* file;  // resources/<file>.po
  int base;
};
const Language LANGUAGES[] = {{"en", 0},    {"fr", 1000}, {"es", 2000}, {"it", 3000},
                              {"de", 4000}, {"ja", 5000}, {"ko", 6000}, {"zh_TW", 7000}};
void PrintTo(const Language& language, std::ostream* out) { *out << language.file; }

const Language TRANSLATIONS[] = {{"fr", 1000}, {"es", 2000}, {"it", 3000}, {"de", 4000}, {"ko", 6000}, {"zh_TW", 7000}};

// number -> text of one language's copy, read from the compiled table.
std::map<int, std::string> Copy(int base) {
  std::map<int, std::string> texts;
  for (std::size_t i = 0; i < kMessageTableSize; ++i) {
    const int id = kMessageTable[i].id;
    if (id >= base && id < base + Messages::LANGUAGE_SPAN) texts[id - base] = kMessageTable[i].text;
  }
  return texts;
}

std::set<int> Numbers(const std::map<int, std::string>& texts) {
  std::set<int> numbers;
  for (const auto& [number, text] : texts) numbers.insert(number);
  return numbers;
}

std::size_t Count(const std::string& text, const std::string& word) {
  std::size_t count = 0;
  for (std::size_t at = text.find(word); at != std::string::npos; at = text.find(word, at + word.size())) ++count;
  return count;
}

std::string SourceDir() {
  if (const char* dir = std::getenv("CVN_SOURCE_DIR"); dir && *dir) return dir;
  return CVN_SOURCE_DIR_DEFAULT;
}

TEST(CatalogueTest, EnglishCarriesTheGenericHelpFilesAndTheSystemTexts) {
  const auto english = Copy(0);
  EXPECT_TRUE(english.count(10) && english.count(104));
  for (const auto& [number, text] : english) {
    EXPECT_TRUE(number == 10 || number == 11 || number >= 100) << number;
    EXPECT_FALSE(text.empty()) << number;
  }
}

TEST(CatalogueTest, EveryLanguageCarriesEveryEnglishMessage) {
  std::set<int> expected;
  for (int number : Numbers(Copy(0)))
    if (number >= 100) expected.insert(number);  // 10 and 11 name the generic help files, English only
  for (const Language& language : TRANSLATIONS) EXPECT_EQ(Numbers(Copy(language.base)), expected) << language.file;
}

// The command line's texts are in every language, with the same placeholders and option names.
TEST(CatalogueTest, EveryCommandLineTextIsInEveryLanguage) {
  const auto marks = [](const std::string& text) {
    std::multiset<std::string> found;
    for (std::size_t at = 0; (at = text.find_first_of("{-", at)) != std::string::npos; ++at) {
      const bool option = text.compare(at, 2, "--") == 0 && at + 2 < text.size() && std::islower(text[at + 2]);
      if (text[at] == '{') found.insert(text.substr(at, text.find('}', at) + 1 - at));
      if (option) found.insert(text.substr(at, text.find_first_not_of("-abcdefghijklmnopqrstuvwxyz", at) - at));
      if (option) ++at;
    }
    return found;
  };
  int count = 0;
  for (int number = Messages::CLI_FIRST; number < Messages::CLI_END; ++number) {
    const auto english = Messages::Find(Messages::TableId(Messages::ENGLISH, number));
    if (!english) continue;
    ++count;
    for (const Language& language : LANGUAGES) {
      const auto text = Messages::Find(Messages::TableId(language.base, number));
      ASSERT_TRUE(text) << language.file << " lacks " << number;
      EXPECT_EQ(marks(*text), marks(*english)) << language.file << " " << number << ": " << *text;
    }
  }
  EXPECT_GT(count, 100);
}

TEST(CatalogueTest, JapaneseCarriesOnlyHelpFilesFontAndTexts104To107) {
  EXPECT_EQ(Numbers(Copy(5000)), (std::set<int>{100, 101, 102, 103, 104, 105, 106, 107}));
}

TEST(CatalogueTest, TranslationsKeepProductWordsAndLineStructure) {
  // Names of products, ports, standards and file patterns, and the marks the texts are built with.
  const char* const kept[] = {
      "QD 73100",       "IEEE 488.2", "IEEE-488.2", "RS-232", "GP-IB",          "GPIB",     "COM",
      "DTR/DSR",        "DTR",        "XON/XOFF",   "*IDN?",  "Quendal-Darrow", "Wrenfold", "(*.scp)",
      "(*.scp; *.stp)", "(*.stp)",    "(*.*)",      "\"X\"",  "\"|\"",          "--",       "Cvn73100"};
  const auto english = Copy(0);
  for (const Language& language : LANGUAGES) {
    for (const auto& [number, text] : Copy(language.base)) {
      SCOPED_TRACE(std::string(language.file) + " " + std::to_string(number) + ": " + text);
      ASSERT_TRUE(english.count(number));
      const std::string& source = english.at(number);
      for (const char* word : kept) EXPECT_EQ(Count(text, word), Count(source, word)) << word;
      EXPECT_EQ(text.find_first_of("\r\n"), std::string::npos);
      EXPECT_EQ(text.rfind("---- ", 0) == 0, source.rfind("---- ", 0) == 0);
      // Texts joined to the next one keep their trailing blank (message 242).
      EXPECT_EQ(text.back() == ' ', source.back() == ' ');
    }
  }
}

TEST(CatalogueTest, BracketedButtonNamesAreTheButtonCaptions) {
  // (message, the caption of the button it names)
  const std::pair<int, int> references[] = {{270, 206}, {272, 207}, {274, 206}, {243, 302}, {332, 206}};
  for (const Language& language : LANGUAGES) {
    for (const auto& [message, caption] : references) {
      const std::string text = Messages::LoadIn(language.base, message);
      const std::string button = "[" + Messages::LoadIn(language.base, caption) + "]";
      EXPECT_NE(text.find(button), std::string::npos) << language.file << " " << message << ": " << text;
    }
  }
}

TEST(CatalogueTest, EachLanguageNamesItsHelpFilesAndFont) {
  std::set<std::string> helpFiles{Messages::LoadIn(0, 10)};
  for (const Language& language : LANGUAGES) {
    SCOPED_TRACE(language.file);
    const std::string help = Messages::LoadIn(language.base, 100);
    const std::string contents = Messages::LoadIn(language.base, 101);
    EXPECT_TRUE(help.ends_with(".hlp")) << help;
    EXPECT_EQ(contents, help.substr(0, help.size() - 4) + ".cnt");
    EXPECT_TRUE(helpFiles.insert(help).second) << help << " is not the language's own";
    EXPECT_FALSE(Messages::LoadIn(language.base, 102).empty());
    const std::string size = Messages::LoadIn(language.base, 103);
    int points = 0;
    const auto [end, ec] = std::from_chars(size.data(), size.data() + size.size(), points);
    EXPECT_TRUE(ec == std::errc() && end == size.data() + size.size() && points > 0) << size;
  }
}

class PoFileTest : public ::testing::TestWithParam<Language> {};

TEST_P(PoFileTest, PassesMsgfmtChecks) {
  const std::string path = SourceDir() + "/resources/" + GetParam().file + ".po";
  const std::string command = "msgfmt --check-format --check-header -o /dev/null '" + path + "' 2>&1";
  FILE* pipe = ::popen(command.c_str(), "r");
  ASSERT_NE(pipe, nullptr);
  std::string output;
  char buffer[512];
  while (std::size_t n = std::fread(buffer, 1, sizeof buffer, pipe)) output.append(buffer, n);
  const int status = ::pclose(pipe);
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 0) << output;
  EXPECT_EQ(output, "") << "msgfmt warns";
}

INSTANTIATE_TEST_SUITE_P(Catalogue, PoFileTest, ::testing::ValuesIn(LANGUAGES),
                         [](const testing::TestParamInfo<Language>& param) { return std::string(param.param.file); });

}  // namespace
}  // namespace cvn73100
