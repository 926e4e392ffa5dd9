#include "siblings/layout/PageLooks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <sstream>

#include "support/TempDirectory.h"

namespace tarn::test {

namespace {

bool IsNear(int a, int b, int tolerance) { return std::abs(a - b) <= tolerance; }

template <typename Wanted>
PixelBox BoxOf(const pages::Bitmap& bitmap, const Wanted& wanted) {
  PixelBox box = {bitmap.width, bitmap.height, 0, 0};
  for (int32_t y = 0; y < bitmap.height; ++y) {
    for (int32_t x = 0; x < bitmap.width; ++x) {
      if (!wanted(PixelAt(bitmap, x, y))) continue;
      box.left = std::min(box.left, x);
      box.top = std::min(box.top, y);
      box.right = std::max(box.right, x + 1);
      box.bottom = std::max(box.bottom, y + 1);
    }
  }
  return box.right == 0 ? PixelBox() : box;
}

auto Near(const Rgb& colour, int tolerance) {
  return [=](const Rgb& pixel) {
    return IsNear(pixel.red, colour.red, tolerance) &&
           IsNear(pixel.green, colour.green, tolerance) &&
           IsNear(pixel.blue, colour.blue, tolerance);
  };
}

std::string OutputOf(const std::string& command) {
  const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
  std::string output;
  std::array<char, 4096> buffer = {};
  while (const size_t count = std::fread(buffer.data(), 1, buffer.size(), pipe.get())) {
    output.append(buffer.data(), count);
  }
  return output;
}

}  // namespace

std::optional<std::string> MemoryFolder::read(std::string_view name) {
  asked.emplace_back(name);
  const auto file = files.find(name);
  return file == files.end() ? std::nullopt : std::optional(file->second);
}

bool CountingProgress::at(int percent) {
  heard.push_back(percent);
  return --most_ >= 0;
}

Rgb PixelAt(const pages::Bitmap& bitmap, int32_t x, int32_t y) {
  const size_t at =
      4 * (static_cast<size_t>(y) * static_cast<size_t>(bitmap.width) + static_cast<size_t>(x));
  return {bitmap.pixels[at + 2], bitmap.pixels[at + 1], bitmap.pixels[at]};
}

PixelBox BoxOfColour(const pages::Bitmap& bitmap, const Rgb& colour, int tolerance) {
  return BoxOf(bitmap, Near(colour, tolerance));
}

int64_t CountColour(const pages::Bitmap& bitmap, const Rgb& colour, int tolerance) {
  int64_t count = 0;
  BoxOf(bitmap, [&](const Rgb& pixel) {
    count += Near(colour, tolerance)(pixel) ? 1 : 0;
    return false;
  });
  return count;
}

PixelBox BoxOfInk(const pages::Bitmap& bitmap) {
  return BoxOf(bitmap,
               [](const Rgb& pixel) { return pixel.red + pixel.green + pixel.blue < 3 * 250; });
}

pages::Bitmap DrawPage(pages::Layout& layout, int32_t page, int32_t dotsPerInch) {
  CountingProgress progress;
  return layout.draw(page, dotsPerInch, progress);
}

std::string PdfOf(pages::Layout& layout, pages::PageRange range,
                  const pages::PdfProperties& properties) {
  CountingProgress progress;
  return layout.pdf(range, properties, progress);
}

std::string TextOfPdf(const std::string& pdf) {
  const TempDirectory directory;
  const auto file = directory.write("a.pdf", pdf);
  return OutputOf("pdftotext -layout '" + file.string() + "' -");
}

std::string WordsOfPdf(const std::string& pdf) {
  std::istringstream text(TextOfPdf(pdf));
  std::string words;
  for (std::string word; text >> word;) words += (words.empty() ? "" : " ") + word;
  return words;
}

std::string PdfInfo(const std::string& pdf, const std::string& name) {
  const TempDirectory directory;
  const auto file = directory.write("a.pdf", pdf);
  std::istringstream lines(OutputOf("pdfinfo -isodates '" + file.string() + "'"));
  for (std::string line; std::getline(lines, line);) {
    if (line.rfind(name + ":", 0) != 0) continue;
    const size_t value = line.find_first_not_of(' ', name.size() + 1);
    return value == std::string::npos ? "" : line.substr(value);
  }
  return {};
}

std::vector<std::string> LinksOfPdf(const std::string& pdf) {
  const TempDirectory directory;
  const auto file = directory.write("a.pdf", pdf);
  std::istringstream lines(OutputOf("pdfinfo -url '" + file.string() + "'"));
  std::vector<std::string> links;
  std::string line;
  std::getline(lines, line);
  while (std::getline(lines, line)) links.push_back(line.substr(line.rfind(' ') + 1));
  return links;
}

std::vector<LinkOnWords> LinksOnWords(const std::string& pdf) {
  const TempDirectory directory;
  const auto file = directory.write("a.pdf", pdf);
  const std::string into = (directory.path() / "a").string();
  OutputOf("pdftohtml -xml -i '" + file.string() + "' '" + into + "'");
  const std::string xml = ReadWholeFile(into + ".xml");
  std::vector<LinkOnWords> links;
  constexpr std::string_view kLink = "<a href=\"";
  for (size_t at = xml.find(kLink); at != std::string::npos; at = xml.find(kLink, at + 1)) {
    const size_t address = at + kLink.size();
    const size_t end = xml.find('"', address);
    const size_t words = xml.find('>', end) + 1;
    links.push_back(
        {xml.substr(address, end - address), xml.substr(words, xml.find('<', words) - words)});
    if (links.back().to.starts_with("a.html#")) links.back().to.erase(0, 6);
  }
  return links;
}

std::ostream& operator<<(std::ostream& out, const LinkOnWords& link) {
  return out << link.words << " -> " << link.to;
}

}  // namespace tarn::test
