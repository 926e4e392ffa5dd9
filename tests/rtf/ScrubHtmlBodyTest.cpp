#include <gtest/gtest.h>

#include <string>

#include "Internal/Tarnclasses_.h"
#include "rtf/ScrubHtmlBody.h"

namespace tarn {
namespace {

// Scrubs a block of exactly these bytes, so that a step outside of it is noticed.
std::string Scrub(const std::string& text) {
  const auto block = AllocateBlock<char>(text.size(), TARN_HERE);
  if (!text.empty()) std::memcpy(block.get(), text.data(), text.size());
  EXPECT_EQ(ScrubHtmlBody(block.get(), text.size()), 1);
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

TEST(ScrubTags, ATagEndInFrontOfTheFirstTagIsNoMatter) {
  EXPECT_EQ(Scrub("<p a=\"b\">" + kTag), "<p a=\"b\">" + Blanks(22));
}

TEST(ScrubTags, TheCaseCounts) {
  EXPECT_EQ(Scrub("<DIV>&nbsp;value=\"/x\">"), "<DIV>&nbsp;value=\"/x\">");
  EXPECT_EQ(Scrub("<div> value=\"/x\">"), "<div> value=\"/x\">");
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

TEST(ScrubTags, BehindTheLastTagTheReferencesFollow) {
  EXPECT_EQ(Scrub("&#2;" + kTag), Blanks(26));
  EXPECT_EQ(Scrub(kTag + "x&#2;"), Blanks(22) + "x" + Blanks(4));
}

// The tag end is searched from the first tag on, so one that stands between two tags comes first.
TEST(ScrubTags, ATagEndBetweenTwoTagsEndsEverything) {
  EXPECT_EQ(Scrub(kTag + "<p a=\"b\">c" + kTag + "&#2;"),
            Blanks(22) + "<p a=\"b\">c" + kTag + "&#2;");
}

TEST(ScrubTags, ATagEndRightInFrontOfTheNextTagEndsTheTagsOnly) {
  EXPECT_EQ(Scrub(kTag + "<p a=\"b\">" + kTag + "&#2;"),
            Blanks(22) + "<p a=\"b\">" + kTag + Blanks(4));
}

TEST(ScrubTags, AReferenceInsideATagGoesWithIt) {
  EXPECT_EQ(Scrub(kStart + "&#65;\">&#2;"), Blanks(30));
}

TEST(ScrubReferences, OnlyTheFirstRunGoes) {
  EXPECT_EQ(Scrub("&#2;&#11;&#65;&#30;"), "         &#65;&#30;");
}

// What a single reference, behind a letter and in front of another, comes to.
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

TEST(ScrubReferences, ASemicolonInFrontOfTheFirstIsNoMatter) {
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
  EXPECT_EQ(ScrubHtmlBody(text.data(), 4), 1);
  EXPECT_EQ(text, "    &#2;");
  text = "&#2;";
  EXPECT_EQ(ScrubHtmlBody(text.data(), 3), 1);
  EXPECT_EQ(text, "&#2;");
  text = kTag;
  EXPECT_EQ(ScrubHtmlBody(text.data(), 21), 1);
  EXPECT_EQ(text, kTag);
}

TEST(ScrubText, ALengthBeyondTheNulIsNotUsed) {
  std::string text = "&#2;";
  EXPECT_EQ(ScrubHtmlBody(text.data(), text.size() + 1), 1);
  EXPECT_EQ(text, "    ");
}

TEST(ScrubText, EmptyAndAbsent) {
  EXPECT_EQ(Scrub(""), "");
  EXPECT_EQ(ScrubHtmlBody(nullptr, 0), 1);
}

TEST(ScrubText, OrdinaryTextStays) {
  EXPECT_EQ(Scrub("<div>&nbsp;<a href=\"/x\">&#8364;</a></div>"),
            "<div>&nbsp;<a href=\"/x\">&#8364;</a></div>");
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
