// What pages look like.
#include <gtest/gtest.h>

#include <cmath>

#include "EnginePages.h"
#include "Pictures.h"

namespace tarn::test {
namespace {

using pages::Bitmap;

// Darkness of squares of that many pixels, 0 to 255 each.
std::vector<double> Blurred(const Bitmap& bitmap, int32_t side) {
  const auto columns = static_cast<size_t>((bitmap.width + side - 1) / side);
  const auto rows = static_cast<size_t>((bitmap.height + side - 1) / side);
  std::vector<double> squares(columns * rows);
  for (int32_t y = 0; y < bitmap.height; ++y) {
    for (int32_t x = 0; x < bitmap.width; ++x) {
      const auto at = static_cast<size_t>(y * bitmap.width + x) * 4;
      const double light =
          (bitmap.pixels[at] + bitmap.pixels[at + 1] + bitmap.pixels[at + 2]) / 3.0;
      squares[static_cast<size_t>(y / side) * columns + static_cast<size_t>(x / side)] +=
          (255 - light) / (side * side);
    }
  }
  return squares;
}

double LargestDifference(const std::vector<double>& left, const std::vector<double>& right) {
  double largest = 0;
  for (size_t i = 0; i < std::min(left.size(), right.size()); ++i) {
    largest = std::max(largest, std::abs(left[i] - right[i]));
  }
  return largest;
}

std::string Picture(std::string_view words, std::string_view hex) {
  return R"({\pict)" + std::string(words) + R"(\picwgoal1440\pichgoal1440 )" + std::string(hex) +
         '}';
}

// What a page that has everything looks like for those who edit: frames, marks, shades.
const std::string& Everything() {
  static const std::string rtf = Rtf(
      R"(Text with\~hard blanks\-hyphens and {\v hidden }words.\par )"
      R"({\field{\*\fldinst PAGE}{\fldrslt 9}} of {\field{\*\fldinst NUMPAGES}{\fldrslt 9}}\par )"
      R"({\field{\*\fldinst DATE}{\fldrslt 1 May 1999}}\par )"
      R"({\field{\*\fldinst HYPERLINK "http://example.com/"}{\fldrslt a link}}\par )"
      R"({\*\bkmkstart mark}A bookmark{\*\bkmkend mark}, a mistaek\par )"
      R"(\trowd\cellx3000\cellx6000\pard\intbl no frame\cell\pard\intbl a table\cell\row\pard )"
      R"(Comment{\*\atnid AB}{\*\atnauthor Ann}\chatn{\*\annotation\pard\plain A comment.}\par )"
      R"(A note{\footnote\pard\plain The note.}\par )");
  return rtf;
}

TEST(LookOfPages, IsThatOfThePdf) {
  const auto layout = LayOut(Everything());
  const Bitmap drawn = Draw(*layout, 1, 96);
  const Bitmap rendered = Rendered(Pdf(*layout), 96);
  ASSERT_NEAR(drawn.width, rendered.width, 1);
  EXPECT_NEAR(drawn.height, rendered.height, 1);
  const auto left = Blurred(drawn, 16);
  EXPECT_GT(*std::max_element(left.begin(), left.end()), 40);
  EXPECT_LT(LargestDifference(left, Blurred(rendered, 16)), 25);
}

// Frames of cells, corners of the page and shades of fields are all of one light grey.
TEST(LookOfPages, HasNoMarksOfTheEditor) {
  const Bitmap bitmap = Draw(*LayOut(Everything()), 1, 96);
  EXPECT_GT(Count(bitmap, 0x000000), 100);
  EXPECT_LT(Count(bitmap, 0xC0C0C0), 40);
}

TEST(LookOfPages, AnEmptyPageIsWhite) {
  const Bitmap bitmap = Draw(*LayOut(Rtf("\\par")), 1, 72);
  EXPECT_EQ(bitmap.width, 595);
  EXPECT_EQ(bitmap.height, 842);
  EXPECT_EQ(Count(bitmap, 0xFFFFFF), int64_t{595} * 842);
}

TEST(LookOfPages, ShowsPictures) {
  const int64_t inch = 96 * 96;
  const Bitmap png = Draw(*LayOut(Rtf(Picture(R"(\pngblip)", kPinkPng))));
  EXPECT_NEAR(static_cast<double>(Count(png, 0xFF0080)), inch, inch * 0.05);
  const Bitmap metafile =
      Draw(*LayOut(Rtf(Picture(R"(\wmetafile8\picw2540\pich2540)", kGreenMetafile))));
  EXPECT_NEAR(static_cast<double>(Count(metafile, 0x008000)), inch, inch * 0.1);
}

TEST(LookOfPages, ShowsThePictureOfAnObjectAndOfAField) {
  const std::string picture = Picture(R"(\pngblip)", kPinkPng);
  const Bitmap object = Draw(*LayOut(
      Rtf(R"({\object\objemb\objw1440\objh1440{\*\objclass P}{\*\objdata 01050000}{\result )" +
          picture + "}}")));
  EXPECT_GT(Count(object, 0xFF0080), 8000);
  const Bitmap field = Draw(*LayOut(
      Rtf(R"({\field{\*\fldinst INCLUDEPICTURE "http://127.0.0.1/"}{\fldrslt )" + picture + "}}")));
  EXPECT_GT(Count(field, 0xFF0080), 8000);
}

TEST(LookOfPages, ColoursAreRedGreenBlue) {
  const Bitmap bitmap = Draw(*LayOut(
      R"({\rtf1{\fonttbl{\f0 Arial;}}{\colortbl;\red255\green0\blue0;\red0\green0\blue255;})"
      R"(\f0\fs96\b\cf1 RED\par\cf2 BLUE})"));
  EXPECT_GT(Count(bitmap, 0xFF0000), 200);
  EXPECT_GT(Count(bitmap, 0x0000FF), 200);
}

TEST(LookOfPages, StripsFitTogether) {
  // Larger than one strip: a line from top to bottom in steps, which a gap would show.
  const auto layout = LayOut(Everything());
  const Bitmap large = Draw(*layout, 1, 300);
  const Bitmap rendered = Rendered(Pdf(*layout), 300);
  ASSERT_NEAR(large.width, rendered.width, 1);
  EXPECT_LT(LargestDifference(Blurred(large, 48), Blurred(rendered, 48)), 15);
}

TEST(LookOfPages, LineHeightsDoNotDependOnTheResolution) {
  const auto layout = LayOut(Everything());
  const auto coarse = Blurred(Draw(*layout, 1, 48), 8);
  const auto fine = Blurred(Draw(*layout, 1, 192), 32);
  ASSERT_EQ(coarse.size(), fine.size());
  EXPECT_LT(LargestDifference(coarse, fine), 30);
}

}  // namespace
}  // namespace tarn::test
