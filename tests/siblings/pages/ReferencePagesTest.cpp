// Documents of reference, laid out by the built helpers: their pages look as they did when a person
// looked at them, the PDF looks like the pages, and all of the text is in it.
//
// reference/NAME-N.look has the look of page N. When pages are to look different, look at them, and
// then let this test write the files: TARN_WRITE_LOOKS=1.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <ostream>
#include <string>

#include "DocumentWords.h"
#include "PageLook.h"
#include "siblings/client/PageHelper.h"
#include "support/TempDirectory.h"

namespace tarn::test {
namespace {

using pages::Bitmap;
using pages::DocumentKind;

constexpr int32_t kDotsPerInch = 96;

struct Reference {
  DocumentKind kind;
  const char* file;
  int32_t pageCount;
  std::string (*wordsOf)(std::string_view);
};

void PrintTo(const Reference& reference, std::ostream* out) { *out << reference.file; }

class ReferencePages : public ::testing::TestWithParam<Reference> {
 protected:
  ReferencePages()
      : helper_(options()), bytes_(ReadWholeFile(std::string(REFERENCE_PATH "/") + file())) {}

  static pages::HelperOptions options() {
    pages::HelperOptions options;
    options.programs = HELPERS_PATH;
    return options;
  }

  static std::string file() { return GetParam().file; }

  pages::LaidOut layOut() {
    return helper_.layOut({.kind = GetParam().kind, .bytes = bytes_, .folder = {}});
  }

  static std::string placeOfLook(int32_t page) {
    const std::string name = file().substr(0, file().find('.'));
    return std::string(REFERENCE_PATH "/") + name + "-" + std::to_string(page) + ".look";
  }

  pages::PageHelper helper_;
  const std::string bytes_;
};

INSTANTIATE_TEST_SUITE_P(
    AllKinds, ReferencePages,
    ::testing::Values(Reference{DocumentKind::Html, "newsletter.html", 2, WordsOfHtml},
                      Reference{DocumentKind::Text, "letter.txt", 2, WordsOfText},
                      Reference{DocumentKind::Rtf, "minutes.rtf", 2, WordsOfRtf}),
    [](const ::testing::TestParamInfo<Reference>& reference) {
      const std::string name = reference.param.file;
      return name.substr(0, name.find('.'));
    });

TEST_P(ReferencePages, LookAsTheyDid) {
  const pages::LaidOut laidOut = layOut();
  ASSERT_EQ(laidOut.pageCount, GetParam().pageCount);
  for (int32_t page = 1; page <= laidOut.pageCount; ++page) {
    const Bitmap bitmap = helper_.draw(laidOut, page, kDotsPerInch);
    const std::string look = WrittenLook(LookOf(bitmap, kDotsPerInch));
    if (std::getenv("TARN_WRITE_LOOKS") != nullptr) std::ofstream(placeOfLook(page)) << look;
    // A letter that is a pixel further left may change two squares.
    const LookDifference difference = CompareWritten(look, ReadWholeFile(placeOfLook(page)));
    EXPECT_LE(difference.largest, 2) << look;
    EXPECT_LE(difference.mean, 0.1) << look;
  }
}

TEST_P(ReferencePages, LookTheSameInPdf) {
  const pages::LaidOut laidOut = layOut();
  const std::string pdf = helper_.pdf(laidOut, {}, {});
  for (int32_t page = 1; page <= laidOut.pageCount; ++page) {
    const Bitmap drawn = helper_.draw(laidOut, page, kDotsPerInch);
    const Bitmap rendered = RenderedPage(pdf, page, kDotsPerInch);
    const LookDifference difference =
        Compare(LookOf(drawn, kDotsPerInch), LookOf(rendered, kDotsPerInch));
    EXPECT_LE(difference.largest, 20) << page;
    EXPECT_LE(difference.mean, 2) << page;
  }
}

TEST_P(ReferencePages, HaveAllOfTheirTextInPdf) {
  const TempDirectory directory;
  const auto file = directory.write("pages.pdf", helper_.pdf(layOut(), {}, {}));
  const std::string text = (directory.path() / "text").string();
  // In the order in which it was drawn.
  const std::string command = "pdftotext -raw -enc UTF-8 '" + file.string() + "' '" + text + "'";
  ASSERT_EQ(std::system(command.c_str()), 0);
  EXPECT_EQ(Words(ReadWholeFile(text)), GetParam().wordsOf(bytes_));
}

TEST(PageLook, TellsPagesApart) {
  Bitmap white = {96, 48, std::vector<uint8_t>(size_t{96} * 48 * 4, 0xFF)};
  Bitmap dotted = white;
  // A square, or a quarter of an inch, from the left: half of it black.
  for (size_t y = 0; y < 12; ++y) {
    for (size_t x = 24; x < 48; ++x) std::fill_n(&dotted.pixels[(y * 96 + x) * 4], 3, 0);
  }
  EXPECT_EQ(WrittenLook(LookOf(white, 96)), "0000\n0000\n");
  EXPECT_EQ(WrittenLook(LookOf(dotted, 96)), "0800\n0000\n");
  const LookDifference difference = Compare(LookOf(white, 96), LookOf(dotted, 96));
  EXPECT_NEAR(difference.largest, 127.5, 0.01);
  EXPECT_NEAR(difference.mean, 127.5 / 8, 0.01);
  EXPECT_EQ(CompareWritten("0800\n", "0000\n").largest, 8);
  EXPECT_EQ(CompareWritten("0800\n", "0000").largest, 255);
}

}  // namespace
}  // namespace tarn::test
