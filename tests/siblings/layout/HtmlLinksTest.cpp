// Where links of HTML lie in a PDF.
#include <gtest/gtest.h>

#include "siblings/PdfLinks.h"
#include "siblings/layout/HtmlFixture.h"
#include "siblings/layout/Pictures.h"

namespace tarn::test {
namespace {

using namespace tarn::pages;

using Shown = std::vector<std::string>;

constexpr Rgb kRed = {220, 20, 20};

class HtmlLinksTest : public HtmlFixture {
 protected:
  Shown linksOf(const std::string& html) { return WordsOfLinks(PdfOf(*layOut(html))); }

  static std::string picture(int width, int height) {
    return "<img width=" + std::to_string(width) + " height=" + std::to_string(height) + " src=\"" +
           DataUrlOf(PngOf(10, 10, kRed)) + "\">";
  }
};

const std::string kLink = "<a href='http://a.example/'>read this</a>";
const Shown kItsLink = {"read this > http://a.example/"};

// What is not to be seen comes after a link.
TEST_F(HtmlLinksTest, ALinkBeforeAnEmptyClip) {
  for (const std::string style :
       {"height:0", "max-height:0", "max-height:0px", "max-height:0;max-width:0;font-size:1px",
        "width:0", "height:0;width:0"}) {
    const std::string begin = kLink + "<div style='overflow:hidden;" + style + "'>";
    EXPECT_EQ(linksOf(begin + "hidden words</div><p>end"), kItsLink) << style;
    EXPECT_EQ(linksOf(begin + picture(20, 20) + "</div><p>end"), kItsLink) << style;
    EXPECT_EQ(linksOf(begin + "<a href='http://b.example/'>one</a> <a href='http://c.example/'>"
                              "two</a></div><p>end"),
              kItsLink)
        << style;
    EXPECT_EQ(linksOf("<table><tr><td>" + begin + "hidden</div></table>"), kItsLink) << style;
    EXPECT_EQ(linksOf(kLink + "<span style='display:block;overflow:hidden;" + style +
                      "'>hidden</span> end"),
              kItsLink)
        << style;
  }
}

TEST_F(HtmlLinksTest, HowAddressesAreWritten) {
  EXPECT_EQ(linksOf("<p><a href=' http://a.example/ '>one</a><p><a href='\nhttp://b.example/x\n"
                    "y'>two</a><p><a href='tel:+4930'>three</a><p><a href='SIP:a@b.example'>four"
                    "</a><p><a href=' '>none</a><p><a href=' javascript:x'>none</a><p>"
                    "<a href='java\nscript:x'>none</a><p><a href='/etc/passwd'>none</a>"),
            (Shown{"one > http://a.example/", "two > http://b.example/xy", "three > tel:+4930",
                   "four > SIP:a@b.example"}));
}

TEST_F(HtmlLinksTest, AnEmptyClipDrawsNothing) {
  const auto layout =
      layOut("<div style='overflow:hidden;height:0;background:#dc1414'>words" + picture(50, 50) +
             "<div style='border:3px solid #dc1414;background:#dc1414'>more</div>"
             "</div>");
  EXPECT_EQ(BoxOfInk(DrawPage(*layout, 1)).width(), 0);
  EXPECT_EQ(WordsOfPdf(PdfOf(*layout)), "");
}

TEST_F(HtmlLinksTest, LinksThatAClipHidesAreNone) {
  const std::string hidden = "<a href='http://hidden.example/'>read this</a>";
  EXPECT_EQ(linksOf("<div style='overflow:hidden;height:0'>" + hidden + "</div><div>" + kLink),
            kItsLink);
  EXPECT_EQ(linksOf("<div style='overflow:hidden;height:20px'>words<br><br><br>" + hidden +
                    "</div><br><br>" + kLink),
            kItsLink);
}

TEST_F(HtmlLinksTest, ALinkEndsWithItsClip) {
  const std::string pdf =
      PdfOf(*layOut("<div style='overflow:hidden;width:200px;height:40px'>"
                    "<div style='overflow:hidden;width:1000px'>"
                    "<a href='http://a.example/'>" +
                    picture(400, 300) + "</a></div></div>"));
  const auto links = PdfLinks(pdf);
  ASSERT_EQ(links.size(), 1u);
  EXPECT_NEAR(links[0].left, 36, 0.1);
  EXPECT_NEAR(links[0].top, 36, 0.1);
  EXPECT_NEAR(links[0].width, 150, 0.1);
  EXPECT_NEAR(links[0].height, 30, 0.1);
}

// What overflows a clip does so on no other page either.
TEST_F(HtmlLinksTest, AClipHidesOnThePagesAfterIt) {
  const auto layout = layOut("<div style='overflow:hidden;height:100px'><div>first</div>" +
                             picture(20, 3000) + "<p>" + kLink + "</div>");
  EXPECT_EQ(WordsOfPdf(PdfOf(*layout)), "first");
  EXPECT_TRUE(linksOf("<div style='overflow:hidden;height:100px'><div>first</div>" +
                      picture(20, 3000) + "<p>" + kLink + "</div>")
                  .empty());
  for (int32_t page = 2; page <= layout->pageCount(); ++page) {
    EXPECT_EQ(BoxOfInk(DrawPage(*layout, page)).width(), 0) << page;
  }
}

TEST_F(HtmlLinksTest, ThePartsOfAPictureOnSeveralPages) {
  const std::string pdf =
      PdfOf(*layOut("<a href='http://a.example/'>" + picture(400, 2500) + "</a><p>end"));
  const auto links = PdfLinks(pdf);
  ASSERT_EQ(links.size(), 3u);
  double height = 0;
  for (size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(links[i].page, i + 1);
    EXPECT_NEAR(links[i].top, 36, 0.1);
    EXPECT_NEAR(links[i].width, 300, 0.1);
    EXPECT_LE(links[i].top + links[i].height, 842 - 35.9);
    height += links[i].height;
  }
  EXPECT_NEAR(height, 2500 * 0.75, 1);
}

}  // namespace
}  // namespace tarn::test
