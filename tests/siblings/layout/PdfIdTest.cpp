// The id of a PDF.
#include "siblings/layout/PdfId.h"

#include <gtest/gtest.h>

#include "siblings/layout/HtmlFixture.h"
#include "siblings/layout/TextEngine.h"

namespace tarn::test {
namespace {

using namespace tarn::pages;

const std::string kStart = "%PDF-1.5\nxref\n0 1\n0000000000 65535 f \ntrailer\n<< /Size 1\n";
const std::string kEnd = ">>\nstartxref\n9\n%%EOF\n";

// Its two parts, which are to be the same.
std::string IdOf(const std::string& pdf) {
  constexpr std::string_view kBegin = "/ID [<";
  const size_t begin = pdf.rfind(kBegin);
  if (begin == std::string::npos) return "none";
  const std::string id = pdf.substr(begin + kBegin.size(), 32);
  EXPECT_EQ(pdf.substr(begin + kBegin.size() + 32, 36), "><" + id + ">]");
  return id;
}

TEST(PdfId, IsTheDigestOfTheBytes) {
  // `printf ... | md5sum` of kStart and kEnd.
  EXPECT_EQ(WithPdfId(kStart + kEnd),
            "%PDF-1.5\nxref\n0 1\n0000000000 65535 f \ntrailer\n<< /ID "
            "[<7b617425aeedeb4f4da338b6043f76ea><7b617425aeedeb4f4da338b6043f76ea>]\n   /Size "
            "1\n>>\nstartxref\n9\n%%EOF\n");
}

TEST(PdfId, IsInTheLastTrailer) {
  const std::string text = "\ntrailer\n<< in a text >>\n";
  const std::string file = WithPdfId(text + kStart + kEnd);
  EXPECT_EQ(file.substr(0, text.size()), text);
  EXPECT_NE(IdOf(file), "none");
}

TEST(PdfId, NeedsATrailer) {
  for (const char* file : {"", "trailer", "%PDF-1.5\ntrailer << >>"}) {
    EXPECT_EQ(WithPdfId(file), file);
  }
}

class IdOfPages : public HtmlFixture {
 protected:
  std::string idOf(const std::string& html, const PdfProperties& properties = {}) {
    const std::string pdf = PdfOf(*layOut(html), {}, properties);
    EXPECT_EQ(PdfInfo(pdf, "Pages"), "1");
    return IdOf(pdf);
  }
};

TEST_F(IdOfPages, IsThatOfTheDocument) {
  const std::string id = idOf("<p>one</p>");
  EXPECT_NE(id, "none");
  EXPECT_EQ(idOf("<p>one</p>"), id);
  EXPECT_NE(idOf("<p>two</p>"), id);
  EXPECT_NE(idOf("<p>one</p>", {"Title", "", ""}), id);
  EXPECT_NE(idOf("<p>one</p>", {"", "", "2024-05-01T12:34:56+02:00"}), id);
}

TEST_F(IdOfPages, IsThereForText) {
  const auto text = MakeTextEngine();
  const auto id = [&](const char* words) {
    return IdOf(PdfOf(*text->layOut(DocumentKind::Text, words, Paper::A4, folder_)));
  };
  EXPECT_NE(id("one"), "none");
  EXPECT_EQ(id("one"), id("one"));
  EXPECT_NE(id("one"), id("two"));
}

}  // namespace
}  // namespace tarn::test
