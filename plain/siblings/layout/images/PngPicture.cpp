#include <png.h>

#include "siblings/layout/images/Picture.h"

namespace tarn::pages {

std::optional<Picture> DecodePng(std::string_view file) {
  png_image image = {};
  image.version = PNG_IMAGE_VERSION;
  if (png_image_begin_read_from_memory(&image, file.data(), file.size()) == 0) return std::nullopt;
  image.format = PNG_FORMAT_BGRA;
  std::optional<Picture> picture = MakePicture(image.width, image.height);
  if (!picture) {
    png_image_free(&image);
    return std::nullopt;
  }
  // A file that ends early leaves rows as they are: the function's answer does not matter.
  png_image_finish_read(&image, nullptr, RowOf(*picture, 0),
                        cairo_image_surface_get_stride(picture->surface.get()), nullptr);
  png_image_free(&image);
  FinishPicture(*picture);
  return picture;
}

}  // namespace tarn::pages
