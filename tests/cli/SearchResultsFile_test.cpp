#include "cli/SearchResultsFile.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "platform/ScopeError.h"
#include "tests/cli/CliRunner.h"

namespace cvn73100 {
namespace {

class SearchResultsFileTest : public ::testing::Test {
 protected:
  void TearDown() override { std::filesystem::remove_all(dir); }
  const std::filesystem::path dir = test::MakeTempDir("cvnscope-results");
};

TEST_F(SearchResultsFileTest, LivesBesideTheFormAndKeepsTheTable) {
  const SearchResultsFile file((dir / "form.json").string());
  EXPECT_EQ(file.Path(), (dir / "form.search.json").string());
  EXPECT_TRUE(file.Load().empty());

  std::vector<TableRow> table(2);
  table[0] =
      TableRow{1, InstrumentRow{"73135D", "X", "GPIB0::7", "Corvane", "", "Corvane,73135D,1,A"}, "GPIB0::7::INSTR"};
  table[1] = TableRow{2, InstrumentRow{"Unknown", "", "COM1", "Unknown", "", "garbage\"\\\n"}, "COM1"};
  file.Save(table);
  const std::vector<TableRow> loaded = file.Load();
  ASSERT_EQ(loaded.size(), 2u);
  for (std::size_t i = 0; i < 2; ++i) {
    EXPECT_EQ(loaded[i].number, table[i].number);
    EXPECT_EQ(loaded[i].row, table[i].row);
    EXPECT_EQ(loaded[i].fullAddress, table[i].fullAddress);
  }
}

TEST_F(SearchResultsFileTest, DamagedFileIsAnError) {
  const SearchResultsFile file((dir / "form.json").string());
  for (const char* text : {"not json", "{\"rows\": 3}", "{\"rows\": [{\"model\": \"x\"}]}"}) {
    std::ofstream(file.Path()) << text;
    EXPECT_THROW(file.Load(), ScopeError) << text;
  }
}

}  // namespace
}  // namespace cvn73100
