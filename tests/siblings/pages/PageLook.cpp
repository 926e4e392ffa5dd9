#include "PageLook.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <sstream>

#include "support/TempDirectory.h"

namespace tarn::test {
namespace {

constexpr double kDarknessOfADigit = 16;

template <typename Sequence, typename DifferenceOf>
LookDifference Differences(const Sequence& one, const Sequence& other,
                           const DifferenceOf& differenceOf) {
  if (one.size() != other.size() || one.empty()) return {};
  LookDifference difference = {0, 0};
  for (size_t i = 0; i < one.size(); ++i) {
    const double here = std::abs(differenceOf(one[i], other[i]));
    difference.largest = std::max(difference.largest, here);
    difference.mean += here / static_cast<double>(one.size());
  }
  return difference;
}

}  // namespace

PageLook LookOf(const pages::Bitmap& bitmap, int32_t dotsPerInch) {
  const int32_t side = dotsPerInch / 4;
  const int32_t columns = (bitmap.width + side - 1) / side;
  const int32_t rows = (bitmap.height + side - 1) / side;
  PageLook look = {columns, std::vector<double>(static_cast<size_t>(columns * rows))};
  for (int32_t y = 0; y < bitmap.height; ++y) {
    for (int32_t x = 0; x < bitmap.width; ++x) {
      const auto at = static_cast<size_t>(y * bitmap.width + x) * 4;
      const double light =
          (bitmap.pixels[at] + bitmap.pixels[at + 1] + bitmap.pixels[at + 2]) / 3.0;
      look.darkness[static_cast<size_t>(y / side * columns + x / side)] +=
          (255 - light) / (side * side);
    }
  }
  return look;
}

std::string WrittenLook(const PageLook& look) {
  std::string text;
  for (size_t i = 0; i < look.darkness.size(); ++i) {
    text +=
        static_cast<char>('0' + std::min(9.0, std::round(look.darkness[i] / kDarknessOfADigit)));
    if ((i + 1) % static_cast<size_t>(look.columns) == 0) text += '\n';
  }
  return text;
}

LookDifference Compare(const PageLook& one, const PageLook& other) {
  if (one.columns != other.columns) return {};
  return Differences(one.darkness, other.darkness, [](double a, double b) { return a - b; });
}

LookDifference CompareWritten(const std::string& one, const std::string& other) {
  return Differences(one, other, [](char a, char b) { return double{1} * (a - b); });
}

pages::Bitmap RenderedPage(const std::string& pdf, int32_t page, int32_t dotsPerInch) {
  const TempDirectory directory;
  const std::string input = directory.write("page.pdf", pdf).string();
  const std::string number = std::to_string(page);
  const std::string output = (directory.path() / "page").string();
  const std::string command = "pdftoppm -singlefile -f " + number + " -l " + number + " -r " +
                              std::to_string(dotsPerInch) + " '" + input + "' '" + output + "'";
  EXPECT_EQ(std::system(command.c_str()), 0) << command;
  std::istringstream image(ReadWholeFile(output + ".ppm"));
  std::string magic;
  int most = 0;
  pages::Bitmap bitmap;
  image >> magic >> bitmap.width >> bitmap.height >> most;
  EXPECT_EQ(magic, "P6");
  image.get();
  const auto pixels = static_cast<size_t>(bitmap.width) * static_cast<size_t>(bitmap.height);
  bitmap.pixels.assign(pixels * 4, 0xFF);
  for (size_t i = 0; i < pixels; ++i) {
    for (const size_t channel : {size_t{2}, size_t{1}, size_t{0}}) {
      bitmap.pixels[i * 4 + channel] = static_cast<uint8_t>(image.get());
    }
  }
  return bitmap;
}

}  // namespace tarn::test
