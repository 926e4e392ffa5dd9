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

TEST_F(HtmlPagesTest, AWideTableIsNotMadeTiny) {
  // At a third of its size a letter H is about 4 pixels high.
  const auto layout = layOut("<table width=9000 bgcolor='#fefefe'><tr><td>HHH</td></tr></table>");
  EXPECT_NEAR(BoxOfInk(DrawPage(*layout, 1, 288)).height() / 3.0, 4, 0.7);
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
