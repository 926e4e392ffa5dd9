#include "rtf/HtmlPasses.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "support/Texts.h"

namespace tarn {
namespace {

using test::Repeat;

using Pass = void (*)(SizedBytes&);

// Runs a pass over a block of exactly these bytes, so that a step outside of it is noticed.
std::string Run(Pass pass, const std::string& bytes) {
  SizedBytes text(AllocateBlock<char>(bytes.size(), TARN_HERE), bytes.size());
  std::copy(bytes.begin(), bytes.end(), text.data());
  const char* const block = text.data();
  pass(text);
  EXPECT_EQ(text.data(), block);
  return std::string(text.view());
}

std::string Shorten(const std::string& bytes) { return Run(ShortenConditionalComments, bytes); }
std::string Cut(const std::string& bytes) { return Run(CutLongValues, bytes); }

std::string Times(size_t count, char byte) { return std::string(count, byte); }

TEST(ConditionalComments, ComeDownToOneForm) {
  EXPECT_EQ(Shorten("<![if !supportLists]>"), "<![if !V]>");
  EXPECT_EQ(Shorten("a<![if !supportLists]>b"), "a<![if !V]>b");
  EXPECT_EQ(Shorten("<![if gte mso 9]>b"), "<![if !V]>b");
  EXPECT_EQ(Shorten("<![ifXabcdefgh]>b"), "<![ifX!V]>b");
}

TEST(ConditionalComments, ThatFormStays) {
  EXPECT_EQ(Shorten("<![if !V]>b"), "<![if !V]>b");
  EXPECT_EQ(Shorten("<![if abc]>b"), "<![if !V]>b");
}

TEST(ConditionalComments, OtherTextStays) {
  EXPECT_EQ(Shorten(""), "");
  EXPECT_EQ(Shorten("a[1]"), "a[1]");
  EXPECT_EQ(Shorten("<![endif]>"), "<![endif]>");
  EXPECT_EQ(Shorten("<!--[if gte mso 9]>"), "<!--[if gte mso 9]>");
  EXPECT_EQ(Shorten("<![IF !supportLists]>"), "<![IF !supportLists]>");
  EXPECT_EQ(Shorten("]<![if"), "]<![if");
}

TEST(ConditionalComments, TheCaseCountsAfterTheFirstOne) {
  EXPECT_EQ(Shorten("<![if 12]<![IF 123456]"), "<![if !V]<![IF 123456]");
  EXPECT_EQ(Shorten("<![if 12345]ab<![IF 123456]"), "<![if !V]ab<![IF 123456]");
  EXPECT_EQ(Shorten("<![IF 12]<![if 123456]"), "<![IF 12]<![if !V]");
}

TEST(ConditionalComments, AnAbsentTextStaysAbsent) {
  SizedBytes text;
  ShortenConditionalComments(text);
  CutLongValues(text);
  EXPECT_EQ(text.data(), nullptr);
  EXPECT_EQ(text.length(), 0u);
}

TEST(ConditionalComments, WithoutABracketNothingChanges) {
  EXPECT_EQ(Shorten("<![if !supportLists>"), "<![if !supportLists>");
  EXPECT_EQ(Shorten("<![if"), "<![if");
  EXPECT_EQ(Shorten("<![if !supportLists]>b<![if !x>"), "<![if !V]>b<![if !x>");
}

TEST(ConditionalComments, TheTerminatorMovesWithTheText) {
  EXPECT_EQ(Shorten(std::string("<![if !supportLists]>\0", 22)), std::string("<![if !V]>\0", 11));
}

// The form is written although the bracket is in its way, and over a terminator too.
TEST(ConditionalComments, AShortOneAtTheEndCostsTheTerminator) {
  EXPECT_EQ(Shorten(std::string("<![if]x\0", 8)), "<![if]!V");
  EXPECT_EQ(Shorten(std::string("<![if]\0", 7)), std::string("<![if]\0", 7));
}

TEST(ConditionalComments, ABracketAtTheEndIsEnough) {
  EXPECT_EQ(Shorten("<![if !supportLists]"), "<![if !V]");
}

// "<![if " and 12 more bytes before the bracket: ten bytes are cut, and the bracket and nine
// bytes after it are passed over.
TEST(ConditionalComments, AsManyBytesAsWereCutArePassedOver) {
  const std::string comment = "<![if 123456789012]";
  const std::string shortened = "<![if !V]";
  EXPECT_EQ(Shorten(comment + "123456789" + comment), shortened + "123456789" + shortened);
  EXPECT_EQ(Shorten(comment + "12345678" + comment), shortened + "12345678" + comment);
  EXPECT_EQ(Shorten(comment + comment + comment), shortened + comment + shortened);
}

// Only the bytes of the last cut, not those of all cuts so far.
TEST(ConditionalComments, EachCutPassesOverItsOwnCount) {
  const std::string comment = "<![if 123456789012]";
  const std::string shortened = "<![if !V]";
  const std::string text = comment + "123456789";
  EXPECT_EQ(Shorten(Repeat(text, 5)), Repeat(shortened + "123456789", 5));
}

TEST(ConditionalComments, APlaceAfterTheTextEndsThePass) {
  EXPECT_EQ(Shorten("<![if " + Times(50, 'x') + "]<![if 12345]"), "<![if !V]<![if 12345]");
}

TEST(ConditionalComments, ANearBracketEndsThePassAfterTheWrites) {
  EXPECT_EQ(Shorten("<![if a]><![if 123456]"), "<![if !V><![if 123456]");
  EXPECT_EQ(Shorten("<![if ]><![if 123456]"), "<![if !V<![if 123456]");
  EXPECT_EQ(Shorten("<![if]><![if 123456]"), "<![if]!V![if 123456]");
}

TEST(ConditionalComments, ANearBracketAtTheEndOfTheText) {
  EXPECT_EQ(Shorten("<![if]"), "<![if]");
  EXPECT_EQ(Shorten("<![if ]"), "<![if ]");
  EXPECT_EQ(Shorten("<![if a]"), "<![if !V");
  EXPECT_EQ(Shorten("<![if ]>"), "<![if !V");
  EXPECT_EQ(Shorten("<![if]a>"), "<![if]!V");
}

TEST(ConditionalComments, WhatWasCutBeforeStaysCutWhenThePassEnds) {
  EXPECT_EQ(Shorten("<![if 12345]abc<![if]>x"), "<![if !V]abc<![if]!V");
  EXPECT_EQ(Shorten("<![if 12345]abc<![if]>"), "<![if !V]abc<![if]>");
  EXPECT_EQ(Shorten("<![if 12345]abc<![if]"), "<![if !V]abc<![if]");
}

TEST(ConditionalComments, ACommentInsideACommentGoesWithIt) {
  EXPECT_EQ(Shorten("<![if <![if !x]>b"), "<![if !V]>b");
}

// The steps as they are told, each with its move of the whole rest.
std::string ShortenByMoves(std::string text) {
  size_t p = text.find("<![if");
  while (p != std::string::npos) {
    const size_t bracket = text.find(']', p);
    if (bracket == std::string::npos) break;
    if (p + 7 < text.size()) {
      text[p + 6] = '!';
      text[p + 7] = 'V';
    }
    if (p + 5 >= text.size() || bracket < p + 8) break;
    text.erase(p + 8, bracket - (p + 8));
    p = bracket < text.size() ? text.find("<![if", bracket) : std::string::npos;
  }
  return text;
}

std::string RandomText(std::mt19937& random, const std::vector<std::string>& pieces,
                       size_t maxPieces) {
  std::string text;
  const size_t count = random() % (maxPieces + 1);
  for (size_t i = 0; i < count; ++i) text += pieces[random() % pieces.size()];
  return text;
}

TEST(ConditionalComments, AnyTextComesOutAsByRepeatedMoves) {
  const std::vector<std::string> pieces = {"<![if",
                                           "<![if ",
                                           "]",
                                           "]>",
                                           "a",
                                           "bc",
                                           " ",
                                           "1234567",
                                           "<![",
                                           "<!",
                                           "[if",
                                           "if",
                                           std::string(1, '\0')};
  std::mt19937 random(7);
  int changed = 0;
  for (int i = 0; i < 50000; ++i) {
    const std::string text = RandomText(random, pieces, 40);
    const std::string expected = ShortenByMoves(text);
    ASSERT_EQ(Shorten(text), expected) << text;
    changed += expected.size() < text.size() ? 1 : 0;
  }
  EXPECT_GT(changed, 10000);
}

TEST(ConditionalComments, ManyTakeOnePass) {
  const std::string comment = "<![if !supportLists]>12345678901234567890";
  EXPECT_EQ(Shorten(Repeat(comment, 200000)), Repeat("<![if !V]>12345678901234567890", 200000));
  EXPECT_EQ(Shorten(Repeat("<![if", 400000)), Repeat("<![if", 400000));
  EXPECT_EQ(Shorten(Repeat("<![if !V]", 200000)), Repeat("<![if !V]", 200000));
}

const std::string kValue = "&nbsp;value=\"";

// A division whose only value has its closing quote `distance` bytes after the "&nbsp;".
std::string Division(size_t distance) {
  return "<div>" + kValue + Times(distance - 13, 'v') + "\"x</div>";
}

const std::string kCutDivision = "<div>" + kValue + Times(97, 'v') + "\"x</div>";

TEST(LongValues, AreCutTo97Bytes) {
  EXPECT_EQ(Cut(Division(10001)), kCutDivision);
  EXPECT_EQ(Cut("a" + Division(20000) + "b"), "a" + kCutDivision + "b");
}

TEST(LongValues, Of10000BytesStay) {
  EXPECT_EQ(Cut(Division(10000)), Division(10000));
  EXPECT_EQ(Cut(Division(200)), Division(200));
}

// From "<div>" to "</div>", with the value's quote after the division.
TEST(LongValues, OnlyInDivisionsOfMoreThan10000Bytes) {
  const std::string text = kValue + Times(9978, 'v');  // after "<div>": 9996 bytes in all
  EXPECT_EQ(("<div>" + text).size(), 9996u);
  const std::string just = "<div>" + text + "vvvv</div>\"";
  EXPECT_EQ(just.find("</div>"), 10000u);
  EXPECT_EQ(Cut(just), just);
  const std::string over = "<div>" + text + "vvvvv</div>\"";
  EXPECT_EQ(over.find('"', 20) - over.find('&'), 10002u);
  EXPECT_EQ(Cut(over), "<div>" + kValue + Times(97, 'v') + "\"");
}

TEST(LongValues, TheCaseDoesNotCount) {
  EXPECT_EQ(Cut("<DIV>&NBSP;Value=\"" + Times(10000, 'v') + "\"x</Div>"),
            "<DIV>&NBSP;Value=\"" + Times(97, 'v') + "\"x</Div>");
}

TEST(LongValues, OtherDivisionsStay) {
  const std::string longText = Times(20000, 'v');
  EXPECT_EQ(Cut(""), "");
  EXPECT_EQ(Cut("<div>"), "<div>");
  EXPECT_EQ(Cut("<div></div>"), "<div></div>");
  EXPECT_EQ(Cut("<div>" + kValue + longText + "\""), "<div>" + kValue + longText + "\"");
  EXPECT_EQ(Cut(kValue + longText + "\"</div>"), kValue + longText + "\"</div>");
  EXPECT_EQ(Cut("<div>" + kValue + longText + "</div>"), "<div>" + kValue + longText + "</div>");
  EXPECT_EQ(Cut("<div>value=\"" + longText + "\"</div>"), "<div>value=\"" + longText + "\"</div>");
  EXPECT_EQ(Cut("<div a>" + kValue + longText + "\"</div>"),
            "<div a>" + kValue + longText + "\"</div>");
}

TEST(LongValues, AValueAfterTheDivisionStays) {
  const std::string text =
      "<div>" + Times(20000, 'x') + "</div>" + kValue + Times(20000, 'v') + "\"</div>";
  EXPECT_EQ(Cut(text), text);
}

// The quote is looked for up to 26 bytes after the beginning of "</div>".
TEST(LongValues, TheQuoteMayComeALittleAfterTheDivision) {
  const std::string start = "<div>" + kValue + Times(10000, 'v') + "</div>";
  EXPECT_EQ(Cut(start + Times(19, 'b') + "\"c"), "<div>" + kValue + Times(97, 'v') + "\"c");
  EXPECT_EQ(Cut(start + Times(20, 'b') + "\"c"), start + Times(20, 'b') + "\"c");
}

TEST(LongValues, TheSearchForTheQuoteEndsWithTheText) {
  const std::string start = "<div>" + kValue + Times(10000, 'v') + "</div>";
  EXPECT_EQ(Cut(start), start);
  EXPECT_EQ(Cut(start + "abc"), start + "abc");
  EXPECT_EQ(Cut(start + "abc\""), "<div>" + kValue + Times(97, 'v') + "\"");
}

TEST(LongValues, OnlyTheFirstOfADivisionIsLookedAt) {
  const std::string text = "<div>" + kValue + "short\"" + kValue + Times(20000, 'v') + "\"</div>";
  EXPECT_EQ(Cut(text), text);
}

TEST(LongValues, EveryDivisionIsLookedAt) {
  EXPECT_EQ(Cut(Division(10001) + "<div>a</div>" + Division(30000) + "b"),
            kCutDivision + "<div>a</div>" + kCutDivision + "b");
}

// What follows the quote of a cut value is searched again 6 bytes on.
TEST(LongValues, TheSearchGoesOnSixBytesAfterTheBeginningOfTheQuote) {
  const std::string start = "<div>" + kValue + Times(10000, 'v') + "\"";
  const std::string cutStart = "<div>" + kValue + Times(97, 'v') + "\"";
  EXPECT_EQ(Cut(start + "12345" + Division(10001)), cutStart + "12345" + kCutDivision);
  EXPECT_EQ(Cut(start + "1234" + Division(10001)), cutStart + "1234" + Division(10001));
}

TEST(LongValues, DivisionsInsideADivision) {
  EXPECT_EQ(Cut("<div><div>" + Times(20, 'x') + kValue + Times(10000, 'v') + "\"</div></div>"),
            "<div><div>" + Times(20, 'x') + kValue + Times(97, 'v') + "\"</div></div>");
}

TEST(LongValues, TheTerminatorMovesWithTheText) {
  EXPECT_EQ(Cut(Division(10001) + '\0'), kCutDivision + '\0');
}

size_t FindFolded(const std::string& text, const std::string& needle, size_t from, size_t end) {
  const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
  for (size_t at = from; at + needle.size() <= end; ++at) {
    size_t same = 0;
    while (same < needle.size() && lower(text[at + same]) == needle[same]) ++same;
    if (same == needle.size()) return at;
  }
  return std::string::npos;
}

// The steps as they are told, each with its move of the whole rest.
std::string CutByMoves(std::string text) {
  constexpr size_t kNone = std::string::npos;
  size_t cursor = 0;
  while (cursor + 5 <= text.size()) {
    const size_t a = FindFolded(text, "<div>", cursor, text.size());
    if (a == kNone || a + 6 > text.size()) break;
    size_t b = FindFolded(text, "</div>", a, text.size());
    if (b == kNone) break;
    if (b - a > 10000 && b < text.size() && a + 13 <= b) {
      const size_t c = FindFolded(text, "&nbsp;value=\"", a, b);
      if (c != kNone) {
        const size_t d = text.find('"', c + 13);
        if (d != kNone && d < c + 13 + (b - c + 13) && d - c > 10000) {
          text.erase(c + 110, d - (c + 110));
          b = c + 110;
        }
      }
    }
    cursor = b + 6;
  }
  return text;
}

TEST(LongValues, AnyTextComesOutAsByRepeatedMoves) {
  const std::vector<std::string> pieces = {
      "<div>", "<DIV>",          "</div>",         "</Div>",         "\"",
      "\"",    "&nbsp;value=\"", "&NBSP;VALUE=\"", "&nbsp;",         "a",
      "bcd",   Times(26, 'w'),   Times(5000, 'x'), Times(9980, 'y'), Times(10001, 'z')};
  std::mt19937 random(8);
  int changed = 0;
  for (int i = 0; i < 1500; ++i) {
    const std::string text = RandomText(random, pieces, 30);
    const std::string expected = CutByMoves(text);
    ASSERT_TRUE(Cut(text) == expected) << i;
    changed += expected.size() < text.size() ? 1 : 0;
  }
  EXPECT_GT(changed, 60);
}

TEST(LongValues, ManyTakeOnePass) {
  EXPECT_EQ(Cut(Repeat(Division(10001), 1000)), Repeat(kCutDivision, 1000));
  EXPECT_EQ(Cut(Repeat("<div></div>", 200000)), Repeat("<div></div>", 200000));
  EXPECT_EQ(Cut(Repeat("<div>", 400000)), Repeat("<div>", 400000));
  const std::string values = "<div>" + Repeat(kValue, 100000) + "</div>";
  EXPECT_EQ(Cut(values), values);
}

}  // namespace
}  // namespace tarn
