// Documents as PDF.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "EnginePages.h"
#include "Pictures.h"
#include "ReadPdf.h"
#include "siblings/PdfLinks.h"

namespace tarn::test {
namespace {

const pages::PdfProperties kProperties = {"Minutes", "Clara", "2024-05-01T12:34:56+02:00"};

TEST(OfficePdf, TextIsText) {
  const auto layout = LayOut(Rtf(
      R"(Gr\'fc\'dfe, \u960 ?\u8364 ? and {\b bold}.\par\trowd\cellx3000\pard\intbl cell\cell\row\pard end)"));
  EXPECT_EQ(TextOf(Pdf(*layout)), "Grüße, π€ and bold. cell end");
}

TEST(OfficePdf, HasChineseAndEmoji) {
  EXPECT_EQ(TextOf(Pdf(*LayOut(Rtf(R"(\u20013 ?\u25991 ? \u-10179 ?\u-8704 ?)")))), "中文 😀");
}

TEST(OfficePdf, HasThePagesAskedFor) {
  const auto layout = LayOut(Rtf(R"(one\page two\page three\page four)"));
  EXPECT_EQ(TextOf(Pdf(*layout)), "one two three four");
  EXPECT_EQ(TextOf(Pdf(*layout, {2, 3})), "two three");
  EXPECT_EQ(TextOf(Pdf(*layout, {4, 9})), "four");
}

TEST(OfficePdf, LeavesOutSidesThatASectionLeavesEmpty) {
  const auto layout = LayOut(Rtf(R"(one\page\page three\sect\sectd\sbkodd five\par)"));
  ASSERT_EQ(layout->pageCount(), 4);
  EXPECT_EQ(TextOf(Pdf(*layout)), "one three five");
  EXPECT_EQ(TextOf(Pdf(*layout, {4, 4})), "five");
}

TEST(OfficePdf, LinksAreLinks) {
  const auto layout = LayOut(
      Rtf(R"({\field{\*\fldinst HYPERLINK "http://example.com/a?b=1"}{\fldrslt net}} )"
          R"({\field{\*\fldinst{HYPERLINK "mailto:ann@example.com"}}{\fldrslt\plain\ul mail}} )"
          R"({\field{\*\fldinst HYPERLINK "file:///etc/passwd"}{\fldrslt file}} )"
          R"({\field{\*\fldinst HYPERLINK "page.html"}{\fldrslt page}})"));
  const std::string pdf = Pdf(*layout);
  EXPECT_EQ(ReadPdf(pdf).links,
            (std::set<std::string>{"http://example.com/a?b=1", "mailto:ann@example.com"}));
  EXPECT_EQ(TextOf(pdf), "net mail file page");
}

TEST(OfficePdf, LinksLieOnTheirWords) {
  const auto layout = LayOut(
      Rtf(R"(See {\field{\*\fldinst HYPERLINK "http://a.example/"}{\fldrslt the plan}} and\par )"
          R"(\trowd\cellx3000\cellx6000\pard\intbl cell\cell )"
          R"({\field{\*\fldinst HYPERLINK "tel:+4930"}{\fldrslt\b call}}\cell\row\pard )"
          R"({\field{\*\fldinst HYPERLINK "mailto:ann@example.com"}{\fldrslt write}} us)"));
  const std::string pdf = Pdf(*layout);
  std::vector<std::string> words = WordsOfLinks(pdf);
  std::sort(words.begin(), words.end());
  EXPECT_EQ(words, (std::vector<std::string>{"call > tel:+4930", "the plan > http://a.example/",
                                             "write > mailto:ann@example.com"}));
  for (const PdfLink& link : PdfLinks(pdf)) {
    EXPECT_EQ(link.page, 1u);
    EXPECT_GT(link.height, 8);
    EXPECT_LT(link.height, 20);
  }
}

TEST(OfficePdf, LinksAreLinksWhereTheDocumentHasStyles) {
  const auto layout = LayOut(
      R"({\rtf1{\fonttbl{\f0 Arial;}}{\colortbl;\red0\green0\blue255;})"
      R"({\stylesheet{\s0 Normal;}{\s1\b heading 1;}{\*\cs15\additive\ul\cf1 Hyperlink;}}\s1 Head\par)"
      R"({\field{\*\fldinst HYPERLINK "http://a/"}{\fldrslt{\cs15\ul\cf1 first}}} )"
      R"({\field{\*\fldinst HYPERLINK "http://b/"}{\fldrslt{\b second}}}\par})");
  EXPECT_EQ(ReadPdf(Pdf(*layout)).links, (std::set<std::string>{"http://a/", "http://b/"}));
}

TEST(OfficePdf, ShowsResultsOfFields) {
  const auto layout = LayOut(Rtf(
      R"({\field{\*\fldinst DATE}{\fldrslt May Day}} {\field{\*\fldinst FILENAME \\p}{\fldrslt x.doc}} )"
      R"({\field{\*\fldinst USERNAME}{\fldrslt Ann}} {\field{\*\fldinst IF 1 = 1 a b}{\fldrslt c}})"));
  EXPECT_EQ(TextOf(Pdf(*layout)), "May Day x.doc Ann c");
}

TEST(OfficePdf, TheSameDocumentGivesTheSameBytes) {
  const std::string rtf = Rtf(
      R"(Text {\field{\*\fldinst TIME}{\fldrslt 10:00}} {\pict\pngblip )" + std::string(kPinkPng) +
      R"(}{\field{\*\fldinst HYPERLINK "http://a/"}{\fldrslt a}}{\footnote\pard note}\page two)");
  const std::string first = Pdf(*LayOut(rtf), {}, kProperties);
  LayOut(Rtf("another document in between"));
  EXPECT_EQ(Pdf(*LayOut(rtf), {}, kProperties), first);
}

TEST(OfficePdf, TellsNothingOfThisMachine) {
  const PdfFacts facts = ReadPdf(Pdf(*LayOut(Rtf("Text")), {}, kProperties));
  EXPECT_EQ(facts.properties.size(), 4u);
  EXPECT_EQ(facts.objects.find(EngineFolder().filename().string()), std::string::npos);
  EXPECT_EQ(facts.objects.find("Writer"), std::string::npos);
}

TEST(OfficePdf, StopsWhenAsked) {
  class Stop : public pages::Progress {
   public:
    bool at(int percent) override { return percent < 50; }
  } stop;
  const auto layout = LayOut(Rtf("Text"));
  try {
    layout->pdf({}, {}, stop);
    ADD_FAILURE();
  } catch (const pages::PageFailure& failure) {
    EXPECT_EQ(failure.trouble(), pages::Trouble::Stopped);
  }
  EXPECT_THROW(layout->draw(1, 600, stop), pages::PageFailure);
  EXPECT_EQ(TextOf(Pdf(*layout)), "Text");
}

}  // namespace
}  // namespace tarn::test
