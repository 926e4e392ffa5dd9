#include "siblings/layout/TextEngine.h"

#include <gtest/gtest.h>

#include "siblings/PdfLinks.h"
#include "siblings/layout/PageLooks.h"
#include "siblings/layout/TextShaper.h"

namespace tarn::test {
namespace {

using namespace tarn::pages;

class TextEngineTest : public ::testing::Test {
 protected:
  std::unique_ptr<Layout> layOut(const std::string& document, Paper paper = Paper::A4) {
    return engine_->layOut(DocumentKind::Text, document, paper, folder_);
  }
  std::string wordsOf(const std::string& document) { return WordsOfPdf(PdfOf(*layOut(document))); }

  MemoryFolder folder_;
  std::unique_ptr<Engine> engine_ = MakeTextEngine();
};

std::string Lines(int count, const std::string& line = "line") {
  std::string text;
  for (int i = 1; i <= count; ++i) text += line + " " + std::to_string(i) + "\r\n";
  return text;
}

TEST_F(TextEngineTest, AnEmptyTextIsAnEmptyPage) {
  const auto layout = layOut("");
  EXPECT_EQ(layout->pageCount(), 1);
  EXPECT_EQ(BoxOfInk(DrawPage(*layout, 1)).width(), 0);
}

TEST_F(TextEngineTest, APageOfA4Has56Lines) {
  EXPECT_EQ(layOut(Lines(56))->pageCount(), 1);
  const auto layout = layOut(Lines(57));
  EXPECT_EQ(layout->pageCount(), 2);
  EXPECT_EQ(WordsOfPdf(PdfOf(*layout, {2, 2})), "line 57");
}

TEST_F(TextEngineTest, PaperHasItsSize) {
  const auto a4 = layOut("a");
  EXPECT_NEAR(a4->pageSize(1).width, 595.28, 0.01);
  EXPECT_NEAR(a4->pageSize(1).height, 841.89, 0.01);
  const Bitmap page = DrawPage(*a4, 1, 96);
  EXPECT_EQ(page.width, 794);
  EXPECT_EQ(page.height, 1123);
  const auto letter = layOut("a", Paper::Letter);
  EXPECT_EQ(letter->pageSize(1).width, 612);
  EXPECT_EQ(letter->pageSize(1).height, 792);
}

TEST_F(TextEngineTest, ALineOfA4Has81Columns) {
  const auto layout = layOut(std::string(81, 'x') + "\n" + std::string(82, 'x'));
  const std::string text = TextOfPdf(PdfOf(*layout));
  EXPECT_EQ(text, std::string(81, 'x') + "\n" + std::string(81, 'x') + "\nx\n\f");
}

TEST_F(TextEngineTest, LongLinesWrapBetweenWordsAcrossPages) {
  std::string text;
  std::string words;
  for (int i = 0; i < 1'500; ++i) {
    const std::string word = "word" + std::to_string(i);
    text += word + " ";
    words += (i == 0 ? "" : " ") + word;
  }
  const auto layout = layOut(text);
  EXPECT_EQ(layout->pageCount(), 3);
  EXPECT_EQ(WordsOfPdf(PdfOf(*layout)), words);
}

TEST_F(TextEngineTest, LinesAreCountedAsTheyAreDrawn) {
  // Each way through the count: within a line, wrapped, with tabs, of other scripts.
  const std::string text = Lines(10, std::string(90, 'a')) +
                           Lines(10, "\ta\tb\t\t\t\t\t\t\t\tend") +
                           Lines(10, "\u4E2D\u6587 \u05E9\u05DC\u05D5\u05DD") + Lines(40);
  const auto layout = layOut(text);
  ASSERT_EQ(layout->pageCount(), 2);
  const std::string last = WordsOfPdf(PdfOf(*layout, {2, 2}));
  EXPECT_EQ(last.substr(last.size() - 7), "line 40");
  // The first three took two, two and one lines each.
  EXPECT_EQ(last.substr(0, 6), "line 7");
}

TEST_F(TextEngineTest, OrdinaryLinesAreCountedWithoutShaping) {
  TextShaper shaper;
  shaper.setWidth(490);
  for (int i = 0; i < 100'000; ++i)
    EXPECT_EQ(shaper.measure("an ordinary line\twith a tab").lines, 1);
  EXPECT_EQ(shaper.layoutCount(), 0u);
}

TEST_F(TextEngineTest, AParagraphOfMegabytesIsShapedInPieces) {
  TextShaper shaper;
  shaper.setWidth(490);
  std::string paragraph;
  while (paragraph.size() < 100'000) paragraph += "lorem ipsum dolor sit amet ";
  size_t position = 0;
  int32_t lines = 0;
  while (position < paragraph.size()) {
    const TextMeasure measure = shaper.measure(std::string_view(paragraph).substr(position));
    ASSERT_GT(measure.bytes, 0u);
    position += measure.bytes;
    lines += measure.lines;
  }
  EXPECT_LT(shaper.layoutCount(), 60u);
  // Three times those words are a line, with the blank at its end.
  EXPECT_EQ(lines, (100'000 + 80) / 81);
}

TEST_F(TextEngineTest, TenMegabytesOfEmptyLinesAreCounted) {
  const auto layout = layOut(std::string(10'000'000, '\n'));
  EXPECT_EQ(layout->pageCount(), (10'000'000 + 55) / 56);
}

TEST_F(TextEngineTest, EachMarkShowsItsText) {
  using namespace std::string_literals;
  EXPECT_EQ(wordsOf("\xFF\xFE"
                    "From:      \tJos\u00E9\r\n\r\nB\0o\0d\0y\0 \0\xFC\0!\0"s),
            "From: Jos\u00E9 Body \u00FC!");
  EXPECT_EQ(wordsOf("\xEF\xBB\xBF"
                    "caf\u00E9\xE2"),
            "caf\u00E9");
  EXPECT_EQ(wordsOf("+/vSubject:\tLunch\r\n\r\nHi"), "Subject: Lunch Hi");
  EXPECT_EQ(wordsOf("caf\xE9"), "caf\u00E9");
}

TEST_F(TextEngineTest, ValuesOfRowsBeginInOneColumn) {
  const Bitmap page = DrawPage(*layOut("From:   \tMMM\r\nSubject:\tMMM\r\n"), 1, 96);
  // The right ends are those of the values: three letters of eight pixels after sixteen columns.
  EXPECT_NEAR(BoxOfInk(page).right, 72 + 19 * 8, 3);
}

TEST_F(TextEngineTest, HebrewBeginsAtTheRight) {
  const PixelBox ink = BoxOfInk(DrawPage(*layOut("\u05E9\u05DC\u05D5\u05DD"), 1, 96));
  EXPECT_GT(ink.left, 650);
  EXPECT_LE(ink.right, 794 - 72 + 1);
}

TEST_F(TextEngineTest, ChineseJapaneseKoreanAndEmojiHaveGlyphs) {
  // A missing glyph is a box, the same for each of them.
  std::vector<std::vector<uint8_t>> seen;
  for (const char* text : {"\u4E2D", "\u3042", "\uD55C", "\U0001F600", "\U0001F4CE"}) {
    seen.push_back(DrawPage(*layOut(text), 1, 96).pixels);
    for (size_t i = 0; i + 1 < seen.size(); ++i) EXPECT_NE(seen[i], seen.back()) << text;
  }
}

TEST_F(TextEngineTest, AddressesAreLinks) {
  const std::string pdf =
      PdfOf(*layOut("see https://example.com/a'b\\c?\u00E4 and www.example.org.\n"));
  EXPECT_EQ(LinksOfPdf(pdf), (std::vector<std::string>{"https://example.com/a%27b%5Cc?%C3%A4",
                                                       "http://www.example.org"}));
}

TEST_F(TextEngineTest, LinksLieOnTheirWords) {
  const std::string pdf =
      PdfOf(*layOut("Read http://a.example/b then\n\nwww.c.example or\tmailto:d@e.example\n" +
                    Lines(70) + "\n\u05E9\u05DC\u05D5\u05DD http://f.example/ end"));
  EXPECT_EQ(WordsOfLinks(pdf), (std::vector<std::string>{"http://a.example/b > http://a.example/b",
                                                         "www.c.example > http://www.c.example",
                                                         "mailto:d@e.example > mailto:d@e.example",
                                                         "http://f.example/ > http://f.example/"}));
  const auto links = PdfLinks(pdf);
  EXPECT_EQ(links[0].page, 1u);
  EXPECT_EQ(links[3].page, 2u);
  // From the sixth column on, eighteen columns, out to whole points.
  EXPECT_NEAR(links[0].left, 54 + 5 * 6, 1);
  EXPECT_NEAR(links[0].top, 54, 1);
  EXPECT_NEAR(links[0].width, 18 * 6, 1);
  EXPECT_NEAR(links[0].height, 13, 1);
}

// Long paragraphs are laid out in pieces, and cut into pages.
TEST_F(TextEngineTest, AllPartsOfALinkLeadToItsAddress) {
  const std::string address = "http://a.example/" + std::string(700, 'x') + "/end";
  for (const size_t before : {1'900u, 1'960u, 2'040u, 3'000u, 4'400u}) {
    std::string text;
    while (text.size() < before) text += "word ";
    text += address + " www.b.example";
    const auto links = PdfLinks(PdfOf(*layOut(text)));
    ASSERT_GT(links.size(), 9u) << before;
    std::string words;
    for (size_t i = 0; i + 1 < links.size(); ++i) {
      EXPECT_EQ(links[i].to, address) << before;
      words += links[i].words;
    }
    EXPECT_EQ(words, address) << before;
    EXPECT_EQ(links.back().words + " > " + links.back().to, "www.b.example > http://www.b.example");
  }
}

// In one paragraph of many pages.
TEST_F(TextEngineTest, LinksOfAParagraphOnManyPages) {
  std::string text;
  for (int i = 0; i < 2'000; ++i) text += "see http://a.example/" + std::to_string(i) + " now ";
  const auto links = PdfLinks(PdfOf(*layOut(text), {3, 4}));
  ASSERT_GT(links.size(), 200u);
  for (size_t i = 0; i < links.size(); ++i) {
    // An address may be parted by the end of a line.
    EXPECT_FALSE(links[i].words.empty()) << i;
    EXPECT_NE(links[i].to.find(links[i].words), std::string::npos) << links[i].words;
  }
}

TEST_F(TextEngineTest, APdfSaysWhatItIsTold) {
  PdfProperties properties;
  properties.title = "Gr\u00FC\u00DFe (1) \\";
  properties.author = "Ann Example";
  properties.date = "2024-05-01T12:34:56+02:00";
  const std::string pdf = PdfOf(*layOut("a"), {}, properties);
  EXPECT_EQ(PdfInfo(pdf, "Title"), properties.title);
  EXPECT_EQ(PdfInfo(pdf, "Author"), properties.author);
  EXPECT_EQ(PdfInfo(pdf, "CreationDate"), "2024-05-01T12:34:56+02");
  EXPECT_EQ(PdfInfo(pdf, "Pages"), "1");
}

TEST_F(TextEngineTest, APdfSaysNothingThatItIsNotTold) {
  const std::string pdf = PdfOf(*layOut("a"));
  EXPECT_EQ(PdfInfo(pdf, "Title"), "");
  EXPECT_EQ(PdfInfo(pdf, "CreationDate"), "");
  EXPECT_EQ(pdf.find("CreationDate"), std::string::npos);
}

TEST_F(TextEngineTest, TheSameDocumentGivesTheSameBytes) {
  const std::string text = Lines(100, "www.example.org \u4E2D \U0001F600");
  const std::string first = PdfOf(*layOut(text));
  PdfOf(*layOut("something else \u3042 in between"));
  EXPECT_EQ(PdfOf(*layOut(text)), first);
  EXPECT_EQ(PdfOf(*MakeTextEngine()->layOut(DocumentKind::Text, text, Paper::A4, folder_)), first);
}

TEST_F(TextEngineTest, ARangeHasItsPages) {
  const auto layout = layOut(Lines(56 * 5));
  EXPECT_EQ(PdfInfo(PdfOf(*layout, {2, 4}), "Pages"), "3");
  EXPECT_EQ(PdfInfo(PdfOf(*layout, {4, 0}), "Pages"), "2");
  EXPECT_EQ(PdfInfo(PdfOf(*layout, {4, 9}), "Pages"), "2");
  try {
    PdfOf(*layout, {6, 0});
    FAIL();
  } catch (const PageFailure& failure) {
    EXPECT_EQ(failure.trouble(), Trouble::NoSuchPage);
  }
}

TEST_F(TextEngineTest, ProgressIsHeardAndStops) {
  const auto layout = layOut(Lines(56 * 4));
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
}

TEST_F(TextEngineTest, PagesThatAreTooLargeOrNothingAreRefused) {
  const auto layout = layOut("a");
  for (const int dotsPerInch : {0, -96, 1, 2'000, 100'000, 2'147'483'647}) {
    try {
      const Bitmap page = DrawPage(*layout, 1, dotsPerInch);
      EXPECT_EQ(dotsPerInch, 1) << page.width;
    } catch (const PageFailure& failure) {
      EXPECT_EQ(failure.trouble(), Trouble::TooLarge);
      EXPECT_NE(dotsPerInch, 1);
    }
  }
}

TEST_F(TextEngineTest, AllResolutionsShowTheSame) {
  const auto layout = layOut(Lines(20, "the same words"));
  const PixelBox coarse = BoxOfInk(DrawPage(*layout, 1, 96));
  const PixelBox fine = BoxOfInk(DrawPage(*layout, 1, 288));
  EXPECT_NEAR(fine.left / 3.0, coarse.left, 1.5);
  EXPECT_NEAR(fine.right / 3.0, coarse.right, 1.5);
  EXPECT_NEAR(fine.top / 3.0, coarse.top, 1.5);
  EXPECT_NEAR(fine.bottom / 3.0, coarse.bottom, 1.5);
}

TEST_F(TextEngineTest, NoFileIsAskedFor) {
  layOut("<img src=a.png> file:///etc/passwd");
  EXPECT_TRUE(folder_.asked.empty());
}

TEST_F(TextEngineTest, OtherKindsAreRefused) {
  EXPECT_THROW(engine_->layOut(DocumentKind::Html, "<p>", Paper::A4, folder_), PageFailure);
}

}  // namespace
}  // namespace tarn::test
