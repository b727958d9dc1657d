#include "simulator/ImageEncoder.h"

#include <gif_lib.h>
#include <jpeglib.h>
#include <tiffio.h>

#include <csetjmp>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace cvn73100::sim {
namespace {

void PutLittleEndian(std::string& out, std::uint32_t value, int bytes) {
  for (int i = 0; i < bytes; ++i) out += static_cast<char>((value >> (8 * i)) & 0xFF);
}

std::vector<std::uint8_t> ToRgb(const Raster& raster, std::span<const Rgb> palette) {
  std::vector<std::uint8_t> rgb;
  rgb.reserve(raster.pixels.size() * 3);
  for (std::uint8_t index : raster.pixels) {
    const Rgb& c = palette[index];
    rgb.insert(rgb.end(), {c.r, c.g, c.b});
  }
  return rgb;
}

std::string EncodeBmp(const Raster& raster, std::span<const Rgb> palette) {
  const auto stride = static_cast<std::uint32_t>((raster.width * 3 + 3) & ~3);
  const std::uint32_t imageSize = stride * static_cast<std::uint32_t>(raster.height);
  std::string out;
  out.reserve(54 + imageSize);
  out += "BM";
  PutLittleEndian(out, 54 + imageSize, 4);
  PutLittleEndian(out, 0, 4);
  PutLittleEndian(out, 54, 4);  // pixel data offset
  PutLittleEndian(out, 40, 4);  // BITMAPINFOHEADER
  PutLittleEndian(out, static_cast<std::uint32_t>(raster.width), 4);
  PutLittleEndian(out, static_cast<std::uint32_t>(raster.height), 4);  // positive: rows stored bottom-up
  PutLittleEndian(out, 1, 2);
  PutLittleEndian(out, 24, 2);
  PutLittleEndian(out, 0, 4);  // BI_RGB
  PutLittleEndian(out, imageSize, 4);
  PutLittleEndian(out, 3780, 4);  // 96 dpi
  PutLittleEndian(out, 3780, 4);
  PutLittleEndian(out, 0, 4);
  PutLittleEndian(out, 0, 4);
  for (int y = raster.height - 1; y >= 0; --y) {
    const std::size_t rowStart = out.size();
    for (int x = 0; x < raster.width; ++x) {
      const Rgb& c = palette[raster.pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(raster.width) +
                                           static_cast<std::size_t>(x)]];
      out += static_cast<char>(c.b);
      out += static_cast<char>(c.g);
      out += static_cast<char>(c.r);
    }
    out.append(stride - (out.size() - rowStart), '\0');
  }
  return out;
}

std::optional<std::string> EncodeGif(const Raster& raster, std::span<const Rgb> palette) {
  std::string out;
  int error = 0;
  GifFileType* gif = EGifOpen(
      &out,
      [](GifFileType* file, const GifByteType* data, int size) {
        static_cast<std::string*>(file->UserData)
            ->append(reinterpret_cast<const char*>(data), static_cast<std::size_t>(size));
        return size;
      },
      &error);
  if (gif == nullptr) return std::nullopt;
  GifColorType colours[256] = {};
  int mapSize = 2;
  while (mapSize < static_cast<int>(palette.size())) mapSize *= 2;  // giflib wants a power of two
  for (std::size_t i = 0; i < palette.size(); ++i) colours[i] = {palette[i].r, palette[i].g, palette[i].b};
  ColorMapObject* map = GifMakeMapObject(mapSize, colours);
  bool ok = map != nullptr && EGifPutScreenDesc(gif, raster.width, raster.height, 8, 0, map) == GIF_OK &&
            EGifPutImageDesc(gif, 0, 0, raster.width, raster.height, false, nullptr) == GIF_OK;
  std::vector<GifPixelType> row(static_cast<std::size_t>(raster.width));
  for (int y = 0; ok && y < raster.height; ++y) {
    std::memcpy(row.data(), raster.pixels.data() + static_cast<std::size_t>(y * raster.width), row.size());
    ok = EGifPutLine(gif, row.data(), raster.width) == GIF_OK;
  }
  ok = EGifCloseFile(gif, &error) == GIF_OK && ok;
  GifFreeMapObject(map);
  if (!ok) return std::nullopt;
  return out;
}

// libtiff writes through these callbacks into a growing string instead of a file.
struct MemoryFile {
  std::string data;
  std::size_t pos = 0;
};
tmsize_t TiffRead(thandle_t handle, void* buffer, tmsize_t size) {
  auto* f = static_cast<MemoryFile*>(handle);
  const std::size_t n = std::min(static_cast<std::size_t>(size), f->data.size() - std::min(f->pos, f->data.size()));
  std::memcpy(buffer, f->data.data() + f->pos, n);
  f->pos += n;
  return static_cast<tmsize_t>(n);
}
tmsize_t TiffWrite(thandle_t handle, void* buffer, tmsize_t size) {
  auto* f = static_cast<MemoryFile*>(handle);
  const auto n = static_cast<std::size_t>(size);
  if (f->pos + n > f->data.size()) f->data.resize(f->pos + n);
  std::memcpy(f->data.data() + f->pos, buffer, n);
  f->pos += n;
  return size;
}
toff_t TiffSeek(thandle_t handle, toff_t offset, int whence) {
  auto* f = static_cast<MemoryFile*>(handle);
  const std::size_t base = whence == SEEK_CUR ? f->pos : whence == SEEK_END ? f->data.size() : 0;
  f->pos = base + static_cast<std::size_t>(offset);
  return f->pos;
}
int TiffClose(thandle_t) { return 0; }
toff_t TiffSize(thandle_t handle) { return static_cast<MemoryFile*>(handle)->data.size(); }
int TiffMap(thandle_t, void**, toff_t*) { return 0; }
void TiffUnmap(thandle_t, void*, toff_t) {}

