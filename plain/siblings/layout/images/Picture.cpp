#include "siblings/layout/images/Picture.h"

namespace tarn::pages {

namespace {

using namespace std::string_view_literals;

uint8_t Multiplied(uint8_t colour, uint8_t alpha) {
  return static_cast<uint8_t>((colour * alpha + 127) / 255);
}

}  // namespace

std::optional<Picture> DecodePicture(std::string_view file) {
  if (file.starts_with("\x89PNG\r\n\x1A\n"sv)) return DecodePng(file);
  if (file.starts_with("\xFF\xD8\xFF"sv)) return DecodeJpeg(file);
  if (file.starts_with("GIF87a"sv) || file.starts_with("GIF89a"sv)) return DecodeGif(file);
  if (file.starts_with("RIFF"sv) && file.substr(0, 12).ends_with("WEBP"sv)) return DecodeWebp(file);
  if (file.starts_with("BM"sv)) return DecodeBmp(file);
  return std::nullopt;
}

std::optional<Picture> MakePicture(int64_t width, int64_t height) {
  if (width < 1 || height < 1 || width > 32'767 || height > 32'767 ||
      width * height > kMostPicturePixels) {
    return std::nullopt;
  }
  Picture picture;
  picture.width = static_cast<int32_t>(width);
  picture.height = static_cast<int32_t>(height);
  picture.surface.reset(
      cairo_image_surface_create(CAIRO_FORMAT_ARGB32, picture.width, picture.height));
  if (cairo_surface_status(picture.surface.get()) != CAIRO_STATUS_SUCCESS) return std::nullopt;
  cairo_surface_flush(picture.surface.get());
  return picture;
}

uint8_t* RowOf(const Picture& picture, int32_t row) {
  cairo_surface_t* surface = picture.surface.get();
  return cairo_image_surface_get_data(surface) +
         static_cast<ptrdiff_t>(row) * cairo_image_surface_get_stride(surface);
}

void FinishPicture(const Picture& picture) {
  const int32_t width = cairo_image_surface_get_width(picture.surface.get());
  const int32_t height = cairo_image_surface_get_height(picture.surface.get());
  for (int32_t y = 0; y < height; ++y) {
    uint8_t* pixel = RowOf(picture, y);
    for (int32_t x = 0; x < width; ++x, pixel += 4) {
      if (pixel[3] == 255) continue;
      for (int part = 0; part < 3; ++part) pixel[part] = Multiplied(pixel[part], pixel[3]);
    }
  }
  cairo_surface_mark_dirty(picture.surface.get());
}

}  // namespace tarn::pages
