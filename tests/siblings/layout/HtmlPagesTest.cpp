// How a document of HTML is split into pages, and made to fit them.
#include <gtest/gtest.h>

#include "siblings/layout/HtmlFixture.h"
#include "siblings/layout/Pictures.h"

namespace tarn::test {
namespace {

using namespace tarn::pages;

constexpr Rgb kRed = {220, 20, 20};

using HtmlPagesTest = HtmlFixture;

std::string Paragraphs(int count) {
  std::string html;
  for (int i = 1; i <= count; ++i) html += "<p>paragraph " + std::to_string(i) + "</p>";
  return html;
}

TEST_F(HtmlPagesTest, TextGoesOnOnTheNextPage) {
  const auto layout = layOut(Paragraphs(100));
  ASSERT_EQ(layout->pageCount(), 4);
  std::string words;
  for (int i = 1; i <= 100; ++i) {
    words += (i == 1 ? "" : " ") + std::string("paragraph ") + std::to_string(i);
  }
  EXPECT_EQ(WordsOfPdf(PdfOf(*layout)), words);
}

TEST_F(HtmlPagesTest, NoLineIsCutInTwo) {
  // Lines of every height: each page's ink keeps to the margins, and none is lost.
  std::string html;
  for (int i = 0; i < 120; ++i) {
    html += "<div style='font-size:" + std::to_string(10 + i * 7 % 40) + "px'>HxH</div>";
  }
  const auto layout = layOut(html);
  ASSERT_GT(layout->pageCount(), 3);
  for (int32_t page = 1; page <= layout->pageCount(); ++page) {
    const PixelBox ink = BoxOfInk(DrawPage(*layout, page));
    EXPECT_LE(ink.bottom, 1123 - 47) << page;
    // A line that is cut would touch the edge of the content.
    EXPECT_GT(ink.top, 49) << page;
  }
}

TEST_F(HtmlPagesTest, APictureIsNotCut) {
  const std::string image =
      "<img width=100 height=400 src=\"" + DataUrlOf(PngOf(10, 40, kRed)) + "\">";
  const auto layout = layOut("<div style='height:800px'>a</div>" + image);
  ASSERT_EQ(layout->pageCount(), 2);
  EXPECT_EQ(CountColour(DrawPage(*layout, 1), kRed), 0);
  EXPECT_NEAR(BoxOfColour(DrawPage(*layout, 2), kRed).height(), 400, 1);
}

TEST_F(HtmlPagesTest, APictureHigherThanAPageIsCut) {
  const auto layout =
      layOut("<img width=100 height=2500 src=\"" + DataUrlOf(PngOf(10, 40, kRed)) + "\">");
  ASSERT_EQ(layout->pageCount(), 3);
  int height = 0;
  for (int32_t page = 1; page <= 3; ++page) {
    height += BoxOfColour(DrawPage(*layout, page), kRed).height();
  }
  EXPECT_NEAR(height, 2500, 4);
}

TEST_F(HtmlPagesTest, ARowStaysTogether) {
  std::string html = "<table border=1>";
  for (int i = 0; i < 60; ++i) html += "<tr><td>first<br>second</td></tr>";
  const auto layout = layOut(html + "</table>");
  ASSERT_GT(layout->pageCount(), 1);
  const std::string text = WordsOfPdf(PdfOf(*layout, {1, 1}));
  EXPECT_EQ(text.substr(text.size() - 12), "first second");
}

TEST_F(HtmlPagesTest, AGroundGoesOnOnEachPage) {
  const auto layout = layOut("<div style='background:#dc1414;width:100px'>" +
                             repeated("<div style='height:100px'>x</div>", 25) + "</div>");
  ASSERT_EQ(layout->pageCount(), 3);
  EXPECT_GT(BoxOfColour(DrawPage(*layout, 2), kRed).height(), 900);
  EXPECT_LE(BoxOfColour(DrawPage(*layout, 2), kRed).bottom, 1123 - 47);
}

TEST_F(HtmlPagesTest, AWideTableIsMadeSmaller) {
  const auto layout =
      layOut("<table width=1200 cellspacing=0><tr><td bgcolor='#dc1414'>wide</td></tr></table>");
  const Bitmap page = DrawPage(*layout, 1);
  EXPECT_NEAR(BoxOfColour(page, kRed).width(), 698, 2);
  EXPECT_EQ(WordsOfPdf(PdfOf(*layout)), "wide");
}

TEST_F(HtmlPagesTest, TheLastCellOfAVeryWideTableIsOnThePage) {
  const auto layout = layOut(
      "<table width=4000 cellspacing=0><tr><td width=3800>first</td>"
      "<td style='color:#dc1414' bgcolor='#dc1414'>last</td></tr></table>");
  EXPECT_EQ(layout->pageCount(), 1);
  const PixelBox cell = BoxOfColour(DrawPage(*layout, 1, 288), kRed);
  EXPECT_NEAR(cell.left / 3.0, 48 + 698 * 3800 / 4000, 3);
  EXPECT_NEAR(cell.right / 3.0, 48 + 698, 2);
  EXPECT_EQ(WordsOfPdf(PdfOf(*layout)), "first last");
}

TEST_F(HtmlPagesTest, AllCellsOfManyColumnsAreOnThePage) {
  std::string cells;
  std::string words;
  for (int i = 1; i <= 60; ++i) {
    const std::string word = "column" + std::to_string(i);
    cells += "<td bgcolor='" + std::string(i == 60 ? "#dc1414" : "#fefefe") + "'>" + word + "</td>";
    words += (i == 1 ? "" : " ") + word;
  }
  const auto layout = layOut("<table border=1><tr>" + cells + "</tr></table>");
  const PixelBox last = BoxOfColour(DrawPage(*layout, 1, 288), kRed);
  EXPECT_GT(last.width(), 20);
  EXPECT_GT(last.right, 3 * 730);
  EXPECT_LE(last.right, 3 * (794 - 47));
  EXPECT_EQ(WordsOfPdf(PdfOf(*layout)), words);
}

TEST_F(HtmlPagesTest, APictureFarToTheRightIsOnThePage) {
  const auto layout = layOut("<div style='margin-left:3000px'><img width=200 height=100 src=\"" +
                             DataUrlOf(PngOf(10, 10, kRed)) + "\"></div>");
  const PixelBox picture = BoxOfColour(DrawPage(*layout, 1, 288), kRed);
  EXPECT_NEAR(picture.width() / 3.0, 698.0 * 200 / 3200, 2);
  EXPECT_NEAR(picture.right / 3.0, 48 + 698, 2);
}

TEST_F(HtmlPagesTest, WhatIsWiderThanItsSurroundingsIsOnThePage) {
  const auto layout = layOut("<div style='width:300%;text-align:right'>HHH</div>");
  const PixelBox ink = BoxOfInk(DrawPage(*layout, 1, 288));
  EXPECT_NEAR(ink.right / 3.0, 48 + 698, 2);
  EXPECT_NEAR(ink.height() / 3.0, 11.5 / 3, 0.7);
  EXPECT_EQ(WordsOfPdf(PdfOf(*layout)), "HHH");
}

TEST_F(HtmlPagesTest, WhatIsNotSeenMakesNoTextSmaller) {
  const std::string dot = DataUrlOf(PngOf(1, 1, {254, 254, 254}));
  const std::string hidden = "white-space:nowrap;overflow:hidden;color:#fefefe'>";
  for (const std::string& wide : std::vector<std::string>{
           "<div style='width:1e9px;height:9px;background:#fefefe'></div>",
           "<div style='width:100000px;border:1px solid #fefefe'></div>",
           "<div style='width:100000px;height:9px;background:url(" + dot + ")'></div>",
           "<div style='width:9000px;height:9px;background:url(" + dot + ") no-repeat'></div>",
           "<table width=9000 bgcolor='#fefefe'><tr><td>&#32;</td></tr></table>",
           "<div style='position:absolute;left:1e9px'>x</div>",
           "<div style='position:absolute;top:-500px;left:9000px'>x</div>",
           "<div style='width:90px;height:0;" + hidden + repeated("word ", 200) + "</div>",
           "<div style='width:90px;" + hidden + repeated("word ", 200) + "</div>"}) {
    const auto layout = layOut(wide + "<p>HHH</p>");
    // A capital of the default font is 0.72 of its 16 pixels.
    EXPECT_NEAR(BoxOfInk(DrawPage(*layout, 1, 288)).height() / 3.0, 11.5, 1) << wide;
    EXPECT_NE(WordsOfPdf(PdfOf(*layout)).find("HHH"), std::string::npos) << wide;
  }
}

TEST_F(HtmlPagesTest, ALineThatIsNotBrokenIsOnThePage) {
  std::string words;
  for (int i = 1; i <= 200; ++i) words += (i == 1 ? "" : " ") + std::to_string(i);
  const auto layout = layOut("<div style='white-space:nowrap'>" + words + "</div>");
  EXPECT_LE(BoxOfInk(DrawPage(*layout, 1)).right, 794 - 47);
  EXPECT_EQ(WordsOfPdf(PdfOf(*layout)), words);
}

TEST_F(HtmlPagesTest, ALongAddressIsBrokenAndShrinksNothing) {
  const auto layout = layOut("<p>H</p><p>https://example.com/" + repeated("abc/", 200) + "</p>");
  const PixelBox ink = BoxOfInk(DrawPage(*layout, 1));
  EXPECT_LE(ink.right, 794 - 47);
  EXPECT_GT(ink.right, 600);
}

TEST_F(HtmlPagesTest, AllResolutionsShowTheSame) {
  const auto layout = layOut(Paragraphs(20));
  const PixelBox coarse = BoxOfInk(DrawPage(*layout, 1, 96));
  const PixelBox fine = BoxOfInk(DrawPage(*layout, 1, 288));
  EXPECT_NEAR(fine.left / 3.0, coarse.left, 1.5);
  EXPECT_NEAR(fine.right / 3.0, coarse.right, 1.5);
  EXPECT_NEAR(fine.bottom / 3.0, coarse.bottom, 1.5);
}

TEST_F(HtmlPagesTest, TheFolderIsNotUsedAfterwards) {
  auto folder = std::make_unique<MemoryFolder>();
  folder->files["a.png"] = PngOf(40, 30, kRed);
  const auto layout = engine_->layOut(DocumentKind::Html, "<img src=a.png>", Paper::A4, *folder);
  folder.reset();
  EXPECT_NEAR(BoxOfColour(DrawPage(*layout, 1), kRed).width(), 40, 1);
}

TEST_F(HtmlPagesTest, LayoutsOutliveTheNextAndTheEngine) {
  const auto first = layOut("<p>first</p>");
  const auto second = layOut("<p>second</p>");
  engine_.reset();
  EXPECT_EQ(WordsOfPdf(PdfOf(*first)), "first");
  EXPECT_EQ(WordsOfPdf(PdfOf(*second)), "second");
}

}  // namespace
}  // namespace tarn::test
