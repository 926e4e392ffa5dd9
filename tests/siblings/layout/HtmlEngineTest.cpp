// What a document of HTML looks like on a page.
#include "siblings/layout/HtmlEngine.h"

#include <gtest/gtest.h>

#include "siblings/layout/HtmlFixture.h"
#include "siblings/layout/Pictures.h"

namespace tarn::test {
namespace {

using namespace tarn::pages;

constexpr Rgb kRed = {220, 20, 20};
constexpr Rgb kGreen = {0, 128, 0};
constexpr Rgb kBlue = {0, 0, 255};

using HtmlEngineTest = HtmlFixture;

TEST_F(HtmlEngineTest, NothingIsAnEmptyPage) {
  const auto layout = layOut("");
  EXPECT_EQ(layout->pageCount(), 1);
  EXPECT_EQ(BoxOfInk(DrawPage(*layout, 1)).width(), 0);
  EXPECT_EQ(layOut("<html><body></body></html>")->pageCount(), 1);
}

TEST_F(HtmlEngineTest, TextIsTextInAPdf) {
  EXPECT_EQ(wordsOf("<p>Gr\u00FC\u00DFe &amp; <b>bold</b> <i>words</i><br>of&nbsp;fi\u20AC</p>"),
            "Gr\u00FC\u00DFe & bold words of fi\u20AC");
  EXPECT_EQ(wordsOf("<p>\u4F60\u597D</p>"), "\u4F60\u597D");
}

// A character without a glyph is a box, and no text of the PDF.
TEST_F(HtmlEngineTest, ScriptsHaveTheirGlyphs) {
  for (const char* word : {
           "\u0E1B\u0E23\u0E30\u0E0A\u0E38\u0E21",  // Thai
           "\u0928\u092E\u0928",                    // Hindi
           "\u0995\u09B2\u09AE",                    // Bengali
           "\u0A2E\u0A28",                          // Punjabi
           "\u0A97\u0AAE\u0AA8",                    // Gujarati
           "\u0BAE\u0BB0\u0BAE",                    // Tamil
           "\u0C15\u0C32\u0C2E",                    // Telugu
           "\u0C95\u0CB2\u0CAE",                    // Kannada
           "\u0D2E\u0D30\u0D28"                     // Malayalam
       }) {
    EXPECT_EQ(wordsOf("<p>" + std::string(word) + "</p>"), word);
  }
  for (const char* word : {"\u05E9\u05DC\u05D5\u05DD", "\u0633\u0644\u0627\u0645"}) {
    EXPECT_NE(wordsOf("<p>" + std::string(word) + "</p>"), "") << word;
  }
}

TEST_F(HtmlEngineTest, OrdinaryTextIsSixteenPixelsHigh) {
  // A capital of the default font is 0.72 of its size.
  const PixelBox ink = BoxOfInk(DrawPage(*layOut("<p>HHH</p>"), 1, 96));
  EXPECT_NEAR(ink.height(), 11.5, 1);
  EXPECT_NEAR(ink.left, 48 + 1, 1.5);
}

TEST_F(HtmlEngineTest, SizesOfFonts) {
  const auto heightOf = [&](const std::string& html) {
    return BoxOfInk(DrawPage(*layOut(html), 1, 288)).height() / 3.0;
  };
  EXPECT_NEAR(heightOf("<p style='font-size:32px'>H</p>"), 23, 1);
  EXPECT_NEAR(heightOf("<p style='font-size:24pt'>H</p>"), 23, 1);
  EXPECT_NEAR(heightOf("<font size=6>H</font>"), 23, 1);
  EXPECT_NEAR(heightOf("<font size='+3'>H</font>"), 23, 1);
  EXPECT_NEAR(heightOf("<h1>H</h1>"), 23, 1);
  EXPECT_NEAR(heightOf("<font size=-1>H</font>"), 9.4, 1);
}

TEST_F(HtmlEngineTest, TextWithoutASizeIsNotThere) {
  for (const std::string size : {"0", "0px", "0pt", "0em", "0%", "0.0px", ".0"}) {
    EXPECT_EQ(wordsOf("<p>a<div style='font-size:" + size + "'>x <b>y</b><p>z</div>b"), "a b")
        << size;
  }
  EXPECT_EQ(wordsOf("<style>.h{font:0 Arial}</style><p class=h>x<p>a"), "a");
  EXPECT_EQ(wordsOf("<table style='font-size:0'><tr><td>x<td style='font-size:12px'>a</table>"),
            "a");
  // Sizes of their own count from there.
  EXPECT_EQ(wordsOf("<div style='font-size:0'>x<b style='font-size:12px'>a<i>b</i></b>"
                    "<b style='font-size:200%'>y</b><b style='font-size:2em'>z</b>"
                    "<b style='font-size:small'>c</b></div>"),
            "abc");
  EXPECT_EQ(wordsOf("<p style='font-size:1px'>a<p style='font-size:0.5em'>b"), "a b");
}

TEST_F(HtmlEngineTest, WhatIsTransparentLeavesItsRoomBlank) {
  const auto shown = [this](const std::string& opacity) {
    return layOut(
        "<div style='opacity:" + opacity +
        "'><div style='background:#dc1414'>x<p>y <a href='http://a.example/'>z</a></div>" +
        "<table border=1><tr><td>t</table></div><p style='color:#0000ff'>HxH " +
        "<span style='opacity:" + opacity + "'>q</span>");
  };
  const auto all = shown("0.5");
  const PixelBox seen = BoxOfColour(DrawPage(*all, 1), kBlue);
  EXPECT_EQ(WordsOfPdf(PdfOf(*all)), "x yz t HxH q");
  for (const std::string opacity : {"0", "0.0", "0%"}) {
    const auto layout = shown(opacity);
    const std::string pdf = PdfOf(*layout);
    EXPECT_EQ(WordsOfPdf(pdf), "HxH") << opacity;
    EXPECT_TRUE(LinksOfPdf(pdf).empty()) << opacity;
    const PixelBox ink = BoxOfInk(DrawPage(*layout, 1));
    EXPECT_NEAR(ink.top, seen.top, 1) << opacity;
    EXPECT_NEAR(ink.bottom, ink.top + 12, 3) << opacity;
  }
}

TEST_F(HtmlEngineTest, ColoursOfTextAndGround) {
  const Bitmap page = DrawPage(
      *layOut("<div style='background:#008000;color:#008000;width:100px;height:50px'>x</div>"
              "<p style='color:windowtext'>black</p>"),
      1);
  const PixelBox green = BoxOfColour(page, kGreen);
  EXPECT_NEAR(green.width(), 100, 1);
  EXPECT_NEAR(green.height(), 50, 1);
  EXPECT_NEAR(green.left, 48, 1);
  EXPECT_NEAR(green.top, 48, 1);
  EXPECT_GT(CountColour(page, {0, 0, 0}, 60), 20);
}

TEST_F(HtmlEngineTest, TheGroundOfTheBodyIsThatOfThePaper) {
  const Bitmap page = DrawPage(*layOut("<body bgcolor='#0000ff'><p>x</p></body>"), 1);
  EXPECT_GT(CountColour(page, kBlue), int64_t{page.width} * page.height * 99 / 100);
}

TEST_F(HtmlEngineTest, StylesForDarkScreensAreNotForPages) {
  const Bitmap page = DrawPage(
      *layOut("<style>@media (prefers-color-scheme:dark){body{background:#0000ff}}</style>"
              "<style media='(prefers-color-scheme: dark)'>body{background:#0000ff}</style>"
              "<style media=print>p{color:#dc1414}</style><p>x</p>"),
      1);
  EXPECT_EQ(CountColour(page, {0, 0, 255}), 0);
  EXPECT_GT(CountColour(page, {220, 20, 20}), 0);
}

TEST_F(HtmlEngineTest, BordersOfBoxesAndOldTables) {
  const Bitmap box =
      DrawPage(*layOut("<div style='border:4px solid #0000ff;width:100px;height:50px'></div>"), 1);
  EXPECT_EQ(BoxOfColour(box, kBlue).width(), 108);
  EXPECT_EQ(BoxOfColour(box, kBlue).height(), 58);
  const Bitmap table =
      DrawPage(*layOut("<table border=1 cellpadding=20><tr><td>a</td></tr></table>"), 1);
  EXPECT_GT(CountColour(table, {128, 128, 128}, 30), 150);
  EXPECT_GT(BoxOfInk(table).height(), 55);
}

TEST_F(HtmlEngineTest, BordersOfDotsOfDashesAndOfTwoLines) {
  const auto drawn = [this](const std::string& style) {
    return DrawPage(
        *layOut("<div style='border:9px " + style + " #0000ff;width:100px;height:50px'></div>"), 1);
  };
  const int64_t solid = CountColour(drawn("solid"), kBlue);
  for (const std::string style : {"dotted", "dashed"}) {
    const Bitmap page = drawn(style);
    EXPECT_NEAR(BoxOfColour(page, kBlue).width(), 118, 18) << style;
    const double share = static_cast<double>(CountColour(page, kBlue)) / static_cast<double>(solid);
    EXPECT_NEAR(share, style == "dotted" ? 0.5 : 0.75, 0.15) << style;
  }
  const Bitmap two = drawn("double");
  EXPECT_NEAR(static_cast<double>(CountColour(two, kBlue)) / static_cast<double>(solid), 0.6, 0.08);
  const PixelBox box = BoxOfColour(two, kBlue);
  const int32_t middle = (box.top + box.bottom) / 2;
  EXPECT_GT(PixelAt(two, box.left + 4, middle).red, 250);
  EXPECT_LT(PixelAt(two, box.left + 1, middle).red, 5);
  EXPECT_LT(PixelAt(two, box.left + 7, middle).red, 5);
  EXPECT_EQ(CountColour(drawn("hidden"), kBlue), 0);
}

TEST_F(HtmlEngineTest, TextInOtherLetters) {
  EXPECT_EQ(wordsOf("<p style='text-transform:uppercase'>Ann Zo\xC3\xAB</p>"
                    "<p style='text-transform:lowercase'>BOB \xC3\x89</p>"
                    "<p style='text-transform:capitalize'>\xC3\xA9va lEE</p>"
                    "<p style='text-transform:none'>carOL</p>"),
            "ANN ZO\xC3\x8B bob \xC3\xA9 \xC3\x89va LEE carOL");
}

TEST_F(HtmlEngineTest, ACellIsAsHighAsItsText) {
  const Bitmap page = DrawPage(
      *layOut("<table cellspacing=0><tr><td style='height:10px;width:50px;background:#008000'>"
              "a<br>b<br>c</td></tr></table>"),
      1);
  EXPECT_GT(BoxOfColour(page, kGreen).height(), 50);
}

TEST_F(HtmlEngineTest, MarkersOfLists) {
  EXPECT_EQ(wordsOf("<ol><li>a<li>b</ol><ol type=a start=3><li>c</ol>"), "1. a 2. b c. c");
  const PixelBox disc = BoxOfInk(DrawPage(*layOut("<ul style='font-size:40px'><li></ul>"), 1));
  EXPECT_GE(disc.width(), 0);
}

TEST_F(HtmlEngineTest, ShapesOfMarkers) {
  const auto inkOf = [this](const std::string& type) {
    return CountColour(DrawPage(*layOut("<ul style='font-size:60px;color:#0000ff;list-style-type:" +
                                        type + "'><li>&nbsp;</ul>"),
                                1),
                       kBlue, 60);
  };
  EXPECT_GT(inkOf("square"), inkOf("disc"));
  EXPECT_GT(inkOf("disc"), inkOf("circle"));
  EXPECT_GT(inkOf("circle"), 0);
}

TEST_F(HtmlEngineTest, MarkersThatArePictures) {
  const Bitmap page = DrawPage(
      *layOut("<ul style='list-style-image:url(" + DataUrlOf(PngOf(8, 8, kRed)) + ")'><li>a</ul>"),
      1);
  EXPECT_GT(CountColour(page, kRed), 20);
}

TEST_F(HtmlEngineTest, ImagesOfDataUrls) {
  for (const std::string& file :
       {PngOf(40, 30, kRed), JpegOf(40, 30, kRed), WebpOf(40, 30, kRed), BmpOf(40, 30, kRed)}) {
    for (const char* label : {"image/png", "image", "text/plain", ""}) {
      const Bitmap page = DrawPage(*layOut("<img src=\"" + DataUrlOf(file, label) + "\">"), 1);
      EXPECT_NEAR(BoxOfColour(page, kRed).width(), 40, 1) << label;
      EXPECT_NEAR(BoxOfColour(page, kRed).height(), 30, 1) << label;
    }
  }
}

TEST_F(HtmlEngineTest, ImagesHaveTheSizeThatTheDocumentWants) {
  const std::string source = DataUrlOf(PngOf(40, 30, kRed));
  const Bitmap page = DrawPage(*layOut("<img width=80 src=\"" + source + "\">"), 1);
  EXPECT_NEAR(BoxOfColour(page, kRed).width(), 80, 1);
  EXPECT_NEAR(BoxOfColour(page, kRed).height(), 60, 1);
}

TEST_F(HtmlEngineTest, ImagesOfTheFolder) {
  folder_.files["inline 1.png"] = PngOf(40, 30, kRed);
  for (const char* source : {"inline 1.png", "./inline 1.png", "inline%201.png"}) {
    const Bitmap page = DrawPage(*layOut("<img src='" + std::string(source) + "'>"), 1);
    EXPECT_NEAR(BoxOfColour(page, kRed).width(), 40, 1) << source;
  }
}

TEST_F(HtmlEngineTest, ImagesOfTheGround) {
  const std::string source = DataUrlOf(PngOf(10, 10, kRed));
  const Bitmap tiled = DrawPage(
      *layOut("<div style=\"width:95px;height:45px;background:url(" + source + ")\"></div>"), 1);
  EXPECT_NEAR(BoxOfColour(tiled, kRed).width(), 95, 1);
  EXPECT_NEAR(BoxOfColour(tiled, kRed).height(), 45, 1);
  const Bitmap once = DrawPage(*layOut("<div style=\"width:95px;height:45px;background-repeat:"
                                       "no-repeat;background-image:url(" +
                                       source + ")\"></div>"),
                               1);
  EXPECT_NEAR(BoxOfColour(once, kRed).width(), 10, 1);
}

TEST_F(HtmlEngineTest, AMissingImageIsItsText) {
  EXPECT_EQ(wordsOf("<p>a <img src='http://a.example/b.png' alt='a small dog'> b</p>"),
            "a a small dog b");
  EXPECT_EQ(wordsOf("<p>a<img src='x.png'>b</p>"), "ab");
}

TEST_F(HtmlEngineTest, LinksOfTheWebAndMail) {
  const auto layout = layOut(
      "<p><a href='https://example.com/a?b=c'>two words</a> <a href='mailto:a@b.example'>mail</a>"
      "<a href='javascript:x'>no</a><a href='file:///etc/passwd'>no</a><a href='#x'>no</a></p>");
  EXPECT_EQ(LinksOfPdf(PdfOf(*layout)),
            (std::vector<std::string>{"https://example.com/a?b=c", "mailto:a@b.example"}));
}

// Also where a page is smaller than its paper, and on the second one.
TEST_F(HtmlEngineTest, LinksAreOnTheirWords) {
  const auto layout = layOut(
      "<table width=1000><tr><td>a<p><a href='http://a.example/'>first</a></table>"
      "<div style='height:1100px'></div><p>b<p><a href='http://b.example/'>second</a>");
  ASSERT_EQ(layout->pageCount(), 2);
  EXPECT_EQ(
      LinksOnWords(PdfOf(*layout)),
      (std::vector<LinkOnWords>{{"http://a.example/", "first"}, {"http://b.example/", "second"}}));
}

TEST_F(HtmlEngineTest, LinksWithinTheDocument) {
  const auto layout = layOut(
      "<p><a href='#end'>last</a><p><a href='#old%20name'>old</a><p><a href='#none'>none</a></p>"
      "<div style='height:1500px'></div><p><a name='old name'></a>middle</p>"
      "<div style='height:1500px'></div><h1 id=end>end</h1><p><a href='#end'>here</a>");
  ASSERT_EQ(layout->pageCount(), 3);
  EXPECT_EQ(LinksOnWords(PdfOf(*layout)),
            (std::vector<LinkOnWords>{{"#3", "last"}, {"#2", "old"}, {"#3", "here"}}));
  // Of a range, those that stay within it.
  EXPECT_EQ(LinksOnWords(PdfOf(*layout, {3, 3})), (std::vector<LinkOnWords>{{"#1", "here"}}));
  EXPECT_TRUE(LinksOnWords(PdfOf(*layout, {1, 1})).empty());
}

TEST_F(HtmlEngineTest, CharsetsAndMarks) {
  EXPECT_EQ(wordsOf("<meta charset=windows-1251><p>\xCF\xF0\xE8"), "\u041F\u0440\u0438");
  EXPECT_EQ(wordsOf("<p>caf\xE9"), "caf\u00E9");
  EXPECT_EQ(wordsOf("<p>caf\u00E9"), "caf\u00E9");
  EXPECT_EQ(wordsOf("+/v<html><p>seven bits"), "seven bits");
}

TEST_F(HtmlEngineTest, WordsFromRightToLeft) {
  const PixelBox ink = BoxOfInk(DrawPage(*layOut("<p dir=rtl>\u05E9\u05DC\u05D5\u05DD</p>"), 1));
  EXPECT_GT(ink.left, 600);
  // The first word is the last from the left, wherever the line is.
  const Bitmap page =
      DrawPage(*layOut("<p><span style='color:#ff0000'>\u05D0\u05D0</span> \u05D1\u05D1</p>"), 1);
  EXPECT_NEAR(BoxOfColour(page, {255, 0, 0}, 40).right, BoxOfInk(page).right, 2);
}

TEST_F(HtmlEngineTest, APdfSaysWhatItIsTold) {
  PdfProperties properties;
  properties.title = "Orders";
  properties.date = "2024-05-01T12:34:56Z";
  const std::string pdf = PdfOf(*layOut("<title>No</title><p>a"), {}, properties);
  EXPECT_EQ(PdfInfo(pdf, "Title"), "Orders");
  EXPECT_EQ(PdfInfo(pdf, "CreationDate"), "2024-05-01T12:34:56Z");
  EXPECT_EQ(PdfInfo(PdfOf(*layOut("<title>No</title><p>a")), "Title"), "");
}

TEST_F(HtmlEngineTest, TheSameDocumentGivesTheSameBytes) {
  const std::string html = "<p>a <a href='http://b.example'>b</a><img src=\"" +
                           DataUrlOf(JpegOf(40, 30, kRed)) + "\"> \u4E2D \U0001F600</p>";
  const std::string first = PdfOf(*layOut(html));
  layOut("<p style='font-family:serif'>other \u3042</p>");
  EXPECT_EQ(PdfOf(*layOut(html)), first);
  EXPECT_EQ(PdfOf(*MakeHtmlEngine()->layOut(DocumentKind::Html, html, Paper::A4, folder_)), first);
}

TEST_F(HtmlEngineTest, AJpegStaysAsItIsInAPdf) {
  const std::string jpeg = JpegOf(40, 30, kRed);
  EXPECT_NE(PdfOf(*layOut("<img src=\"" + DataUrlOf(jpeg) + "\">")).find(jpeg), std::string::npos);
}

TEST_F(HtmlEngineTest, LettersOfSizePaper) {
  const auto layout = engine_->layOut(DocumentKind::Html, "<p>a", Paper::Letter, folder_);
  EXPECT_EQ(layout->pageSize(1).width, 612);
  EXPECT_EQ(DrawPage(*layout, 1, 96).height, 1056);
}

TEST_F(HtmlEngineTest, OtherKindsAreRefused) {
  EXPECT_THROW(engine_->layOut(DocumentKind::Text, "a", Paper::A4, folder_), PageFailure);
}

TEST_F(HtmlEngineTest, ProgressIsHeardAndStops) {
  const auto layout = layOut(repeated("<p>a</p>", 100));
  ASSERT_EQ(layout->pageCount(), 4);
  CountingProgress all;
  layout->pdf({}, {}, all);
  EXPECT_EQ(all.heard, (std::vector<int>{0, 25, 50, 75}));
  CountingProgress two(2);
  try {
    layout->pdf({}, {}, two);
    FAIL();
  } catch (const PageFailure& failure) {
    EXPECT_EQ(failure.trouble(), Trouble::Stopped);
    EXPECT_STREQ(failure.what(), "stopped");
  }
  EXPECT_EQ(two.heard, (std::vector<int>{0, 25, 50}));
}

}  // namespace
}  // namespace tarn::test
