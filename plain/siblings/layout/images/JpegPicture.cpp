#include <algorithm>
#include <csetjmp>
#include <cstdio>
#include <cstdlib>
#include <vector>

// Needs the two headers of the runtime before it.
#include <jpeglib.h>

#include "siblings/layout/images/Picture.h"

namespace tarn::pages {

namespace {

// As wide as a page at 300 dots an inch: photographs are decoded no larger than is of use.
constexpr unsigned int kUsefulWidth = 2'200;

// The library leaves on an error by a jump, past functions of its own alone.
struct Decoder {
  jpeg_decompress_struct info = {};
  jpeg_error_mgr errors = {};
  std::jmp_buf escape = {};

  Decoder() {
    info.err = jpeg_std_error(&errors);
    errors.error_exit = [](j_common_ptr common) {
      std::longjmp(static_cast<Decoder*>(common->client_data)->escape, 1);
    };
    errors.output_message = [](j_common_ptr) {};
    info.client_data = this;
  }
  Decoder(const Decoder&) = delete;
  Decoder& operator=(const Decoder&) = delete;
  ~Decoder() { jpeg_destroy_decompress(&info); }
};

bool ReadHeader(Decoder& decoder, std::string_view file) {
  if (setjmp(decoder.escape) != 0) return false;
  jpeg_create_decompress(&decoder.info);
  jpeg_mem_src(&decoder.info, reinterpret_cast<const unsigned char*>(file.data()),
               static_cast<unsigned long>(file.size()));
  return jpeg_read_header(&decoder.info, TRUE) == JPEG_HEADER_OK;
}

// Sets the scale and the colours of what comes out.
bool Start(Decoder& decoder) {
  if (setjmp(decoder.escape) != 0) return false;
  jpeg_decompress_struct& info = decoder.info;
  info.scale_num = 1;
  info.scale_denom = 1;
  while (info.scale_denom < 8 && info.image_width / (2 * info.scale_denom) >= kUsefulWidth) {
    info.scale_denom *= 2;
  }
  const bool inks = info.jpeg_color_space == JCS_CMYK || info.jpeg_color_space == JCS_YCCK;
  info.out_color_space = inks ? JCS_CMYK : JCS_EXT_BGRA;
  return jpeg_start_decompress(&info) == TRUE;
}

bool ReadRow(Decoder& decoder, unsigned char* row) {
  if (setjmp(decoder.escape) != 0) return false;
  JSAMPROW rows[] = {row};
  return jpeg_read_scanlines(&decoder.info, rows, 1) == 1;
}

// Inks are stored as what they leave of the light.
void InksToColours(const unsigned char* inks, uint8_t* row, unsigned int width) {
  for (unsigned int x = 0; x < width; ++x, inks += 4, row += 4) {
    for (int part = 0; part < 3; ++part) {
      row[2 - part] = static_cast<uint8_t>(inks[part] * inks[3] / 255);
    }
    row[3] = 255;
  }
}

void AttachFile(const Picture& picture, std::string_view file) {
  auto* copy = static_cast<unsigned char*>(std::malloc(file.size()));
  if (copy == nullptr) return;
  std::copy(file.begin(), file.end(), copy);
  if (cairo_surface_set_mime_data(picture.surface.get(), CAIRO_MIME_TYPE_JPEG, copy,
                                  static_cast<unsigned long>(file.size()), std::free,
                                  copy) != CAIRO_STATUS_SUCCESS) {
    std::free(copy);
  }
}

}  // namespace

std::optional<Picture> DecodeJpeg(std::string_view file) {
  Decoder decoder;
  if (!ReadHeader(decoder, file)) return std::nullopt;
  const jpeg_decompress_struct& info = decoder.info;
  if (int64_t{info.image_width} * info.image_height > kMostPicturePixels) return std::nullopt;
  if (!Start(decoder)) return std::nullopt;
  std::optional<Picture> picture = MakePicture(info.output_width, info.output_height);
  if (!picture) return std::nullopt;
  picture->width = static_cast<int32_t>(info.image_width);
  picture->height = static_cast<int32_t>(info.image_height);
  const bool inks = info.out_color_space == JCS_CMYK;
  std::vector<unsigned char> row(inks ? size_t{info.output_width} * 4 : 0);
  bool whole = true;
  while (whole && info.output_scanline < info.output_height) {
    uint8_t* target = RowOf(*picture, static_cast<int32_t>(info.output_scanline));
    whole = ReadRow(decoder, inks ? row.data() : target);
    if (whole && inks) InksToColours(row.data(), target, info.output_width);
  }
  cairo_surface_mark_dirty(picture->surface.get());
  // A PDF takes the file as it is: it is smaller, and nothing is lost.
  if (whole && !inks && info.err->num_warnings == 0) AttachFile(*picture, file);
  return picture;
}

}  // namespace tarn::pages
