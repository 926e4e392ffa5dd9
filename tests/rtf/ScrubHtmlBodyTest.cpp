#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <random>
#include <string>

#include "Internal/Tarnclasses_.h"
#include "rtf/ScrubHtmlBody.h"

namespace tarn {
namespace {

// Scrubs a block of exactly these bytes, so that a step outside of it is noticed.
std::string Scrub(const std::string& text) {
  const auto block = AllocateBlock<char>(text.size(), TARN_HERE);
  if (!text.empty()) std::memcpy(block.get(), text.data(), text.size());
  EXPECT_EQ(ScrubHtmlBody(block.get(), text.size()), StatusOk);
  return std::string(block.get(), text.size());
}

std::string Blanks(size_t count) { return std::string(count, ' '); }

std::string Repeat(std::string_view text, int count) {
  std::string all;
  for (int i = 0; i < count; ++i) all += text;
  return all;
}

// A leftover tag of 22 bytes, and its start without an end.
const std::string kTag = "<div>&nbsp;value=\"/x\">";
const std::string kStart = "<div>&nbsp;value=\"/";

TEST(ScrubTags, AWholeTagBecomesBlanks) {
  EXPECT_EQ(Scrub("<div>&nbsp;value=\"/x\">"), "                      ");
  EXPECT_EQ(Scrub("a" + kTag + "b"), "a" + Blanks(22) + "b");
}

TEST(ScrubTags, TheTagReachesToTheNextQuoteAndBracket) {
  EXPECT_EQ(Scrub("a" + kStart + "x>y\" >z\">b"), "a" + Blanks(28) + "b");
  EXPECT_EQ(Scrub("a" + kStart + "\">b"), "a" + Blanks(21) + "b");
}

TEST(ScrubTags, ATagEndBeforeTheFirstTagIsNoMatter) {
  EXPECT_EQ(Scrub("<p a=\"b\">" + kTag), "<p a=\"b\">" + Blanks(22));
}

TEST(ScrubTags, TheCaseCounts) {
  EXPECT_EQ(Scrub("<DIV>&nbsp;value=\"/x\">"), "<DIV>&nbsp;value=\"/x\">");
  EXPECT_EQ(Scrub("<div> value=\"/x\">"), "<div> value=\"/x\">");
  EXPECT_EQ(Scrub("<DIV>&nbsp;value=\"/x\">" + kTag), "<DIV>&nbsp;value=\"/x\">" + Blanks(22));
  EXPECT_EQ(Scrub(kTag + "<DIV>&nbsp;value=\"/x" + kTag),
            Blanks(22) + "<DIV>&nbsp;value=\"/x" + Blanks(22));
}

TEST(ScrubTags, FurtherTagsGoAsWell) {
  EXPECT_EQ(Scrub(kTag + "b" + kTag + "c"), Blanks(22) + "b" + Blanks(22) + "c");
}

TEST(ScrubTags, NeighbouringTagsGo) { EXPECT_EQ(Scrub(kTag + kTag + "c"), Blanks(44) + "c"); }

TEST(ScrubTags, ATagInsideATagGoesWithIt) {
  EXPECT_EQ(Scrub(kStart + kTag + "c" + kTag), Blanks(41) + "c" + Blanks(22));
}

TEST(ScrubTags, WithoutATagEndNothingIsBlanked) {
  EXPECT_EQ(Scrub(kStart + "x"), kStart + "x");
  EXPECT_EQ(Scrub(kTag + kStart + "x"), Blanks(22) + kStart + "x");
}

TEST(ScrubTags, WithoutATagEndTheReferencesFollow) {
  EXPECT_EQ(Scrub(kStart + "&#2;"), kStart + Blanks(4));
}

TEST(ScrubTags, AfterTheLastTagTheReferencesFollow) {
  EXPECT_EQ(Scrub("&#2;" + kTag), Blanks(26));
  EXPECT_EQ(Scrub(kTag + "x&#2;"), Blanks(22) + "x" + Blanks(4));
}

// The tag end is searched from the first tag on, so one between two tags comes first.
TEST(ScrubTags, ATagEndBetweenTwoTagsEndsEverything) {
  EXPECT_EQ(Scrub(kTag + "<p a=\"b\">c" + kTag + "&#2;"),
            Blanks(22) + "<p a=\"b\">c" + kTag + "&#2;");
}

TEST(ScrubTags, ATagEndRightBeforeTheNextTagEndsTheTagsOnly) {
  EXPECT_EQ(Scrub(kTag + "<p a=\"b\">" + kTag + "&#2;"),
            Blanks(22) + "<p a=\"b\">" + kTag + Blanks(4));
}

TEST(ScrubTags, AReferenceInsideATagGoesWithIt) {
  EXPECT_EQ(Scrub(kStart + "&#65;\">&#2;"), Blanks(30));
}

TEST(ScrubReferences, OnlyTheFirstRunGoes) {
  EXPECT_EQ(Scrub("&#2;&#11;&#65;&#30;"), "         &#65;&#30;");
}

// What a single reference, after a letter and before another, comes to.
bool IsBlanked(const std::string& reference) {
  const std::string scrubbed = Scrub("a" + reference + "b");
  if (scrubbed == "a" + Blanks(reference.size()) + "b") return true;
  EXPECT_EQ(scrubbed, "a" + reference + "b");
  return false;
}

TEST(ScrubReferences, EveryNumberOfOneDigit) {
  EXPECT_FALSE(IsBlanked("&#0;"));
  EXPECT_TRUE(IsBlanked("&#1;"));
  EXPECT_TRUE(IsBlanked("&#2;"));
  for (const char digit : {'3', '4', '5', '6', '7', '8', '9'}) {
    EXPECT_FALSE(IsBlanked(std::string("&#") + digit + ";")) << digit;
  }
}

TEST(ScrubReferences, EveryNumberOfTwoDigits) {
  for (int number = 0; number < 100; ++number) {
    const std::string digits = {static_cast<char>('0' + number / 10),
                                static_cast<char>('0' + number % 10)};
    const bool goes = number == 11 || number == 12 || (number >= 14 && number <= 31);
    EXPECT_EQ(IsBlanked("&#" + digits + ";"), goes) << number;
  }
}

// Only the first byte, or the first two, are looked at.
TEST(ScrubReferences, WhatIsNoNumberGoesByItsFirstBytes) {
  EXPECT_TRUE(IsBlanked("&#2x;"));
  EXPECT_TRUE(IsBlanked("&#1x;"));
  EXPECT_FALSE(IsBlanked("&#3x;"));
  EXPECT_FALSE(IsBlanked("&#x2;"));
  EXPECT_FALSE(IsBlanked("&#;"));
}

TEST(ScrubReferences, LongerOnesStayAndEndTheRun) {
  EXPECT_FALSE(IsBlanked("&#200;"));
  EXPECT_FALSE(IsBlanked("&#002;"));
  EXPECT_EQ(Scrub("&#200;&#2;"), "&#200;&#2;");
  EXPECT_EQ(Scrub("&#2;&#200;&#2;"), "    &#200;&#2;");
}

TEST(ScrubReferences, LineEndsAndTabsEndTheRun) {
  EXPECT_EQ(Scrub("&#2;&#10;&#2;"), "    &#10;&#2;");
  EXPECT_EQ(Scrub("&#2;&#13;&#2;"), "    &#13;&#2;");
  EXPECT_EQ(Scrub("&#2;&#9;&#2;"), "    &#9;&#2;");
  EXPECT_EQ(Scrub("&#3;&#2;"), "&#3;&#2;");
}

TEST(ScrubReferences, TextBetweenReferencesStays) {
  EXPECT_EQ(Scrub("x&#2;y&#30;z"), "x    y     z");
}

TEST(ScrubReferences, ASemicolonBeforeTheFirstIsNoMatter) {
  EXPECT_EQ(Scrub("&nbsp;&#2;"), "&nbsp;    ");
}

TEST(ScrubReferences, ASemicolonBetweenTwoEndsTheRun) {
  EXPECT_EQ(Scrub("&#2;&nbsp;&#2;"), "    &nbsp;&#2;");
  EXPECT_EQ(Scrub("&#2;;&#2;"), "    ;&#2;");
}

TEST(ScrubReferences, WithoutASemicolonNothingGoes) {
  EXPECT_EQ(Scrub("&#2"), "&#2");
  EXPECT_EQ(Scrub("&#2;&#2"), "    &#2");
}

TEST(ScrubReferences, AtTheEndOfTheText) {
  EXPECT_EQ(Scrub("&#31;"), "     ");
  EXPECT_EQ(Scrub("&#"), "&#");
  EXPECT_EQ(Scrub("&#;"), "&#;");
  EXPECT_EQ(Scrub("x&#1"), "x&#1");
}

TEST(ScrubText, EndsAtItsFirstNul) {
  EXPECT_EQ(Scrub(std::string("a\0&#2;", 6)), std::string("a\0&#2;", 6));
  EXPECT_EQ(Scrub(std::string("&#2\0;", 5)), std::string("&#2\0;", 5));
  EXPECT_EQ(Scrub('\0' + kTag), '\0' + kTag);
  EXPECT_EQ(Scrub(kStart + '\0' + "\">"), kStart + '\0' + "\">");
  EXPECT_EQ(Scrub(kTag + "&#2;" + '\0' + "&#2;"), Blanks(26) + '\0' + "&#2;");
}

TEST(ScrubText, EndsAtItsLength) {
  std::string text = "&#2;&#2;";
  EXPECT_EQ(ScrubHtmlBody(text.data(), 4), StatusOk);
  EXPECT_EQ(text, "    &#2;");
  text = "&#2;";
  EXPECT_EQ(ScrubHtmlBody(text.data(), 3), StatusOk);
  EXPECT_EQ(text, "&#2;");
  text = kTag;
  EXPECT_EQ(ScrubHtmlBody(text.data(), 21), StatusOk);
  EXPECT_EQ(text, kTag);
}

TEST(ScrubText, ALengthBeyondTheNulIsNotUsed) {
  std::string text = "&#2;";
  EXPECT_EQ(ScrubHtmlBody(text.data(), text.size() + 1), StatusOk);
  EXPECT_EQ(text, "    ");
}

TEST(ScrubText, EmptyAndAbsent) {
  EXPECT_EQ(Scrub(""), "");
  EXPECT_EQ(ScrubHtmlBody(nullptr, 0), StatusOk);
}

TEST(ScrubText, OrdinaryTextStays) {
  EXPECT_EQ(Scrub("<div>&nbsp;<a href=\"/x\">&#8364;</a></div>"),
            "<div>&nbsp;<a href=\"/x\">&#8364;</a></div>");
}

// The first stage as it is told. False where a tag end is before the next tag.
bool BlankTagsPlainly(std::string& text) {
  const size_t f = text.find(kStart);
  for (size_t m = f; m < text.size();) {
    m = text.find(kStart, f);
    if (m == std::string::npos) return true;
    const size_t t = text.find("\">", f + 1);
    if (t == std::string::npos || m == t + 2) return true;
    if (t + 2 < m) return false;
    std::fill(text.begin() + static_cast<ptrdiff_t>(m),
              text.begin() + static_cast<ptrdiff_t>(t + 2), ' ');
    m = t + 2;
  }
  return true;
}

// The second stage as it is told.
void BlankReferencesPlainly(std::string& text) {
  const size_t f = text.find("&#");
  size_t before = std::string::npos;
  for (size_t r = f; r < text.size();) {
    r = text.find("&#", f);
    if (r == std::string::npos || r == before) return;
    before = r;
    const size_t s = text.find(';', f + 1);
    if (s == std::string::npos) return;
    if (s < r || s - r >= 5) continue;
    const char d1 = text[r + 2];
    const char d2 = text[std::min(r + 3, text.size() - 1)];
    const bool goes = d1 == '2' || (d1 == '1' && d2 != '0' && d2 != '3') ||
                      (d1 == '3' && (d2 == '0' || d2 == '1'));
    for (; r <= s; ++r) text[r] = goes ? ' ' : text[r];
  }
}

TEST(ScrubText, AnyTextComesOutAsToldStepByStep) {
  const std::string pieces[] = {kTag, kStart, "\">", "\">", "&#",  "&#", "&",  "#", ";", ";",
                                "0",  "1",    "2",   "3",   "31;", "x",  "\"", ">", "<"};
  std::mt19937 random(21);
  int tags = 0;
  int references = 0;
  for (int i = 0; i < 100000; ++i) {
    // Half of the texts are of references only.
    const size_t first = i % 2 == 0 ? 0 : 4;
    std::string text;
    for (uint64_t left = random() % 12; left > 0; --left) {
      text += pieces[first + random() % (std::size(pieces) - first)];
    }
    std::string expected = text;
    const bool goesOn = BlankTagsPlainly(expected);
    tags += expected != text ? 1 : 0;
    const std::string between = expected;
    if (goesOn) BlankReferencesPlainly(expected);
    references += expected != between ? 1 : 0;
    ASSERT_EQ(Scrub(text), expected) << text;
  }
  EXPECT_GT(tags, 1000);
  EXPECT_GT(references, 1000);
}

// Texts that would take hours if each step began again at the front.
TEST(ScrubText, LongRunsTakeOnePass) {
  EXPECT_EQ(Scrub(Repeat("&#2;", 1000000)), Blanks(4000000));
  EXPECT_EQ(Scrub(Repeat(kTag, 50000)), Blanks(22 * 50000));
  EXPECT_EQ(Scrub(Repeat(kStart, 50000)), Repeat(kStart, 50000));
  EXPECT_EQ(Scrub(Repeat("&#2", 100000)), Repeat("&#2", 100000));
  EXPECT_EQ(Scrub(Repeat(kTag + "text ", 50000)), Repeat(Blanks(22) + "text ", 50000));
}

}  // namespace
}  // namespace tarn
