// Pictures.h - image files that tests make, all of one colour.
#ifndef TARN_TESTS_SIBLINGS_LAYOUT_PICTURES_H
#define TARN_TESTS_SIBLINGS_LAYOUT_PICTURES_H

#include <string>
#include <string_view>

#include "siblings/layout/PageLooks.h"

namespace tarn::test {

std::string PngOf(int width, int height, const Rgb& colour);
std::string JpegOf(int width, int height, const Rgb& colour);
std::string WebpOf(int width, int height, const Rgb& colour);
// With 24 bits a pixel, rows from the bottom.
std::string BmpOf(int width, int height, const Rgb& colour);
// 1 by 1.
std::string GifOf(const Rgb& colour);
// A PNG whose header claims 100,000 by 100,000 pixels, and that has 100 bytes of them.
std::string HugePng();

std::string Base64Of(std::string_view bytes);
// As the source of an image.
std::string DataUrlOf(std::string_view bytes, const std::string& label = "image/png");

}  // namespace tarn::test

#endif
