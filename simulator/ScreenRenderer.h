#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "simulator/ScopeState.h"

namespace cvn73100::sim {

struct Rgb {
  std::uint8_t r, g, b;
};

// A palette image: one palette index per pixel, rows from top to bottom.
struct Raster {
  int width = 0;
  int height = 0;
  std::vector<std::uint8_t> pixels;
};

// Draws the screen: the 10 x 8 division graticule, a marker per displayed channel, the displayed analog
// traces from the signal formula, and the displayed logic bits in lanes at the bottom.
class ScreenRenderer {
 public:
  static constexpr int kWidth = 640;
  static constexpr int kHeight = 480;
  enum Colour : std::uint8_t { kBackground, kGrid, kFrame, kChannel1, kChannel2, kChannel3, kChannel4, kLogic };

  static std::span<const Rgb> Palette();
  static Raster Render(const ScopeState& state);
};

}  // namespace cvn73100::sim
