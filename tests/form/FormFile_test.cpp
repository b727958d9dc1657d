// The form file as many commands share it: damaged forms, readers beside writers, FIFOs where files belong.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <atomic>
#include <thread>

#include "form/FormFile.h"
#include "iolib/BoardMap.h"
#include "setups/CSetupFile.h"
#include "tests/support/TempDir.h"

namespace cvn73100 {
namespace {

TEST(FormFile, ADamagedFormIsKeptAsideAndTheCommandGoesOnWithAFreshOne) {
  const struct {
    const char* text;
    const char* said;
  } cases[] = {
      {"{\"properties\": {\n  \"A\": 1,\n  oops\n}}", ", line 3: syntax error"},
      {"{\"properties\": {\n\"A\": 1,\n\"B\": {\"bytes\": \"zz\"}}}", ", line 3: the value of B"},
      {"[1, 2]", ", line 1: not a cvn73100 form"},
  };
  for (const auto& c : cases) {
    const test::TempDir dir;
    const std::string path = dir.Make("form.json", c.text);
    MemoryPropertyBag bag;
    bag.Set("Stale", Variant(1));
    std::string notice;
    FormFile(path).Load(bag, [&](const std::string& text) { notice += text; });
    EXPECT_NE(notice.find(path + c.said), std::string::npos) << notice;
    EXPECT_TRUE(bag.Entries().empty());
    EXPECT_FALSE(std::filesystem::exists(path));
    const auto kept = notice.substr(notice.find(path + ".damaged-"));
    EXPECT_EQ(test::ReadAll(kept.substr(0, kept.find(';'))), c.text);
  }
}

TEST(FormFile, AReaderBesideAWriterAlwaysSeesAWholeForm) {
  const test::TempDir dir;
  const FormFile form(dir.Path("form.json"));
  MemoryPropertyBag base;
  form.Save(base);
  std::atomic<bool> done{false};
  std::thread writer([&] {
    for (std::int32_t i = 1; i <= 200; ++i) {
      MemoryPropertyBag mine;
      mine.Set("Round", Variant(i));
      mine.Set("Padding", Variant(std::string(static_cast<std::size_t>(i) * 97, 'x')));
      form.SaveChanges(base, mine);
    }
    done = true;
  });
  int reads = 0;
  for (; !done; ++reads) {
    MemoryPropertyBag bag;
    form.Load(bag, [](const std::string& notice) { ADD_FAILURE() << notice; });
    const auto round = bag.ReadLong("Round", 0);
    ASSERT_EQ(bag.ReadString("Padding", "").size(), static_cast<std::size_t>(round) * 97);
  }
  writer.join();
  EXPECT_GT(reads, 0);
}

TEST(FormFile, AFifoWhereAFileBelongsIsRefusedAtOnce) {
  const test::TempDir dir;
  const std::string fifo = dir.Path("fifo");
  ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
  MemoryPropertyBag bag;
  EXPECT_EQ(test::ErrorOf([&] { FormFile(fifo).Load(bag); }).Number(), 75);
  EXPECT_NE(test::ErrorOf([&] { CSetupFile().ReadFile(fifo); }).Number(), 0);
  const test::ScopedEnv conf("CVN73100_IO_CONF", fifo);
  const io::BoardMap map = io::BoardMap::Load();
  ASSERT_FALSE(map.Problems().empty());
  EXPECT_NE(map.Problems()[0].find("FIFO"), std::string::npos) << map.Problems()[0];
}

}  // namespace
}  // namespace cvn73100
