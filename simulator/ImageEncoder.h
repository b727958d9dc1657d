#pragma once

#include <optional>
#include <span>
#include <string>

#include "simulator/ScreenRenderer.h"

namespace cvn73100::sim {

// Screen image formats by the numbers a host sends.
enum class ImageFormat : int { Bmp = 0, Gif = 3, Wmf = 4, Emf = 5, Tif = 6, Jpg = 7 };

// Encodes a palette image into a file format. BMP (24-bit, uncompressed) is written here; GIF, TIFF (RGB, LZW)
// and JPEG go through giflib, libtiff and libjpeg. WMF and EMF are metafile formats no Debian library writes,
// so they are not offered.
class ImageEncoder {
 public:
  static bool Supports(ImageFormat format);
  // The encoded file, or nullopt when the format is not offered or the library fails.
  static std::optional<std::string> Encode(const Raster& raster, std::span<const Rgb> palette, ImageFormat format);
};

}  // namespace cvn73100::sim
