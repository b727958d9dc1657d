#include "form/FormFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <atomic>
#include <thread>

#include "iolib/BoardMap.h"
#include "tests/support/TempDir.h"

namespace cvn73100 {
namespace {

TEST(FormFile, ADamagedFormIsKeptAsideAndTheCommandGoesOnWithAFreshOne) {
  const std::pair<const char*, const char*> cases[] = {
      {"{\"properties\": {\n  \"A\": 1,\n  oops\n}}", ", line 3: syntax error"},
      {"{\"properties\": {\n\"A\": 1,\n\"B\": {\"bytes\": \"zz\"}}}", ", line 3: the value of B"},
      {"[1, 2]", ", line 1: not a cvn73100 form"},
  };
  for (const auto& [text, said] : cases) {
    const test::TempDir dir;
    const std::string path = dir.Make("form.json", text);
    MemoryPropertyBag bag;
    std::string notice;
    FormFile(path).Load(bag, [&](const std::string& message) { notice += message; });
    EXPECT_NE(notice.find(path + said), std::string::npos) << notice;
    EXPECT_TRUE(bag.Entries().empty() && !std::filesystem::exists(path));
    const auto kept = notice.substr(notice.find(path + ".damaged-"));
    EXPECT_EQ(test::ReadAll(kept.substr(0, kept.find(';'))), text);
  }
}

TEST(FormFile, AReaderBesideAWriterAlwaysSeesAWholeForm) {
  const test::TempDir dir;
  const FormFile form(dir.Path("form.json"));
  std::atomic<bool> done{false};
  std::thread writer([&] {
    for (std::int32_t i = 1; i <= 200; ++i) {
      MemoryPropertyBag mine;
      mine.Set("Round", Variant(i));
      mine.Set("Padding", Variant(std::string(static_cast<std::size_t>(i) * 97, 'x')));
      form.SaveChanges({}, mine);
    }
    done = true;
  });
  while (!done) {
    MemoryPropertyBag bag;
    form.Load(bag, [](const std::string& notice) { ADD_FAILURE() << notice; });
    ASSERT_EQ(bag.ReadString("Padding", "").size(), static_cast<std::size_t>(bag.ReadLong("Round", 0)) * 97);
  }
  writer.join();
}

TEST(FormFile, AFifoWhereAFileBelongsIsRefusedAtOnce) {
  const test::TempDir dir;
  const std::string fifo = dir.Path("fifo");
  ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
  EXPECT_EQ(test::ErrorOf([&] {
              MemoryPropertyBag bag;
              FormFile(fifo).Load(bag);
            }).Number(),
            75);
  const test::ScopedEnv conf("CVN73100_IO_CONF", fifo);
  const auto problems = io::BoardMap::Load().Problems();
  EXPECT_TRUE(!problems.empty() && problems[0].find("FIFO") != std::string::npos);
}

}  // namespace
}  // namespace cvn73100
