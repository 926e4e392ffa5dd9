// Picture.h - an image of a document, decoded.
//
// What an image is, its first bytes tell; labels are not believed. The size that its header claims
// is checked before memory is taken for it.
#ifndef TARN_SIBLINGS_LAYOUT_IMAGES_PICTURE_H
#define TARN_SIBLINGS_LAYOUT_IMAGES_PICTURE_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "siblings/layout/LibraryHandles.h"

namespace tarn::pages {

struct Picture {
  int32_t width = 0;     // as the file says, in its own pixels
  int32_t height = 0;    // likewise
  CairoSurface surface;  // ARGB32 or RGB24; smaller than the file says where that is far too large
};

// More pixels in one image are refused.
inline constexpr int64_t kMostPicturePixels = 40'000'000;

// PNG, JPEG, GIF (its first frame), WebP and BMP. Nothing when it is none of them, damaged before
// its first row, or too large. Where the rows end early the rest is blank.
std::optional<Picture> DecodePicture(std::string_view file);

// The readers of the formats. Each gets a file with its format's first bytes.
std::optional<Picture> DecodePng(std::string_view file);
std::optional<Picture> DecodeJpeg(std::string_view file);
std::optional<Picture> DecodeGif(std::string_view file);
std::optional<Picture> DecodeWebp(std::string_view file);
std::optional<Picture> DecodeBmp(std::string_view file);

// For them: a picture to be filled, with transparent pixels; nothing when it is too large or empty.
std::optional<Picture> MakePicture(int64_t width, int64_t height);
// The pixels of a row: blue, green, red and alpha, the colours multiplied by alpha.
uint8_t* RowOf(const Picture& picture, int32_t row);
// Multiplies the colours of a picture by their alpha, and tells Cairo that it is filled.
void FinishPicture(const Picture& picture);

}  // namespace tarn::pages

#endif