std::optional<std::string> EncodeTiff(const Raster& raster, std::span<const Rgb> palette) {
  MemoryFile file;
  TIFF* tif =
      TIFFClientOpen("screen.tif", "w", &file, TiffRead, TiffWrite, TiffSeek, TiffClose, TiffSize, TiffMap, TiffUnmap);
  if (tif == nullptr) return std::nullopt;
  TIFFSetField(tif, TIFFTAG_IMAGEWIDTH, static_cast<std::uint32_t>(raster.width));
  TIFFSetField(tif, TIFFTAG_IMAGELENGTH, static_cast<std::uint32_t>(raster.height));
  TIFFSetField(tif, TIFFTAG_BITSPERSAMPLE, 8);
  TIFFSetField(tif, TIFFTAG_SAMPLESPERPIXEL, 3);
  TIFFSetField(tif, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB);
  TIFFSetField(tif, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
  TIFFSetField(tif, TIFFTAG_COMPRESSION, COMPRESSION_LZW);
  TIFFSetField(tif, TIFFTAG_ROWSPERSTRIP, 16);
  std::vector<std::uint8_t> rgb = ToRgb(raster, palette);
  bool ok = true;
  for (int y = 0; ok && y < raster.height; ++y) {
    ok = TIFFWriteScanline(tif, rgb.data() + static_cast<std::size_t>(y * raster.width * 3),
                           static_cast<std::uint32_t>(y), 0) == 1;
  }
  TIFFClose(tif);
  if (!ok) return std::nullopt;
  return std::move(file.data);
}

struct JpegErrors {
  jpeg_error_mgr base;
  std::jmp_buf jump;
};

// Kept free of C++ objects with destructors: libjpeg reports errors by longjmp out of this function.
bool WriteJpeg(const std::uint8_t* rgb, int width, int height, unsigned char** data, unsigned long* size) {
  jpeg_compress_struct info;
  JpegErrors errors;
  info.err = jpeg_std_error(&errors.base);
  errors.base.error_exit = [](j_common_ptr common) {
    std::longjmp(reinterpret_cast<JpegErrors*>(common->err)->jump, 1);
  };
  errors.base.output_message = [](j_common_ptr) {};
  if (setjmp(errors.jump) != 0) {
    jpeg_destroy_compress(&info);
    return false;
  }
  jpeg_create_compress(&info);
  jpeg_mem_dest(&info, data, size);
  info.image_width = static_cast<JDIMENSION>(width);
  info.image_height = static_cast<JDIMENSION>(height);
  info.input_components = 3;
  info.in_color_space = JCS_RGB;
  jpeg_set_defaults(&info);
  jpeg_set_quality(&info, 90, TRUE);
  jpeg_start_compress(&info, TRUE);
  while (info.next_scanline < info.image_height) {
    JSAMPROW row =
        const_cast<JSAMPROW>(rgb + static_cast<std::size_t>(info.next_scanline) * static_cast<std::size_t>(width) * 3);
    jpeg_write_scanlines(&info, &row, 1);
  }
  jpeg_finish_compress(&info);
  jpeg_destroy_compress(&info);
  return true;
}

std::optional<std::string> EncodeJpeg(const Raster& raster, std::span<const Rgb> palette) {
  const std::vector<std::uint8_t> rgb = ToRgb(raster, palette);
  unsigned char* data = nullptr;
  unsigned long size = 0;
  const bool ok = WriteJpeg(rgb.data(), raster.width, raster.height, &data, &size);
  std::optional<std::string> out;
  if (ok && data != nullptr) out.emplace(reinterpret_cast<const char*>(data), size);
  std::free(data);
  return out;
}

}  // namespace

bool ImageEncoder::Supports(ImageFormat format) {
  return format == ImageFormat::Bmp || format == ImageFormat::Gif || format == ImageFormat::Tif ||
         format == ImageFormat::Jpg;
}

std::optional<std::string> ImageEncoder::Encode(const Raster& raster, std::span<const Rgb> palette,
                                                ImageFormat format) {
  switch (format) {
    case ImageFormat::Bmp:
      return EncodeBmp(raster, palette);
    case ImageFormat::Gif:
      return EncodeGif(raster, palette);
    case ImageFormat::Tif:
      return EncodeTiff(raster, palette);
    case ImageFormat::Jpg:
      return EncodeJpeg(raster, palette);
    default:
      return std::nullopt;
  }
}

}  // namespace cvn73100::sim
