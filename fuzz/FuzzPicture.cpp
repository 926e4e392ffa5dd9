// Image files decoded. Besides what the sanitizers see, a run aborts when a picture has no pixels,
// has more than are allowed, or colours that Cairo does not
// understand.
#include <algorithm>
#include <memory>

#include "host/Expect.h"
#include "siblings/layout/images/Picture.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using tarn::fuzz::Expect;
  using namespace tarn::pages;
  // In a block of its own, so that a byte beyond it is seen.
  const std::unique_ptr<char[]> bytes(new char[size]);
  std::copy(data, data + size, bytes.get());
  const auto picture = DecodePicture({bytes.get(), size});
  if (!picture) return 0;
  Expect(picture->width > 0 && picture->height > 0, "a picture without pixels");
  Expect(int64_t{picture->width} * picture->height <= kMostPicturePixels, "too many pixels");
  cairo_surface_t* const surface = picture->surface.get();
  Expect(cairo_surface_status(surface) == CAIRO_STATUS_SUCCESS, "a surface that is none");
  const int width = cairo_image_surface_get_width(surface);
  const int height = cairo_image_surface_get_height(surface);
  Expect(width > 0 && width <= picture->width, "another width");
  Expect(height > 0 && height <= picture->height, "another height");
  const bool hasAlpha = cairo_image_surface_get_format(surface) == CAIRO_FORMAT_ARGB32;
  for (int32_t y = 0; y < height; ++y) {
    const uint8_t* const row = RowOf(*picture, y);
    for (int32_t x = 0; x < width; ++x) {
      const uint8_t* const pixel = row + 4 * x;
      const uint8_t colour = std::max({pixel[0], pixel[1], pixel[2]});
      Expect(!hasAlpha || colour <= pixel[3], "a colour that is not multiplied by its alpha");
    }
  }
  return 0;
}
