#include "cli/PngPlot.h"

#include <png.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <utility>

#include "cli/AtomicFile.h"
#include "cli/CliContext.h"

namespace cvn73100 {
namespace {

// The graticule: 10 x 8 divisions, as on the instrument's screen.
constexpr int DIVISIONS_X = 10;
constexpr int DIVISIONS_Y = 8;
constexpr int PLOT_LEFT = PngPlot::PLOT_LEFT;
constexpr int PLOT_TOP = PngPlot::PLOT_TOP;
constexpr int PLOT_WIDTH = PngPlot::PLOT_WIDTH;
constexpr int PLOT_HEIGHT = PngPlot::PLOT_HEIGHT;
constexpr int DIVISION_WIDTH = PLOT_WIDTH / DIVISIONS_X;
constexpr int DIVISION_HEIGHT = PLOT_HEIGHT / DIVISIONS_Y;
constexpr int TEXT_SCALE = 2;

struct Colour {
  std::uint8_t r, g, b;
};
constexpr Colour PAPER{255, 255, 255};
constexpr Colour SCREEN{16, 20, 28};
constexpr Colour GRID{58, 64, 78};
constexpr Colour AXIS{104, 110, 126};
constexpr Colour TRACE{PngPlot::TRACE_COLOUR[0], PngPlot::TRACE_COLOUR[1], PngPlot::TRACE_COLOUR[2]};
constexpr Colour INK{24, 24, 24};

// A 5 x 7 pixel font for the labels: digits, capitals, a few signs and the lower-case letters of units.
struct Glyph {
  char c;
  std::array<const char*, 7> rows;
};
constexpr Glyph FONT[] = {
    {'0', {" ### ", "#   #", "#  ##", "# # #", "##  #", "#   #", " ### "}},
    {'1', {"  #  ", " ##  ", "  #  ", "  #  ", "  #  ", "  #  ", " ### "}},
    {'2', {" ### ", "#   #", "    #", "   # ", "  #  ", " #   ", "#####"}},
    {'3', {"#####", "   # ", "  #  ", "   # ", "    #", "#   #", " ### "}},
    {'4', {"   # ", "  ## ", " # # ", "#  # ", "#####", "   # ", "   # "}},
    {'5', {"#####", "#    ", "#### ", "    #", "    #", "#   #", " ### "}},
    {'6', {"  ## ", " #   ", "#    ", "#### ", "#   #", "#   #", " ### "}},
    {'7', {"#####", "    #", "   # ", "  #  ", " #   ", " #   ", " #   "}},
    {'8', {" ### ", "#   #", "#   #", " ### ", "#   #", "#   #", " ### "}},
    {'9', {" ### ", "#   #", "#   #", " ####", "    #", "   # ", " ##  "}},
    {'.', {"     ", "     ", "     ", "     ", "     ", " ##  ", " ##  "}},
    {'-', {"     ", "     ", "     ", "#####", "     ", "     ", "     "}},
    {'+', {"     ", "  #  ", "  #  ", "#####", "  #  ", "  #  ", "     "}},
    {':', {"     ", " ##  ", " ##  ", "     ", " ##  ", " ##  ", "     "}},
    {'/', {"     ", "    #", "   # ", "  #  ", " #   ", "#    ", "     "}},
    {'=', {"     ", "     ", "#####", "     ", "#####", "     ", "     "}},
    {',', {"     ", "     ", "     ", "     ", " ##  ", "  #  ", " #   "}},
    {'(', {"   # ", "  #  ", " #   ", " #   ", " #   ", "  #  ", "   # "}},
    {')', {" #   ", "  #  ", "   # ", "   # ", "   # ", "  #  ", " #   "}},
    {'A', {" ### ", "#   #", "#   #", "#####", "#   #", "#   #", "#   #"}},
    {'B', {"#### ", "#   #", "#   #", "#### ", "#   #", "#   #", "#### "}},
    {'C', {" ### ", "#   #", "#    ", "#    ", "#    ", "#   #", " ### "}},
    {'D', {"###  ", "#  # ", "#   #", "#   #", "#   #", "#  # ", "###  "}},
    {'E', {"#####", "#    ", "#    ", "#### ", "#    ", "#    ", "#####"}},
    {'F', {"#####", "#    ", "#    ", "#### ", "#    ", "#    ", "#    "}},
    {'G', {" ### ", "#   #", "#    ", "# ###", "#   #", "#   #", " ####"}},
    {'H', {"#   #", "#   #", "#   #", "#####", "#   #", "#   #", "#   #"}},
    {'I', {" ### ", "  #  ", "  #  ", "  #  ", "  #  ", "  #  ", " ### "}},
    {'J', {"  ###", "   # ", "   # ", "   # ", "   # ", "#  # ", " ##  "}},
    {'K', {"#   #", "#  # ", "# #  ", "##   ", "# #  ", "#  # ", "#   #"}},
    {'L', {"#    ", "#    ", "#    ", "#    ", "#    ", "#    ", "#####"}},
    {'M', {"#   #", "## ##", "# # #", "# # #", "#   #", "#   #", "#   #"}},
    {'N', {"#   #", "#   #", "##  #", "# # #", "#  ##", "#   #", "#   #"}},
    {'O', {" ### ", "#   #", "#   #", "#   #", "#   #", "#   #", " ### "}},
    {'P', {"#### ", "#   #", "#   #", "#### ", "#    ", "#    ", "#    "}},
    {'Q', {" ### ", "#   #", "#   #", "#   #", "# # #", "#  # ", " ## #"}},
    {'R', {"#### ", "#   #", "#   #", "#### ", "# #  ", "#  # ", "#   #"}},
    {'S', {" ####", "#    ", "#    ", " ### ", "    #", "    #", "#### "}},
    {'T', {"#####", "  #  ", "  #  ", "  #  ", "  #  ", "  #  ", "  #  "}},
    {'U', {"#   #", "#   #", "#   #", "#   #", "#   #", "#   #", " ### "}},
    {'V', {"#   #", "#   #", "#   #", "#   #", "#   #", " # # ", "  #  "}},
    {'W', {"#   #", "#   #", "#   #", "# # #", "# # #", "# # #", " # # "}},
    {'X', {"#   #", "#   #", " # # ", "  #  ", " # # ", "#   #", "#   #"}},
    {'Y', {"#   #", "#   #", " # # ", "  #  ", "  #  ", "  #  ", "  #  "}},
    {'Z', {"#####", "    #", "   # ", "  #  ", " #   ", "#    ", "#####"}},
    {'m', {"     ", "     ", "## # ", "# # #", "# # #", "#   #", "#   #"}},
    {'s', {"     ", "     ", " ####", "#    ", " ### ", "    #", "#### "}},
    {'u', {"     ", "     ", "#   #", "#   #", "#   #", "#  ##", " ## #"}},
    {'n', {"     ", "     ", "# ## ", "##  #", "#   #", "#   #", "#   #"}},
    {'p', {"     ", "     ", "#### ", "#   #", "#### ", "#    ", "#    "}},
};

const Glyph* FindGlyph(char c) {
  for (const auto& glyph : FONT)
    if (glyph.c == c) return &glyph;
  const char upper = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  for (const auto& glyph : FONT)
    if (glyph.c == upper) return &glyph;
  return nullptr;  // a space, or a sign the font lacks
}

class Canvas {
 public:
  Canvas(int width, int height) : m_width(width), m_height(height), m_pixels(std::size_t(width) * height * 3) {}

