#include "siblings/layout/images/Picture.h"

#include <gtest/gtest.h>

#include "siblings/layout/Pictures.h"

namespace tarn::test {
namespace {

using namespace tarn::pages;
using namespace std::string_view_literals;

constexpr Rgb kTeal = {0, 128, 128};

// Blue, green, red, alpha.
std::vector<int> PixelOf(const Picture& picture, int x, int y) {
  const uint8_t* pixel = RowOf(picture, y) + 4 * x;
  return {pixel[0], pixel[1], pixel[2], pixel[3]};
}

void ExpectColour(const std::vector<int>& pixel, const Rgb& colour) {
  EXPECT_NEAR(pixel[0], colour.blue, 3);
  EXPECT_NEAR(pixel[1], colour.green, 3);
  EXPECT_NEAR(pixel[2], colour.red, 3);
}

TEST(Picture, EachFormatIsToldFromItsBytes) {
  for (const std::string& file :
       {PngOf(20, 10, kTeal), JpegOf(20, 10, kTeal), WebpOf(20, 10, kTeal), BmpOf(20, 10, kTeal)}) {
    const auto picture = DecodePicture(file);
    ASSERT_TRUE(picture) << file.substr(0, 4);
    EXPECT_EQ(picture->width, 20);
    EXPECT_EQ(picture->height, 10);
    ExpectColour(PixelOf(*picture, 19, 9), kTeal);
    EXPECT_EQ(PixelOf(*picture, 0, 0)[3], 255);
  }
  const auto gif = DecodePicture(GifOf(kTeal));
  ASSERT_TRUE(gif);
  ExpectColour(PixelOf(*gif, 0, 0), kTeal);
}

TEST(Picture, OtherBytesAreNone) {
  EXPECT_FALSE(DecodePicture(""));
  EXPECT_FALSE(DecodePicture("<svg xmlns='http://www.w3.org/2000/svg'/>"));
  EXPECT_FALSE(DecodePicture("\x89PNG\r\n\x1A\n"));
  EXPECT_FALSE(DecodePicture("\xFF\xD8\xFF"));
  EXPECT_FALSE(DecodePicture("GIF89a"));
  EXPECT_FALSE(DecodePicture("RIFF\0\0\0\0WEBPVP8 "sv));
  EXPECT_FALSE(DecodePicture("BM"));
}

TEST(Picture, AHugeHeaderIsRefusedBeforeMemoryIsTaken) { EXPECT_FALSE(DecodePicture(HugePng())); }

TEST(Picture, TheLimitIsOfPixels) {
  EXPECT_TRUE(MakePicture(1'000, 1'000));
  EXPECT_FALSE(MakePicture(10'000, 4'001));
  EXPECT_FALSE(MakePicture(40'000, 1));
  EXPECT_FALSE(MakePicture(0, 5));
  EXPECT_FALSE(MakePicture(-5, 5));
}

TEST(Picture, FilesThatEndEarlyShowWhatTheyHave) {
  for (const std::string& file :
       {PngOf(64, 64, kTeal), JpegOf(64, 64, kTeal), BmpOf(64, 64, kTeal)}) {
    for (size_t size = 0; size < file.size(); size += 7) {
      const auto picture = DecodePicture(std::string_view(file).substr(0, size));
      if (picture) {
        EXPECT_EQ(picture->width, 64);
      }
    }
  }
  const std::string bmp = BmpOf(8, 8, kTeal);
  const auto half = DecodePicture(std::string_view(bmp).substr(0, 54 + 4 * 24));
  ASSERT_TRUE(half);
  ExpectColour(PixelOf(*half, 0, 7), kTeal);
  EXPECT_EQ(PixelOf(*half, 0, 0)[3], 0);
}

TEST(Picture, DamagedFilesEndInSomething) {
  for (std::string file : {PngOf(16, 16, kTeal), JpegOf(16, 16, kTeal), WebpOf(16, 16, kTeal),
                           BmpOf(16, 16, kTeal), GifOf(kTeal)}) {
    for (size_t i = 0; i < file.size(); ++i) {
      const char kept = file[i];
      for (const int mask : {0x01, 0x80, 0xFF}) {
        file[i] = static_cast<char>(kept ^ mask);
        const auto picture = DecodePicture(file);
        if (picture) {
          EXPECT_LE(int64_t{picture->width} * picture->height, kMostPicturePixels);
        }
      }
      file[i] = kept;
    }
  }
}

TEST(Picture, LargePhotographsAreDecodedSmaller) {
  const auto picture = DecodePicture(JpegOf(6'000, 16, kTeal));
  ASSERT_TRUE(picture);
  EXPECT_EQ(picture->width, 6'000);
  EXPECT_EQ(cairo_image_surface_get_width(picture->surface.get()), 3'000);
}

TEST(Picture, BitmapsHavePalettesAndRowsFromTheTop) {
  // 2 by 2 with one bit a pixel: red, green / green, red from the top.
  std::string file = "BM";
  const auto add = [&](uint32_t number, int count) {
    for (int i = 0; i < count; ++i) file += static_cast<char>(number >> 8 * i & 0xFF);
  };
  add(70, 4);
  add(0, 4);
  add(62, 4);
  add(40, 4);
  add(2, 4);
  add(static_cast<uint32_t>(-2), 4);
  add(1, 2);
  add(1, 2);
  file.append(24, '\0');
  add(0x00FF0000, 4);
  add(0x0000FF00, 4);
  file += std::string("\x40\0\0\0\x80\0\0\0", 8);
  const auto picture = DecodePicture(file);
  ASSERT_TRUE(picture);
  EXPECT_EQ(PixelOf(*picture, 0, 0), (std::vector<int>{0, 0, 255, 255}));
  EXPECT_EQ(PixelOf(*picture, 1, 0), (std::vector<int>{0, 255, 0, 255}));
  EXPECT_EQ(PixelOf(*picture, 0, 1), (std::vector<int>{0, 255, 0, 255}));
}

}  // namespace
}  // namespace tarn::test
