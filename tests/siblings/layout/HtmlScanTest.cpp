#include "siblings/layout/HtmlScan.h"

#include <gtest/gtest.h>

#include "siblings/Pages.h"
#include "siblings/layout/HtmlTag.h"

namespace tarn::test {
namespace {

using namespace tarn::pages;

// Without the style element that comes first.
std::string Scanned(std::string_view html) {
  const std::string scanned = ScanHtml(html).html;
  EXPECT_EQ(scanned.rfind("<style>", 0), 0u);
  return scanned.substr(scanned.find("</style>") + 8);
}

std::string Repeated(const std::string& text, size_t times) {
  std::string repeated;
  for (size_t i = 0; i < times; ++i) repeated += text;
  return repeated;
}

size_t CountOf(const std::string& text, const std::string& what) {
  size_t count = 0;
  for (size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += what.size()) ++count;
  return count;
}

TEST(HtmlTag, EndsWhereATokenizerEndsIt) {
  EXPECT_EQ(ReadHtmlTag("<p>x")->size, 3u);
  EXPECT_EQ(ReadHtmlTag("<a title='>' b=\">\" c=x>y")->size, 23u);
  EXPECT_EQ(ReadHtmlTag("<a b=x'>y'>")->size, 8u);
  EXPECT_EQ(ReadHtmlTag("<a 'b>c'>")->size, 6u);
  EXPECT_TRUE(ReadHtmlTag("</P >")->end);
  EXPECT_EQ(ReadHtmlTag("</P >")->name, "p");
  EXPECT_FALSE(ReadHtmlTag("<a title='x>"));
  EXPECT_FALSE(ReadHtmlTag("< p>"));
  EXPECT_FALSE(ReadHtmlTag("<"));
}

TEST(HtmlScan, OrdinaryMarkupStaysAsItIs) {
  const std::string html =
      "<!DOCTYPE html><html><body bgcolor=red><p class='a'>1 &lt; 2<br><b>x</b></p></body></html>";
  EXPECT_EQ(Scanned(html), html);
}

TEST(HtmlScan, WhatHasNoPlaceOnPaperGoes) {
  EXPECT_EQ(Scanned("a<script>document.write('<p>')</script>b"), "ab");
  EXPECT_EQ(Scanned("a<iframe src='file:///etc/passwd'>x</iframe>b"), "ab");
  EXPECT_EQ(Scanned("a<object data=x><embed src=y>instead</object>b"), "ainsteadb");
  EXPECT_EQ(Scanned("a<link rel=stylesheet href=x><base href=y>b"), "ab");
  EXPECT_EQ(Scanned("a<!-- <p> -->b<![if !x]>c<![endif]><?xml x?>d"), "abcd");
  EXPECT_EQ(Scanned("a<title>T</title>b<noscript>c</noscript>"), "abc");
  EXPECT_EQ(Scanned("a<script>b"), "a");
  EXPECT_EQ(Scanned("a<!-- b"), "a");
  EXPECT_EQ(Scanned("a<p class='b"), "a");
}

TEST(HtmlScan, StyleElementsComeFirstTogether) {
  EXPECT_EQ(ScanHtml("a<style type=x>p{}</style>b<STYLE>q{}</STYLE >c").html,
            "<style>p{}\nq{}\n</style>abc");
}

TEST(HtmlScan, DataUrlsAreNamed) {
  const ScannedHtml scanned = ScanHtml(
      "<img src=\"data:image/png;base64,AA A\"><img src=data:x,y><p style=\"background:url("
      "data:image/gif;base64,BB)\">data:text</p><a title=\"no data:here\">");
  EXPECT_EQ(scanned.dataUrls, (std::vector<std::string>{"data:image/png;base64,AA A", "data:x,y",
                                                        "data:image/gif;base64,BB"}));
  EXPECT_NE(scanned.html.find("<img src=\"tarn-data:0\"><img src=tarn-data:1>"), std::string::npos);
  EXPECT_NE(scanned.html.find("background:url(tarn-data:2)\">data:text</p>"), std::string::npos);
}

TEST(HtmlScan, TheMarkOf7BitContentIsNotShown) {
  EXPECT_EQ(Scanned("+/v<p>a"), "<p>a");
  EXPECT_EQ(Scanned("<html><table><tr><td>From</td></tr></table>\r\n+/v<html>a"),
            "<html><table><tr><td>From</td></tr></table><html>a");
  EXPECT_EQ(Scanned("<html><table><tr><td>From</td></tr></table><p>&nbsp;</p>\r\n+/v<b>a</b>"),
            "<html><table><tr><td>From</td></tr></table><p>&nbsp;</p><b>a</b>");
  EXPECT_EQ(Scanned("<p>a</p>+/v"), "<p>a</p>+/v");
}

TEST(HtmlScan, ReferencesHaveNoMoreDigitsThanCharacters) {
  EXPECT_EQ(Scanned("&#1114111;&#x10FFFF;&#0000000065&#x0000000041"),
            "&#1114111;&#x10FFFF;&#0000000065&#x0000000041");
  EXPECT_EQ(Scanned("a&#11111111111b"), "a&#xFFFD;b");
  EXPECT_EQ(Scanned("&#00011111111;<p title='&#X1234567;'>&#xabcdef0"),
            "&#xFFFD;<p title='&#xFFFD;'>&#xFFFD;");
  EXPECT_EQ(Scanned("&#&#x&#;&#99999999"), "&#&#x&#;&#xFFFD;");
}

TEST(HtmlScan, PartsOfPointsBecomePixels) {
  EXPECT_EQ(Scanned("<p style='font-size:10.5pt;margin:7.5pt 11.0pt 12pt'>1.5pt"),
            "<p style='font-size:14px;margin:10px 15px 12pt'>1.5pt");
}

TEST(HtmlScan, DeepElementsAreFlattened) {
  const std::string scanned = Scanned(Repeated("<div>", 100'000) + "deep");
  EXPECT_EQ(CountOf(scanned, "<div>"), kMostNested);
  EXPECT_NE(scanned.find("deep"), std::string::npos);
}

TEST(HtmlScan, DeepTablesAreFlattenedWithTheirCells) {
  const std::string scanned =
      Scanned(Repeated("<table><tr><td>", 1'000) + "deep" + Repeated("</table>", 1'000) + "after");
  EXPECT_EQ(CountOf(scanned, "<table>"), kMostNestedTables);
  EXPECT_EQ(CountOf(scanned, "<td>"), kMostNestedTables);
  EXPECT_EQ(CountOf(scanned, "</table>"), kMostNestedTables);
  EXPECT_NE(scanned.find("deep</table>"), std::string::npos);
}

TEST(HtmlScan, DeepRulesOfStyleAreLeftOut) {
  const auto count = [](const std::string& html) { return CountOf(ScanHtml(html).html, "@media"); };
  const auto nested = [](size_t times) {
    return "<style>" + Repeated("@media all{", times) + "p{}</style>";
  };
  EXPECT_EQ(count(nested(kMostNestedRules - 1) + "<p>x"), kMostNestedRules - 1);
  EXPECT_EQ(count(nested(kMostNestedRules) + "<p>x"), 0u);
  EXPECT_EQ(count("<style>" + Repeated("@media all{p{}}", 1'000) + "</style><p>x"), 1'000u);
  // One element goes on where the one before has ended.
  EXPECT_EQ(count(nested(60) + nested(60) + "<p>x"), 60u);
  const std::string closedByTheNext = "<style>@media all{</style><style>}p{}</style>";
  EXPECT_EQ(count(Repeated(closedByTheNext, 2 * kMostNestedRules) + "<p>x"), 2 * kMostNestedRules);
}

TEST(HtmlScan, CommentsInStyleAreLeftOut) {
  EXPECT_EQ(ScanHtml("<style>/*{*/p/**/{/* a */}/*/*/q{}/* never closed</style>x").html,
            "<style>p{}q{}\n</style>x");
  EXPECT_EQ(ScanHtml("<style>" + Repeated("/* ", 100'000) + "</style>x").html,
            "<style>\n</style>x");
}

TEST(HtmlScan, AttributesBeyondAThousandAreLeftOut) {
  for (const std::string one : {" a=1", " a", " a = 'x y'", "/a", " a=\"'>/\"", " a=b/c"}) {
    const std::string most = "<p" + Repeated(one, kMostAttributes);
    EXPECT_EQ(Scanned(most + ">x"), most + ">x") << one;
    EXPECT_EQ(Scanned(most + " b='>'>x"), most + " >x") << one;
    EXPECT_EQ(Scanned(most + Repeated(one, 5'000) + " b>x<b c>"),
              most + one.substr(0, one.find('a')) + ">x<b c>")
        << one;
  }
}

TEST(HtmlScan, WhatAParserClosesByItselfIsNotDeep) {
  const std::string html = Repeated("<p>a<li>b<dd>c", 2'000);
  EXPECT_EQ(Scanned(html), html);
  const std::string rows = "<table>" + Repeated("<tr><td>a<td>b", 2'000) + "</table>";
  EXPECT_EQ(Scanned(rows), rows);
}

TEST(HtmlScan, StyleThatAParserWouldRepeatIsBounded) {
  std::string html;
  for (int i = 0; i < 1'000; ++i) html += "<font color=#" + std::to_string(100'000 + i) + ">";
  EXPECT_EQ(CountOf(Scanned(html), "<font"), kMostFormatting);
  try {
    ScanHtml(html + Repeated("<p>x", 20'000));
    FAIL();
  } catch (const PageFailure& failure) {
    EXPECT_EQ(failure.trouble(), Trouble::TooLarge);
  }
}

TEST(HtmlScan, TooMuchIsRefused) {
  EXPECT_THROW(ScanHtml(Repeated("<br>", kMostElements + 1)), PageFailure);
  EXPECT_THROW(ScanHtml(std::string(kMostTextBytes + 1, 'x')), PageFailure);
}

TEST(HtmlScan, SelectorsBeyondMeasureAreLeftOut) {
  const std::string style = "<style>" + Repeated(".a b c{color:red}", 10'000) + "</style>";
  EXPECT_NE(ScanHtml(style + "<p>x").html.find("color:red"), std::string::npos);
  EXPECT_EQ(ScanHtml(style + Repeated("<p>x", 3'000)).html.find("color:red"), std::string::npos);
}

}  // namespace
}  // namespace tarn::test
