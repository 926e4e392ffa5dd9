#include <webp/decode.h>

#include "siblings/layout/images/Picture.h"

namespace tarn::pages {

std::optional<Picture> DecodeWebp(std::string_view file) {
  const auto* bytes = reinterpret_cast<const uint8_t*>(file.data());
  int width = 0;
  int height = 0;
  if (WebPGetInfo(bytes, file.size(), &width, &height) == 0) return std::nullopt;
  std::optional<Picture> picture = MakePicture(width, height);
  if (!picture) return std::nullopt;
  const int stride = cairo_image_surface_get_stride(picture->surface.get());
  if (WebPDecodeBGRAInto(bytes, file.size(), RowOf(*picture, 0),
                         static_cast<size_t>(stride) * static_cast<size_t>(height),
                         stride) == nullptr) {
    return std::nullopt;
  }
  FinishPicture(*picture);
  return picture;
}

}  // namespace tarn::pages
