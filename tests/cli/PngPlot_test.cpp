#include "cli/PngPlot.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace cvn73100 {
namespace {

bool IsTrace(const std::vector<std::uint8_t>& pixels, int x, int y) {
  const std::size_t i = (static_cast<std::size_t>(y) * PngPlot::WIDTH + static_cast<std::size_t>(x)) * 3;
  return pixels[i] == PngPlot::TRACE_COLOUR[0] && pixels[i + 1] == PngPlot::TRACE_COLOUR[1] &&
         pixels[i + 2] == PngPlot::TRACE_COLOUR[2];
}

// The topmost and bottommost trace pixel of each column of the graticule; -1 where the column has none.
struct Extent {
  int top = -1;
  int bottom = -1;
};
std::vector<Extent> Columns(const std::vector<std::uint8_t>& pixels) {
  std::vector<Extent> columns(PngPlot::PLOT_WIDTH);
  for (int x = 0; x < PngPlot::PLOT_WIDTH; ++x) {
    for (int y = PngPlot::PLOT_TOP; y <= PngPlot::PLOT_TOP + PngPlot::PLOT_HEIGHT + 1; ++y) {
      if (!IsTrace(pixels, PngPlot::PLOT_LEFT + x, y)) continue;
      if (columns[x].top < 0) columns[x].top = y;
      columns[x].bottom = y;
    }
  }
  return columns;
}

struct Record {
  std::vector<double> seconds, volts;
};
Record Sampled(int n, double (*signal)(double)) {
  Record r;
  for (int i = 0; i < n; ++i) {
    const double t = -0.5e-3 + i * (1e-3 / n);
    r.seconds.push_back(t);
    r.volts.push_back(signal(t));
  }
  return r;
}

TEST(PngPlot, SineFillsTheScreenAcrossWithItsPeaksInsideTheMargin) {
  const Record r = Sampled(1000, [](double t) { return std::sin(2 * std::numbers::pi * 1000 * t); });
  const auto columns = Columns(PngPlot(r.seconds, r.volts, "CH1").Render());
  int top = PngPlot::HEIGHT, bottom = 0;
  for (int x = 0; x < PngPlot::PLOT_WIDTH; ++x) {
    ASSERT_GE(columns[x].top, 0) << "the trace has a gap at column " << x;
    top = std::min(top, columns[x].top);
    bottom = std::max(bottom, columns[x].bottom);
  }
  // A tenth of the swing as margin: +1 V sits 1/12 of the height below the top, -1 V as far above the bottom.
  const int margin = PngPlot::PLOT_HEIGHT / 12;
  EXPECT_NEAR(top, PngPlot::PLOT_TOP + margin, 2);
  EXPECT_NEAR(bottom, PngPlot::PLOT_TOP + PngPlot::PLOT_HEIGHT - margin, 3);
  // The sine starts at 0 V going down: the first column sits on the centre line, the quarter period at the bottom.
  EXPECT_NEAR(columns[0].top, PngPlot::PLOT_TOP + PngPlot::PLOT_HEIGHT / 2, 2);
  EXPECT_NEAR(columns[PngPlot::PLOT_WIDTH / 4].bottom, bottom, 3);
}

TEST(PngPlot, FlatTraceIsDrawnOnTheCentreLine) {
  const Record r = Sampled(100, [](double) { return 0.3; });
  const auto columns = Columns(PngPlot(r.seconds, r.volts, "FLAT").Render());
  for (int x : {0, PngPlot::PLOT_WIDTH / 2, PngPlot::PLOT_WIDTH - 10})
    EXPECT_NEAR(columns[x].top, PngPlot::PLOT_TOP + PngPlot::PLOT_HEIGHT / 2, 1) << x;
}

TEST(PngPlot, EncodesAPngOfItsSize) {
  const Record r = Sampled(100, [](double t) { return t * 1000; });
  const std::string png = PngPlot(r.seconds, r.volts, "RAMP").Encode();
  ASSERT_GT(png.size(), 33u);
  EXPECT_EQ(png.substr(0, 8), "\x89PNG\r\n\x1a\n");
  const auto be32 = [&](std::size_t at) {
    return (std::uint32_t(std::uint8_t(png[at])) << 24) | (std::uint32_t(std::uint8_t(png[at + 1])) << 16) |
           (std::uint32_t(std::uint8_t(png[at + 2])) << 8) | std::uint32_t(std::uint8_t(png[at + 3]));
  };
  EXPECT_EQ(png.substr(12, 4), "IHDR");
  EXPECT_EQ(be32(16), static_cast<std::uint32_t>(PngPlot::WIDTH));
  EXPECT_EQ(be32(20), static_cast<std::uint32_t>(PngPlot::HEIGHT));
}

}  // namespace
}  // namespace cvn73100
