// Commands that change one form at the same time keep each other's changes.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <thread>
#include <vector>

#include "form/FormMerge.h"
#include "tests/cli/CliRunner.h"

namespace cvn73100 {
namespace {

MemoryPropertyBag Form(std::initializer_list<const char*> setups, std::int32_t txDelay = 0) {
  MemoryPropertyBag bag;
  if (txDelay) bag.Set("TXDelay", Variant(txDelay));
  bag.Set("SetupCount", Variant(static_cast<std::int32_t>(setups.size())));
  std::int32_t i = 0;
  for (const char* name : setups) bag.Set("SetupName" + std::to_string(++i), Variant(std::string(name)));
  return bag;
}

std::vector<std::string> SetupNames(const MemoryPropertyBag& bag) {
  std::vector<std::string> names;
  for (std::int32_t i = 1; i <= bag.ReadLong("SetupCount", 0); ++i)
    names.push_back(bag.ReadString("SetupName" + std::to_string(i), ""));
  return names;
}

TEST(FormMerge, OnlyThisCommandsChangesReplaceWhatOthersLeft) {
  const struct {
    const char* name;
    MemoryPropertyBag base, mine, current;
    std::vector<std::string> setups;
    std::int32_t txDelay;
  } cases[] = {
      {"both added", Form({"A"}), Form({"A", "B"}), Form({"A", "C"}), {"A", "C", "B"}, 0},
      {"removed here, added there", Form({"A", "B"}), Form({"B"}), Form({"A", "B", "C"}), {"B", "C"}, 0},
      {"same name in other case", Form({}), Form({"q1"}), Form({"Q1"}), {"q1"}, 0},
      {"a setting changed there stays", Form({"A"}), Form({"A", "B"}), Form({"A"}, 20), {"A", "B"}, 20},
      {"a setting changed here wins", Form({"A"}, 5), Form({"A"}, 30), Form({"A", "C"}, 20), {"A", "C"}, 30},
  };
  for (const auto& c : cases) {
    const MemoryPropertyBag merged = MergeFormChanges(c.base, c.mine, c.current);
    EXPECT_EQ(SetupNames(merged), c.setups) << c.name;
    EXPECT_EQ(merged.ReadLong("TXDelay", 0), c.txDelay) << c.name;
  }
}

class FormChanges : public test::CliTest {};

TEST_F(FormChanges, FiftyCommandsAtOnceLoseNothing) {
  ASSERT_EQ(Run({"config"}).status, 0);
  std::vector<std::thread> commands;
  for (int i = 1; i <= 50; ++i) {
    commands.emplace_back([this, i] { Run({"setup", "get", "Q" + std::to_string(i), "--yes"}); });
  }
  for (auto& command : commands) command.join();
  EXPECT_EQ(nlohmann::json::parse(Run({"--json", "setup", "list"}).out)["setups"].size(), 50u);
}

}  // namespace
}  // namespace cvn73100