  void Set(int x, int y, Colour c) {
    if (x < 0 || y < 0 || x >= m_width || y >= m_height) return;
    const std::size_t i = (std::size_t(y) * m_width + x) * 3;
    m_pixels[i] = c.r;
    m_pixels[i + 1] = c.g;
    m_pixels[i + 2] = c.b;
  }
  void Fill(int x, int y, int w, int h, Colour c) {
    for (int j = y; j < y + h; ++j)
      for (int i = x; i < x + w; ++i) Set(i, j, c);
  }
  void HLine(int x0, int x1, int y, Colour c, int dash = 0) {
    for (int x = x0; x <= x1; ++x)
      if (dash == 0 || (x - x0) % dash < dash / 2) Set(x, y, c);
  }
  void VLine(int x, int y0, int y1, Colour c, int dash = 0) {
    for (int y = y0; y <= y1; ++y)
      if (dash == 0 || (y - y0) % dash < dash / 2) Set(x, y, c);
  }
  // A line two pixels wide, clipped to [clipTop, clipBottom].
  void Line(int x0, int y0, int x1, int y1, Colour c, int clipTop, int clipBottom) {
    const int dx = std::abs(x1 - x0), sx = x0 < x1 ? 1 : -1;
    const int dy = -std::abs(y1 - y0), sy = y0 < y1 ? 1 : -1;
    int error = dx + dy;
    while (true) {
      for (int t = 0; t < 2; ++t) {
        const int y = y0 + t;
        if (y >= clipTop && y <= clipBottom) Set(x0, y, c);
      }
      if (x0 == x1 && y0 == y1) break;
      const int e2 = 2 * error;
      if (e2 >= dy) {
        error += dy;
        x0 += sx;
      }
      if (e2 <= dx) {
        error += dx;
        y0 += sy;
      }
    }
  }
  static int TextWidth(const std::string& text) { return static_cast<int>(text.size()) * 6 * TEXT_SCALE; }
  void Text(int x, int y, const std::string& text, Colour c) {
    for (char ch : text) {
      if (const Glyph* glyph = FindGlyph(ch)) {
        for (int row = 0; row < 7; ++row)
          for (int col = 0; col < 5; ++col)
            if (glyph->rows[static_cast<std::size_t>(row)][col] == '#')
              Fill(x + col * TEXT_SCALE, y + row * TEXT_SCALE, TEXT_SCALE, TEXT_SCALE, c);
      }
      x += 6 * TEXT_SCALE;
    }
  }

