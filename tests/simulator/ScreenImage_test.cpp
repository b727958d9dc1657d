// :DISPlay:DATA? images: real files whose pixels show the graticule and exactly the displayed traces.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "simulator/Block.h"
#include "simulator/ErrorCode.h"
#include "simulator/Instrument.h"
#include "simulator/ScreenRenderer.h"

namespace cvn73100::sim {
namespace {

std::uint32_t Little(const std::string& s, std::size_t at, int bytes) {
  std::uint32_t v = 0;
  for (int i = bytes - 1; i >= 0; --i) v = (v << 8) | static_cast<std::uint8_t>(s[at + static_cast<std::size_t>(i)]);
  return v;
}

// A decoded 24-bit BMP: the colour at (x, y), y counted from the top.
class Bitmap {
 public:
  explicit Bitmap(std::string file) : file_(std::move(file)) {}
  bool Valid() const {
    return file_.size() > 54 && file_.compare(0, 2, "BM") == 0 && Little(file_, 2, 4) == file_.size() &&
           Little(file_, 18, 4) == 640 && Little(file_, 22, 4) == 480 && Little(file_, 28, 2) == 24;
  }
  Rgb At(int x, int y) const {
    const std::size_t row = static_cast<std::size_t>(479 - y) * ((640 * 3 + 3) & ~3);
    const std::size_t at = Little(file_, 10, 4) + row + static_cast<std::size_t>(x) * 3;
    return {static_cast<std::uint8_t>(file_[at + 2]), static_cast<std::uint8_t>(file_[at + 1]),
            static_cast<std::uint8_t>(file_[at])};
  }
  // Rows of the graticule (40..440) in which the colour occurs, as [first, last]; {-1, -1} when it does not.
  std::pair<int, int> RowsOf(ScreenRenderer::Colour colour) const {
    const Rgb want = ScreenRenderer::Palette()[colour];
    std::pair<int, int> rows{-1, -1};
    for (int y = 40; y <= 440; ++y) {
      for (int x = 0; x < 640; ++x) {
        const Rgb c = At(x, y);
        if (c.r == want.r && c.g == want.g && c.b == want.b) {
          if (rows.first < 0) rows.first = y;
          rows.second = y;
        }
      }
    }
    return rows;
  }

 private:
  std::string file_;
};

Bitmap Screen(Instrument& scope) {
  const std::string reply = scope.Query(":DISPlay:DATA? BMP");
  const auto block = Block::Parse(reply);
  EXPECT_TRUE(block.has_value());
  return Bitmap(block ? std::string(*block) : std::string());
}

TEST(ScreenImage, BitmapShowsOnlyTheDisplayedTraces) {
  Instrument scope;
  Bitmap screen = Screen(scope);
  ASSERT_TRUE(screen.Valid());
  // Channel 1 (1 V peak, 8 V over 400 pixels) swings 50 pixels about the centre row 240.
  const auto ch1 = screen.RowsOf(ScreenRenderer::kChannel1);
  EXPECT_NEAR(ch1.second, 240 + 50, 2);
  EXPECT_EQ(screen.RowsOf(ScreenRenderer::kChannel2).first, -1);
  EXPECT_EQ(screen.RowsOf(ScreenRenderer::kLogic).first, -1);
  EXPECT_NE(screen.RowsOf(ScreenRenderer::kGrid).first, -1);
  const Rgb corner = screen.At(20, 40);  // the graticule frame
  EXPECT_EQ(corner.r, ScreenRenderer::Palette()[ScreenRenderer::kFrame].r);

  scope.Send(":CHAN1:DISP 0;:CHAN2:DISP 1;RANG 2;:DIG3:DISP 1");
  screen = Screen(scope);
  EXPECT_EQ(screen.RowsOf(ScreenRenderer::kChannel1).first, -1);
  // Channel 2 steps between 0 V (row 240) and 1 V (row 40: 2 V over 400 pixels).
  const auto ch2 = screen.RowsOf(ScreenRenderer::kChannel2);
  EXPECT_EQ(ch2.first, 40);
  EXPECT_EQ(ch2.second, 240);
  EXPECT_NE(screen.RowsOf(ScreenRenderer::kLogic).first, -1);
}

struct FormatCase {
  std::string argument;
  std::string magic;
};

class ImageFormats : public ::testing::TestWithParam<FormatCase> {};

TEST_P(ImageFormats, AnswerTheirFileFormat) {
  Instrument scope;
  const std::string reply = scope.Query(":DISP:DATA? " + GetParam().argument);
  const auto block = Block::Parse(reply);
  ASSERT_TRUE(block.has_value());
  EXPECT_EQ(block->substr(0, GetParam().magic.size()), GetParam().magic);
  EXPECT_GT(block->size(), 1000u);
}

INSTANTIATE_TEST_SUITE_P(Files, ImageFormats,
                         ::testing::Values(FormatCase{"", "BM"}, FormatCase{"0", "BM"}, FormatCase{"GIF", "GIF8"},
                                           FormatCase{"3", "GIF8"}, FormatCase{"TIFF", std::string("II*\0", 4)},
                                           FormatCase{"6", std::string("II*\0", 4)}, FormatCase{"JPEG", "\xFF\xD8\xFF"},
                                           FormatCase{"7", "\xFF\xD8\xFF"}));

TEST(ScreenImage, MetafileFormatsAreRefused) {
  Instrument scope;
  EXPECT_EQ(scope.Query(":DISP:DATA? EMF;:DISP:DATA? 4", std::chrono::milliseconds(20)), "");
  EXPECT_EQ(scope.Errors(), (std::vector<int>{kIllegalParameterValue, kIllegalParameterValue}));
}

}  // namespace
}  // namespace cvn73100::sim
