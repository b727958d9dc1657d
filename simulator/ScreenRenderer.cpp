#include "simulator/ScreenRenderer.h"

#include <algorithm>

#include "simulator/Waveform.h"

namespace cvn73100::sim {
namespace {

constexpr Rgb kPalette[] = {{0, 0, 0},    {70, 70, 70},  {170, 170, 170}, {255, 230, 0},
                            {0, 220, 90}, {0, 190, 255}, {255, 80, 200},  {255, 150, 40}};

// The graticule: 10 divisions of 60 pixels across, 8 of 50 pixels down.
constexpr int kLeft = 20, kTop = 40, kDivX = 60, kDivY = 50;
constexpr int kGridWidth = 10 * kDivX, kGridHeight = 8 * kDivY;

class Canvas {
 public:
  explicit Canvas(Raster& r) : r_(r) {}
  void Plot(int x, int y, std::uint8_t colour) {
    if (x >= 0 && y >= 0 && x < r_.width && y < r_.height)
      r_.pixels[static_cast<std::size_t>(y * r_.width + x)] = colour;
  }
  void Column(int x, int y0, int y1, std::uint8_t colour) {
    for (int y = std::min(y0, y1); y <= std::max(y0, y1); ++y) Plot(x, y, colour);
  }
  void Fill(int x0, int y0, int w, int h, std::uint8_t colour) {
    for (int y = y0; y < y0 + h; ++y) {
      for (int x = x0; x < x0 + w; ++x) Plot(x, y, colour);
    }
  }

 private:
  Raster& r_;
};

void DrawGraticule(Canvas& c) {
  for (int k = 0; k <= 10; ++k) {
    const int x = kLeft + k * kDivX;
    for (int y = kTop; y <= kTop + kGridHeight; y += (k == 0 || k == 10) ? 1 : 5) {
      c.Plot(x, y, k == 0 || k == 10 ? ScreenRenderer::kFrame : ScreenRenderer::kGrid);
    }
  }
  for (int k = 0; k <= 8; ++k) {
    const int y = kTop + k * kDivY;
    for (int x = kLeft; x <= kLeft + kGridWidth; x += (k == 0 || k == 8) ? 1 : 5) {
      c.Plot(x, y, k == 0 || k == 8 ? ScreenRenderer::kFrame : ScreenRenderer::kGrid);
    }
  }
  // Minor ticks on the centre axes.
  for (int x = kLeft; x <= kLeft + kGridWidth; x += kDivX / 5)
    c.Column(x, kTop + kGridHeight / 2 - 2, kTop + kGridHeight / 2 + 2, ScreenRenderer::kFrame);
  for (int y = kTop; y <= kTop + kGridHeight; y += kDivY / 5)
    c.Fill(kLeft + kGridWidth / 2 - 2, y, 5, 1, ScreenRenderer::kFrame);
}

}  // namespace

std::span<const Rgb> ScreenRenderer::Palette() { return kPalette; }

Raster ScreenRenderer::Render(const ScopeState& state) {
  Raster raster{kWidth, kHeight, std::vector<std::uint8_t>(static_cast<std::size_t>(kWidth * kHeight), kBackground)};
  Canvas canvas(raster);
  DrawGraticule(canvas);

  ScopeState timing = state;
  timing.waveformPoints = kGridWidth;  // one sample per pixel column
  const Preamble p = Waveform::MakePreamble(timing);
  for (int ch = 1; ch <= 4; ++ch) {
    const ChannelSettings& settings = state.channel[static_cast<std::size_t>(ch - 1)];
    if (settings.display == 0) continue;
    const auto colour = static_cast<std::uint8_t>(kChannel1 + ch - 1);
    canvas.Fill(kLeft + (ch - 1) * 40, 14, 30, 14, colour);
    int previous = -1;
    for (int x = 0; x < kGridWidth; ++x) {
      const double volts = Waveform::ChannelVolts(state, ch, Waveform::SampleTime(p, x));
      const double pixels =
          std::clamp((volts - settings.offset) / settings.range * kGridHeight, -1.0 * kGridHeight, 1.0 * kGridHeight);
      const int y = std::clamp(kTop + kGridHeight / 2 - static_cast<int>(pixels), kTop, kTop + kGridHeight);
      canvas.Column(kLeft + x, previous < 0 ? y : previous, y, colour);
      previous = y;
    }
  }

  int lane = 0;
  for (int bit = 0; bit < 16; ++bit) {
    if (state.digitalDisplay[static_cast<std::size_t>(bit)] == 0) continue;
    const int laneTop = kTop + kGridHeight - (++lane) * 14;
    int previous = -1;
    for (int x = 0; x < kGridWidth; ++x) {
      const bool high = ((Waveform::LogicWord(Waveform::SampleTime(p, x)) >> bit) & 1) != 0;
      const int y = high ? laneTop + 2 : laneTop + 11;
      canvas.Column(kLeft + x, previous < 0 ? y : previous, y, kLogic);
      previous = y;
    }
  }
  return raster;
}

}  // namespace cvn73100::sim
