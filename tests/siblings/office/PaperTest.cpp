// Sizes of pages, and how many there are.
#include <gtest/gtest.h>

#include "EnginePages.h"

namespace tarn::test {
namespace {

using pages::Paper;
using pages::Trouble;

TEST(OfficePaper, IsTheOneAskedForWhereTheDocumentSaysNothing) {
  const auto onA4 = LayOut(Rtf("Hello"), Paper::A4)->pageSize(1);
  EXPECT_NEAR(onA4.width, 210 * 72 / 25.4, 0.1);
  EXPECT_NEAR(onA4.height, 297 * 72 / 25.4, 0.1);
  const auto onLetter = LayOut(Rtf("Hello"), Paper::Letter)->pageSize(1);
  EXPECT_EQ(onLetter.width, 612);
  EXPECT_EQ(onLetter.height, 792);
}

TEST(OfficePaper, ADocumentsOwnStays) {
  const auto size = LayOut(Rtf(R"(\paperw8000\paperh6000 Hello)"), Paper::A4)->pageSize(1);
  EXPECT_EQ(size.width, 400);
  EXPECT_EQ(size.height, 300);
}

TEST(OfficePaper, EachPageHasItsOwnSize) {
  const auto layout =
      LayOut(Rtf(R"(\paperw8000\paperh6000 a\sect\sectd\sbkpage\pgwsxn6000\pghsxn9000 b)"));
  ASSERT_EQ(layout->pageCount(), 2);
  EXPECT_EQ(layout->pageSize(2).width, 300);
  EXPECT_EQ(Draw(*layout, 2, 72).width, 300);
}

TEST(OfficePaper, CountsPages) {
  EXPECT_EQ(LayOut(Rtf("one"))->pageCount(), 1);
  EXPECT_EQ(LayOut(Rtf(R"(one\page two\page three)"))->pageCount(), 3);
  EXPECT_EQ(LayOut(Rtf(""))->pageCount(), 1);
}

TEST(OfficePaper, ALongDocumentIsLaidOutToItsEnd) {
  std::string lines;
  for (int i = 0; i < 3000; ++i) lines += "Line\\par\n";
  const auto layout = LayOut(Rtf(lines));
  EXPECT_GT(layout->pageCount(), 40);
  const std::string last = TextOf(Pdf(*layout, {layout->pageCount(), 0}));
  EXPECT_NE(last.find("Line"), std::string::npos);
}

TEST(OfficePaper, RefusesPagesThatAreNot) {
  const auto layout = LayOut(Rtf("one"));
  for (const int32_t page : {0, 2, -1}) {
    EXPECT_THROW(Draw(*layout, page), pages::PageFailure) << page;
    EXPECT_THROW(layout->pageSize(page), pages::PageFailure) << page;
  }
  EXPECT_THROW(Pdf(*layout, {2, 0}), pages::PageFailure);
}

TEST(OfficePaper, RefusesBitmapsThatAreTooLarge) {
  const auto layout = LayOut(Rtf("one"));
  try {
    Draw(*layout, 1, 2400);
    ADD_FAILURE();
  } catch (const pages::PageFailure& failure) {
    EXPECT_EQ(failure.trouble(), Trouble::TooLarge);
  }
  EXPECT_THROW(Draw(*layout, 1, 0), pages::PageFailure);
}

}  // namespace
}  // namespace tarn::test
