#include <gtest/gtest.h>

#include "iolib/IOManager.h"
#include "iolib/LinuxGpibLibrary.h"
#include "tests/iolib/IoTestSupport.h"

namespace cvn73100::io {
namespace {

using std::chrono::microseconds;
using test::ConditionOf;

TEST(LinuxGpibLibraryTest, PicksTheLongestTimeoutStepThatFits) {
  const struct {
    std::int64_t remainingUs;
    int step;
    std::int64_t lengthUs;
  } cases[] = {
      {0, 0, 0},
      {10, 1, 10},
      {2500000, 11, 1000000},
      {3000000, 12, 3000000},
      {1000, 5, 1000},
      {5000000000, 17, 1000000000},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.remainingUs);
    microseconds length{};
    EXPECT_EQ(LinuxGpibLibrary::StepWithin(microseconds(c.remainingUs), length), c.step);
    EXPECT_EQ(length.count(), c.lengthUs);
  }
}

TEST(LinuxGpibLibraryTest, AMissingLibraryIsAnOpenFailure) {
  EXPECT_EQ(ConditionOf([] { LinuxGpibLibrary::Load("/nonexistent/libgpib.so.0"); }), IOERR_OPEN_FAILED);
  // A library without the entry points is refused as well.
  EXPECT_EQ(ConditionOf([] { LinuxGpibLibrary::Load("libm.so.6"); }), IOERR_OPEN_FAILED);
}

class LinuxGpibTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_NE(m_standIn.handle, nullptr) << ::dlerror();
    m_standIn.reset();
    m_standIn.attach(0, 7, 0, 0);
    m_standIn.attach(0, 9, 0, 0);
    m_standIn.addBoard(1);
  }
  void TearDown() override { EXPECT_EQ(m_standIn.openDescriptors(), 0); }

  test::StandIn m_standIn;
  test::ScopedEnv m_config{"CVN73100_IO_CONF", std::string("/nonexistent/cvn73100-io.conf")};
  test::ScopedEnv m_library{"CVN73100_LIBGPIB", std::string(CVN_STANDIN_GPIB)};
  test::ScopedEnv m_gpib0{"CVN73100_GPIB0", std::string("linux-gpib:0")};
  test::ScopedEnv m_gpib1{"CVN73100_GPIB1", std::string("linux-gpib:1")};
  test::ScopedEnv m_gpib2{"CVN73100_GPIB2", std::string("linux-gpib:5")};
  std::shared_ptr<IOManager> m_manager = IOManager::FromEnvironment();
};

TEST_F(LinuxGpibTest, ListsBoardsAndTheListenersFindLstnFinds) {
  EXPECT_EQ(m_manager->FindResources("GPIB*"),
            (std::vector<std::string>{"GPIB0::INTFC", "GPIB0::7::INSTR", "GPIB0::9::INSTR", "GPIB1::INTFC"}));
  EXPECT_TRUE(m_manager->FindResources("GPIB2").empty());
  EXPECT_EQ(ConditionOf([&] { m_manager->Open("GPIB2::7::INSTR"); }), IOERR_OPEN_FAILED);
}

}  // namespace
}  // namespace cvn73100::io
