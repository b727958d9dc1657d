#pragma once
#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace cvn73100 {

// A plot of one waveform as a PNG image: the trace over a 10 x 8 division graticule, as the instrument's
// screen shows it, with the time and voltage of the grid's edges and a title.
class PngPlot {
 public:
  static constexpr int WIDTH = 800;
  static constexpr int HEIGHT = 490;
  // Where the graticule lies in the image (pixels): 10 divisions of 70 across, 8 of 50 down.
  static constexpr int PLOT_LEFT = 80;
  static constexpr int PLOT_TOP = 44;
  static constexpr int PLOT_WIDTH = 700;
  static constexpr int PLOT_HEIGHT = 400;
  // The trace's colour, red, green, blue.
  static constexpr std::array<std::uint8_t, 3> TRACE_COLOUR{255, 208, 0};

  // `seconds` and `volts` have the same length (at least 2 points). The vertical scale frames the trace
  // with a margin; a flat trace gets one volt around it.
  PngPlot(std::vector<double> seconds, std::vector<double> volts, std::string title);

  // The encoded PNG file.
  std::string Encode() const;
  // Writes the PNG whole or not at all; raises a ScopeError on failure.
  void Save(const std::string& path) const;

  // The RGB pixels, row by row (exposed for the tests).
  std::vector<std::uint8_t> Render() const;

 private:
  std::vector<double> m_seconds;
  std::vector<double> m_volts;
  std::string m_title;
};

}  // namespace cvn73100