  std::vector<std::uint8_t>& Pixels() { return m_pixels; }

 private:
  int m_width;
  int m_height;
  std::vector<std::uint8_t> m_pixels;
};

// A value in the unit that suits `span`: "-500 us", "0.25 V".
std::string WithUnit(double value, double span, const char* unit) {
  static constexpr std::pair<double, const char*> PREFIXES[] = {{1.0, ""}, {1e-3, "m"}, {1e-6, "u"}, {1e-9, "n"}};
  double scale = 1e-12;
  const char* prefix = "p";
  for (const auto& [factor, name] : PREFIXES) {
    if (std::abs(span) >= factor) {
      scale = factor;
      prefix = name;
      break;
    }
  }
  double scaled = value / scale;
  if (std::abs(scaled) < 1e-9) scaled = 0.0;
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%.4g %s%s", scaled, prefix, unit);
  return buffer;
}

void AppendData(png_structp png, png_bytep data, png_size_t length) {
  static_cast<std::string*>(png_get_io_ptr(png))->append(reinterpret_cast<const char*>(data), length);
}

void FlushNothing(png_structp) {}

// False when libpng gives up.
bool EncodeRgb(const std::vector<std::uint8_t>& pixels, int width, int height, std::string* out) {
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  if (!png) return false;
  png_infop info = png_create_info_struct(png);
  if (!info) {
    png_destroy_write_struct(&png, nullptr);
    return false;
  }
  if (setjmp(png_jmpbuf(png))) {
    png_destroy_write_struct(&png, &info);
    return false;
  }
  png_set_write_fn(png, out, AppendData, FlushNothing);
  png_set_IHDR(png, info, static_cast<png_uint_32>(width), static_cast<png_uint_32>(height), 8, PNG_COLOR_TYPE_RGB,
               PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  png_write_info(png, info);
  for (int y = 0; y < height; ++y)
    png_write_row(png, const_cast<png_bytep>(pixels.data() + std::size_t(y) * std::size_t(width) * 3));
  png_write_end(png, nullptr);
  png_destroy_write_struct(&png, &info);
  return true;
}

}  // namespace

PngPlot::PngPlot(std::vector<double> seconds, std::vector<double> volts, std::string title)
    : m_seconds(std::move(seconds)), m_volts(std::move(volts)), m_title(std::move(title)) {
  m_volts.resize(std::min(m_volts.size(), m_seconds.size()));
  m_seconds.resize(m_volts.size());
}

std::vector<std::uint8_t> PngPlot::Render() const {
  Canvas canvas(WIDTH, HEIGHT);
  canvas.Fill(0, 0, WIDTH, HEIGHT, PAPER);
  canvas.Fill(PLOT_LEFT, PLOT_TOP, PLOT_WIDTH + 1, PLOT_HEIGHT + 1, SCREEN);
  for (int i = 0; i <= DIVISIONS_X; ++i) {
    const bool centre = i == DIVISIONS_X / 2;
    canvas.VLine(PLOT_LEFT + i * DIVISION_WIDTH, PLOT_TOP, PLOT_TOP + PLOT_HEIGHT, centre ? AXIS : GRID,
                 centre || i == 0 || i == DIVISIONS_X ? 0 : 4);
  }
  for (int j = 0; j <= DIVISIONS_Y; ++j) {
    const bool centre = j == DIVISIONS_Y / 2;
    canvas.HLine(PLOT_LEFT, PLOT_LEFT + PLOT_WIDTH, PLOT_TOP + j * DIVISION_HEIGHT, centre ? AXIS : GRID,
                 centre || j == 0 || j == DIVISIONS_Y ? 0 : 4);
  }

  const std::size_t n = m_seconds.size();
  const double t0 = n > 0 ? m_seconds.front() : 0.0;
  // The record covers n sample intervals: the last sample is one interval short of the screen's edge.
  const double t1 =
      n > 1 ? t0 + (m_seconds.back() - t0) * static_cast<double>(n) / static_cast<double>(n - 1) : t0 + 1.0;
  double low = 0.0, high = 0.0;
  if (n > 0) {
    const auto [minIt, maxIt] = std::minmax_element(m_volts.begin(), m_volts.end());
    low = *minIt;
    high = *maxIt;
  }
  const double margin = (high - low) * 0.1;
  if (high - low < 1e-12) {
    low -= 0.5;
    high += 0.5;
  } else {
    low -= margin;
    high += margin;
  }
  const double span = t1 - t0 != 0.0 ? t1 - t0 : 1.0;
  const auto px = [&](double t) { return PLOT_LEFT + static_cast<int>(std::lround((t - t0) / span * PLOT_WIDTH)); };
  const auto py = [&](double v) {
    return PLOT_TOP + static_cast<int>(std::lround((high - v) / (high - low) * PLOT_HEIGHT));
  };
  for (std::size_t i = 1; i < n; ++i) {
    canvas.Line(px(m_seconds[i - 1]), py(m_volts[i - 1]), px(m_seconds[i]), py(m_volts[i]), TRACE, PLOT_TOP,
                PLOT_TOP + PLOT_HEIGHT);
  }

  const double voltSpan = high - low;
  const double timeSpan = span;
  canvas.Text(PLOT_LEFT, 14,
              m_title + "   " + WithUnit(timeSpan / DIVISIONS_X, timeSpan / DIVISIONS_X, "s") + "/DIV   " +
                  WithUnit(voltSpan / DIVISIONS_Y, voltSpan / DIVISIONS_Y, "V") + "/DIV",
              INK);
  const int glyphHeight = 7 * TEXT_SCALE;
  const double voltLabels[] = {high, (high + low) / 2, low};
  for (int k = 0; k < 3; ++k) {
    const std::string label = WithUnit(voltLabels[k], voltSpan, "V");
    const int y = PLOT_TOP + k * PLOT_HEIGHT / 2 - glyphHeight / 2;
    canvas.Text(PLOT_LEFT - 8 - Canvas::TextWidth(label), y, label, INK);
  }
  const double timeLabels[] = {t0, (t0 + t1) / 2, t1};
  for (int k = 0; k < 3; ++k) {
    const std::string label = WithUnit(timeLabels[k], timeSpan, "s");
    const int centre = PLOT_LEFT + k * PLOT_WIDTH / 2;
    const int x = std::clamp(centre - Canvas::TextWidth(label) / 2, 4, WIDTH - 4 - Canvas::TextWidth(label));
    canvas.Text(x, PLOT_TOP + PLOT_HEIGHT + 16, label, INK);
  }
  return std::move(canvas.Pixels());
}

std::string PngPlot::Encode() const {
  const std::vector<std::uint8_t> pixels = Render();
  std::string png;
  if (!EncodeRgb(pixels, WIDTH, HEIGHT, &png)) throw ScopeError(75, CLI_SOURCE, "The PNG encoder failed.");
  return png;
}

void PngPlot::Save(const std::string& path) const { WriteFileAtomically(path, Encode(), "Plot"); }

}  // namespace cvn73100
