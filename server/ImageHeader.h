#pragma once
#include <cstdint>
#include <string>

#include "platform/AutomationServer.h"

namespace cvn73100::server {

// What the start of an encoded screen image says about it.
struct ImageHeader {
  std::string mimeType;
  std::int32_t width = 0;
  std::int32_t height = 0;

  // Reads the signature and the pixel size of an image of `format` (BMP, GIF, TIFF or JPEG). Raises
  // SERVERERR_BAD_REPLY when the bytes are not such an image or its size cannot be found within them.
  static ImageHeader Read(Cvn73100_ImageFormat format, const Bytes& data);
  // The instrument's keyword for `format`; raises SERVERERR_BAD_ARGUMENT for a format the family cannot send.
  static const char* Keyword(Cvn73100_ImageFormat format);
};

}  // namespace cvn73100::server
