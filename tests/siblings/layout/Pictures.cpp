#include "siblings/layout/Pictures.h"

#include <cairo.h>
#include <glib.h>
#include <jpeglib.h>
#include <webp/encode.h>
#include <cstdio>
#include <cstdlib>

#include <memory>
#include <vector>

#include "siblings/layout/DocumentPictures.h"

namespace tarn::test {

namespace {

// Rows of three bytes a pixel.
std::vector<uint8_t> PixelsOf(int width, int height, const Rgb& colour) {
  std::vector<uint8_t> pixels;
  for (int i = 0; i < width * height; ++i) {
    pixels.insert(pixels.end(), {colour.red, colour.green, colour.blue});
  }
  return pixels;
}

void AppendNumber(std::string& bytes, uint32_t number, int count) {
  for (int i = 0; i < count; ++i) bytes += static_cast<char>(number >> 8 * i & 0xFF);
}

}  // namespace

std::string PngOf(int width, int height, const Rgb& colour) {
  cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height);
  cairo_t* context = cairo_create(surface);
  cairo_set_source_rgb(context, colour.red / 255.0, colour.green / 255.0, colour.blue / 255.0);
  cairo_paint(context);
  cairo_destroy(context);
  std::string file;
  cairo_surface_write_to_png_stream(
      surface,
      [](void* to, const unsigned char* bytes, unsigned int count) {
        static_cast<std::string*>(to)->append(reinterpret_cast<const char*>(bytes), count);
        return CAIRO_STATUS_SUCCESS;
      },
      &file);
  cairo_surface_destroy(surface);
  return file;
}

std::string JpegOf(int width, int height, const Rgb& colour) {
  std::vector<uint8_t> pixels = PixelsOf(width, height, colour);
  jpeg_compress_struct info = {};
  jpeg_error_mgr errors = {};
  info.err = jpeg_std_error(&errors);
  jpeg_create_compress(&info);
  unsigned char* bytes = nullptr;
  unsigned long size = 0;
  jpeg_mem_dest(&info, &bytes, &size);
  info.image_width = static_cast<JDIMENSION>(width);
  info.image_height = static_cast<JDIMENSION>(height);
  info.input_components = 3;
  info.in_color_space = JCS_RGB;
  jpeg_set_defaults(&info);
  jpeg_set_quality(&info, 95, TRUE);
  jpeg_start_compress(&info, TRUE);
  for (int y = 0; y < height; ++y) {
    JSAMPROW row = pixels.data() + static_cast<ptrdiff_t>(y) * width * 3;
    jpeg_write_scanlines(&info, &row, 1);
  }
  jpeg_finish_compress(&info);
  std::string file(reinterpret_cast<const char*>(bytes), size);
  jpeg_destroy_compress(&info);
  std::free(bytes);
  return file;
}

std::string WebpOf(int width, int height, const Rgb& colour) {
  const std::vector<uint8_t> pixels = PixelsOf(width, height, colour);
  uint8_t* bytes = nullptr;
  const size_t size = WebPEncodeLosslessRGB(pixels.data(), width, height, width * 3, &bytes);
  std::string file(reinterpret_cast<const char*>(bytes), size);
  WebPFree(bytes);
  return file;
}

std::string BmpOf(int width, int height, const Rgb& colour) {
  const auto stride = static_cast<uint32_t>((width * 3 + 3) / 4 * 4);
  std::string file = "BM";
  for (const uint32_t number : {54 + stride * static_cast<uint32_t>(height), 0u, 54u, 40u,
                                static_cast<uint32_t>(width), static_cast<uint32_t>(height)}) {
    AppendNumber(file, number, 4);
  }
  AppendNumber(file, 1, 2);
  AppendNumber(file, 24, 2);
  file.append(24, '\0');
  for (int y = 0; y < height; ++y) {
    std::string row;
    for (int x = 0; x < width; ++x) {
      for (const uint8_t part : {colour.blue, colour.green, colour.red}) {
        row += static_cast<char>(part);
      }
    }
    row.resize(stride);
    file += row;
  }
  return file;
}

std::string GifOf(const Rgb& colour) {
  std::string file("GIF89a\x01\0\x01\0\x80\0\0", 13);
  for (const uint8_t part : {colour.red, colour.green, colour.blue})
    file += static_cast<char>(part);
  file.append(3, '\0');
  file += std::string("\x2C\0\0\0\0\x01\0\x01\0\0\x02\x02\x44\x01\0\x3B", 16);
  return file;
}

std::string HugePng() {
  return *pages::DecodeDataUrl(
      "data:;base64,iVBORw0KGgoAAAANSUhEUgABhqAAAYagCAYAAACoUgvIAAAADElEQVR4nGNgoD0AAABkAAGGZDw1");
}

std::string Base64Of(std::string_view bytes) {
  const std::unique_ptr<char, decltype(&g_free)> text(
      g_base64_encode(reinterpret_cast<const guchar*>(bytes.data()), bytes.size()), g_free);
  return text.get();
}

std::string DataUrlOf(std::string_view bytes, const std::string& label) {
  return "data:" + label + ";base64," + Base64Of(bytes);
}

}  // namespace tarn::test
