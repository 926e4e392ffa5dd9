#include "siblings/layout/images/Picture.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "siblings/layout/Pictures.h"

namespace tarn::test {
namespace {

using namespace tarn::pages;
using namespace std::string_literals;
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

// A GIF of one frame. Its colours are red, green, blue and black.
struct GifFrame {
  int left = 0;
  int top = 0;
  int width = 1;
  int height = 1;
  bool interlaced = false;
  int transparent = -1;  // the number of a colour
  int colours = 4;       // 0, 2 or 4 of them
};

// LZW codes of three bits, from the lowest on. A code that empties the table before each pixel
// keeps them at that length.
std::string GifCodes(const std::vector<int>& pixels) {
  constexpr int kEmpty = 4;
  constexpr int kEnd = 5;
  std::vector<int> codes;
  for (const int pixel : pixels) codes.insert(codes.end(), {kEmpty, pixel});
  codes.push_back(kEnd);
  std::string bytes((codes.size() * 3 + 7) / 8, '\0');
  for (size_t bit = 0; bit < codes.size() * 3; ++bit) {
    const int one = codes[bit / 3] >> bit % 3 & 1;
    bytes[bit / 8] = static_cast<char>(bytes[bit / 8] | one << bit % 8);
  }
  return bytes;
}

// The pixels are numbers of colours, in the order in which the file has the rows.
std::string GifWith(int width, int height, const GifFrame& frame, const std::vector<int>& pixels) {
  std::string file = "GIF89a";
  const auto add = [&file](std::initializer_list<int> numbers) {
    for (const int number : numbers) file += static_cast<char>(number);
  };
  add({width, 0, height, 0, frame.colours == 0 ? 0 : 0x80 | frame.colours / 4, 0, 0});
  file += "\xFF\0\0\0\xFF\0\0\0\xFF\0\0\0"sv.substr(0, static_cast<size_t>(frame.colours) * 3);
  file += "\x21\xFE\x04note\0"sv;  // a comment
  if (frame.transparent >= 0) add({0x21, 0xF9, 4, 1, 0, 0, frame.transparent, 0});
  add({0x2C, frame.left, 0, frame.top, 0, frame.width, 0, frame.height, 0,
       frame.interlaced ? 0x40 : 0, 2});
  const std::string codes = GifCodes(pixels);
  add({static_cast<int>(codes.size())});
  return file + codes + "\0;"s;
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

TEST(Picture, GifsHaveATransparentColour) {
  const auto picture = DecodePicture(GifWith(3, 1, {.width = 3, .transparent = 1}, {0, 1, 2}));
  ASSERT_TRUE(picture);
  EXPECT_EQ(PixelOf(*picture, 0, 0), (std::vector<int>{0, 0, 255, 255}));
  EXPECT_EQ(PixelOf(*picture, 1, 0)[3], 0);
  EXPECT_EQ(PixelOf(*picture, 2, 0), (std::vector<int>{255, 0, 0, 255}));
}

TEST(Picture, GifsHaveTheirRowsInFourPasses) {
  std::vector<int> pixels;
  for (const int row : {0, 8, 4, 2, 6, 1, 3, 5, 7}) pixels.push_back(row % 3);
  const auto picture = DecodePicture(GifWith(1, 9, {.height = 9, .interlaced = true}, pixels));
  ASSERT_TRUE(picture);
  const std::vector<std::vector<int>> colours = {
      {0, 0, 255, 255}, {0, 255, 0, 255}, {255, 0, 0, 255}};
  for (int row = 0; row < 9; ++row) {
    EXPECT_EQ(PixelOf(*picture, 0, row), colours[static_cast<size_t>(row % 3)]) << row;
  }
}

TEST(Picture, AGifShowsThePartOfItsFrameThatLiesInIt) {
  const auto picture =
      DecodePicture(GifWith(2, 2, {.left = 1, .top = 1, .width = 2, .height = 2}, {0, 1, 1, 1}));
  ASSERT_TRUE(picture);
  EXPECT_EQ(picture->width, 2);
  EXPECT_EQ(PixelOf(*picture, 1, 1), (std::vector<int>{0, 0, 255, 255}));
  for (const auto& [x, y] : {std::pair(0, 0), std::pair(1, 0), std::pair(0, 1)}) {
    EXPECT_EQ(PixelOf(*picture, x, y)[3], 0) << x << y;
  }
}

TEST(Picture, AGifLacksColoursOrFrames) {
  EXPECT_FALSE(DecodePicture(GifWith(1, 1, {.colours = 0}, {0})));
  // A colour that is not there leaves its pixel blank.
  const auto two = DecodePicture(GifWith(2, 1, {.width = 2, .colours = 2}, {1, 3}));
  ASSERT_TRUE(two);
  EXPECT_EQ(PixelOf(*two, 0, 0), (std::vector<int>{0, 255, 0, 255}));
  EXPECT_EQ(PixelOf(*two, 1, 0)[3], 0);
  const std::string file = GifWith(1, 1, {.transparent = 1}, {0});
  const size_t note = file.find('!');
  EXPECT_FALSE(DecodePicture(file.substr(0, note) + ";"));
  const size_t frame = file.find(',');
  for (size_t end = note; end < frame + 10; ++end) {
    EXPECT_FALSE(DecodePicture(file.substr(0, end))) << end;
  }
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
