#include "server/ImageHeader.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>

#include "server/ServerError.h"

namespace cvn73100::server {
namespace {

// Bounds-checked little- and big-endian readers: the image is outside input.
struct Reader {
  const Bytes& data;
  bool Has(std::size_t offset, std::size_t size) const { return offset <= data.size() && size <= data.size() - offset; }
  std::uint32_t U16(std::size_t offset, bool little) const {
    if (!Has(offset, 2)) Fail("truncated header");
    return little ? data[offset] | data[offset + 1] << 8 : data[offset] << 8 | data[offset + 1];
  }
  std::uint32_t U32(std::size_t offset, bool little) const {
    const std::uint32_t a = U16(offset, little);
    const std::uint32_t b = U16(offset + 2, little);
    return little ? a | b << 16 : a << 16 | b;
  }
  [[noreturn]] static void Fail(const std::string& why) {
    throw ServerError(SERVERERR_BAD_REPLY, "screen image: " + why);
  }
};

bool StartsWith(const Bytes& data, std::string_view signature) {
  return data.size() >= signature.size() &&
         std::equal(signature.begin(), signature.end(), data.begin(),
                    [](char expected, std::uint8_t actual) { return static_cast<std::uint8_t>(expected) == actual; });
}

ImageHeader Bmp(const Reader& r) {
  if (!StartsWith(r.data, "BM")) Reader::Fail("no BMP signature");
  const auto width = static_cast<std::int32_t>(r.U32(18, true));
  const auto height = static_cast<std::int32_t>(r.U32(22, true));  // negative: rows stored top-down
  return {"image/bmp", width, height == INT32_MIN ? 0 : std::abs(height)};
}

ImageHeader Gif(const Reader& r) {
  if (!StartsWith(r.data, "GIF87a") && !StartsWith(r.data, "GIF89a")) Reader::Fail("no GIF signature");
  return {"image/gif", static_cast<std::int32_t>(r.U16(6, true)), static_cast<std::int32_t>(r.U16(8, true))};
}

ImageHeader Tiff(const Reader& r) {
  bool little = true;
  if (StartsWith(r.data, std::string_view("II*\0", 4))) {
    little = true;
  } else if (StartsWith(r.data, std::string_view("MM\0*", 4))) {
    little = false;
  } else {
    Reader::Fail("no TIFF signature");
  }
  const std::size_t ifd = r.U32(4, little);
  const std::uint32_t entries = r.U16(ifd, little);
  ImageHeader header{"image/tiff", 0, 0};
  for (std::uint32_t i = 0; i < entries; ++i) {
    const std::size_t entry = ifd + 2 + std::size_t{12} * i;
    const std::uint32_t tag = r.U16(entry, little);
    if (tag != 256 && tag != 257) continue;
    const std::uint32_t type = r.U16(entry + 2, little);  // 3 SHORT, 4 LONG
    const std::uint32_t value = type == 3 ? r.U16(entry + 8, little) : r.U32(entry + 8, little);
    (tag == 256 ? header.width : header.height) = static_cast<std::int32_t>(value);
  }
  if (header.width <= 0 || header.height <= 0) Reader::Fail("TIFF without its size");
  return header;
}

ImageHeader Jpeg(const Reader& r) {
  if (!StartsWith(r.data, "\xFF\xD8")) Reader::Fail("no JPEG signature");
  std::size_t pos = 2;
  while (r.Has(pos, 4)) {
    if (r.data[pos] != 0xFF) Reader::Fail("JPEG marker expected");
    const std::uint8_t marker = r.data[pos + 1];
    if (marker == 0xFF) {  // fill byte
      ++pos;
      continue;
    }
    const std::uint32_t length = r.U16(pos + 2, false);
    const bool startOfFrame = marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
    if (startOfFrame) {
      return {"image/jpeg", static_cast<std::int32_t>(r.U16(pos + 7, false)),
              static_cast<std::int32_t>(r.U16(pos + 5, false))};
    }
    if (length < 2) Reader::Fail("JPEG segment length");
    pos += 2 + length;
  }
  Reader::Fail("JPEG without a frame header");
}

}  // namespace

const char* ImageHeader::Keyword(Cvn73100_ImageFormat format) {
  switch (format) {
    case Cvn73100_ImageFormat_BMP:
      return "BMP";
    case Cvn73100_ImageFormat_GIF:
      return "GIF";
    case Cvn73100_ImageFormat_TIF:
      return "TIFF";
    case Cvn73100_ImageFormat_JPG:
      return "JPEG";
    case Cvn73100_ImageFormat_WMF:
    case Cvn73100_ImageFormat_EMF:
      break;
  }
  throw ServerError(SERVERERR_BAD_ARGUMENT, "image format " + std::to_string(static_cast<int>(format)) +
                                                " is not one the instrument sends (BMP, GIF, TIF, JPG)");
}

ImageHeader ImageHeader::Read(Cvn73100_ImageFormat format, const Bytes& data) {
  const Reader reader{data};
  switch (format) {
    case Cvn73100_ImageFormat_BMP:
      return Bmp(reader);
    case Cvn73100_ImageFormat_GIF:
      return Gif(reader);
    case Cvn73100_ImageFormat_TIF:
      return Tiff(reader);
    case Cvn73100_ImageFormat_JPG:
      return Jpeg(reader);
    default:
      Keyword(format);
  }
  Reader::Fail("unknown format");
}

}  // namespace cvn73100::server
