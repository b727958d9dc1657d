#include "dialogs/AutoCenter.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/ScriptedHost.h"

namespace cvn73100 {
namespace {

TEST(AutoCenterTest, CentresABoxOverItsParent) {
  const struct {
    Rect box, parent, expected;
  } cases[] = {
      {{0, 0, 200, 100}, {100, 100, 800, 600}, {400, 350, 200, 100}},
      // A half pixel goes to the top-left.
      {{0, 0, 201, 101}, {100, 100, 800, 600}, {399, 349, 201, 101}},
      {{0, 0, 801, 100}, {100, 100, 800, 600}, {99, 350, 801, 100}},
      // A box bigger than a parent near the origin would start off the screen: 0 instead.
      {{5, 5, 600, 400}, {0, 20, 200, 100}, {0, 0, 600, 400}},
      {{5, 5, 300, 100}, {-500, 300, 200, 100}, {0, 300, 300, 100}},
  };
  for (const auto& c : cases) EXPECT_EQ(AutoCenter::CenterOverParent(c.box, c.parent), c.expected);
}

TEST(AutoCenterTest, CentresThePropertyFrameOnTheScreenCentre) {
  const struct {
    Rect frame;
    int cx, cy;
    Rect expected;
  } cases[] = {
      {{10, 10, 400, 300}, 960, 540, {760, 390, 400, 300}},
      {{10, 10, 401, 301}, 960, 540, {759, 389, 401, 301}},
      // Not clamped: a frame larger than the screen starts off it.
      {{0, 0, 2000, 1200}, 960, 540, {-40, -60, 2000, 1200}},
  };
  for (const auto& c : cases) EXPECT_EQ(AutoCenter::CenterPropertyPage(c.frame, c.cx, c.cy), c.expected);
}

TEST(AutoCenterTest, KeepsTheHandshakeWarningOnTheScreen) {
  const struct {
    Rect dialog, parent;
    int screenWidth, screenHeight;
    Rect expected;
  } cases[] = {
      {{0, 0, 400, 200}, {100, 100, 800, 600}, 1920, 1080, {300, 300, 400, 200}},
      // Passing the right edge moves it left by its own width, the bottom edge up by its own height.
      {{0, 0, 400, 200}, {1500, 100, 600, 300}, 1920, 1080, {1200, 150, 400, 200}},
      {{0, 0, 400, 200}, {100, 900, 600, 300}, 1920, 1080, {200, 750, 400, 200}},
      {{0, 0, 400, 200}, {1500, 900, 600, 300}, 1920, 1080, {1200, 750, 400, 200}},
      // Exactly at the edge stays.
      {{0, 0, 400, 200}, {1420, 0, 600, 200}, 1920, 1080, {1520, 0, 400, 200}},
      // Moved past the origin: 0.
      {{0, 0, 700, 200}, {-100, 100, 600, 200}, 500, 1080, {0, 100, 700, 200}},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(AutoCenter::PlaceOnParentWithinScreen(c.dialog, c.parent, c.screenWidth, c.screenHeight), c.expected);
  }
}

class MsgBoxAutoCenterTest : public ::testing::Test {
 protected:
  test::ScriptedHost host;
  test::ScopedHost scoped{host};
  test::SupportLog support;
  std::vector<std::string>& messages = support.blocks;
};

TEST_F(MsgBoxAutoCenterTest, CentresOverAParentAndReturnsTheAnswer) {
  host.msgBoxAnswers.push_back(MsgBoxResult::Cancel);
  host.boxRect = {0, 0, 200, 100};
  host.parentRect = {100, 100, 800, 600};
  EXPECT_EQ(AutoCenter::MsgBoxAutoCenter(42, "prompt", MsgBoxStyle::OKCancel, "title"), MsgBoxResult::Cancel);
  ASSERT_EQ(host.boxes.size(), 1u);
  EXPECT_EQ(host.boxes[0].parent, 42);
  ASSERT_TRUE(host.boxes[0].placedAt.has_value());
  EXPECT_EQ(*host.boxes[0].placedAt, (Rect{400, 350, 200, 100}));
  EXPECT_TRUE(messages.empty());
}

TEST_F(MsgBoxAutoCenterTest, ReportsAMissingParentAndShowsTheBoxUncentred) {
  AutoCenter::MsgBoxAutoCenter(0, "prompt", MsgBoxStyle::OKOnly, "title");
  ASSERT_EQ(host.boxes.size(), 1u);
  EXPECT_FALSE(host.boxes[0].placedAt.has_value());
  ASSERT_EQ(messages.size(), 1u);
  EXPECT_NE(messages[0].find("Assertion: m_hwndParent <> 0\r\n"), std::string::npos);
  EXPECT_NE(messages[0].find("File: Cvn73100CtrlLib::MsgBoxAutoCenter\r\n"), std::string::npos);
}

TEST_F(MsgBoxAutoCenterTest, PassesTheHelpFileOnlyWithAContext) {
  AutoCenter::MsgBoxAutoCenter(1, "p", 0, "t", "Cvn73100.hlp", 0);
  AutoCenter::MsgBoxAutoCenter(1, "p", 0, "t", "", 7);
  AutoCenter::MsgBoxAutoCenter(1, "p", 0, "t", "Cvn73100.hlp", 7);
  ASSERT_EQ(host.boxes.size(), 3u);
  EXPECT_EQ(host.boxes[0].helpFile, "");
  EXPECT_EQ(host.boxes[1].helpContext, 0);
  EXPECT_EQ(host.boxes[2].helpFile, "Cvn73100.hlp");
  EXPECT_EQ(host.boxes[2].helpContext, 7);
}

}  // namespace
}  // namespace cvn73100
