#include "siblings/layout/Utf8.h"

#include <gtest/gtest.h>

namespace tarn::test {
namespace {

using namespace tarn::pages;
using namespace std::string_view_literals;

TEST(Utf8, IsToldFromWhatIsNot) {
  EXPECT_TRUE(IsUtf8(""));
  EXPECT_TRUE(IsUtf8("a\0b\0\0"sv));
  EXPECT_TRUE(IsUtf8("\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80"));
  EXPECT_FALSE(IsUtf8("\xC0\x80"));
  EXPECT_FALSE(IsUtf8("\xED\xA0\x80"));
  EXPECT_FALSE(IsUtf8("\xF4\x90\x80\x80"));
  EXPECT_FALSE(IsUtf8("a\0\xE4"sv));
  EXPECT_FALSE(IsUtf8("\xE2\x82"));
}

TEST(Utf8, CharactersAreReadAsTheyAreWritten) {
  for (const char32_t character :
       {0x00u, 0x7Fu, 0x80u, 0x7FFu, 0x800u, 0xFFFDu, 0x10000u, 0x10FFFFu}) {
    std::string text;
    AppendUtf8(text, character);
    size_t position = 0;
    EXPECT_EQ(NextCharacter(text, position), character);
    EXPECT_EQ(position, text.size());
  }
}

TEST(Utf8, WhatIsNoCharacterIsReplaced) {
  std::string text;
  AppendUtf8(text, 0xD800);
  AppendUtf8(text, 0x110000);
  EXPECT_EQ(text, "\uFFFD\uFFFD");
}

TEST(Utf8, ACharacterThatTheEndCutsIsLeftOut) {
  EXPECT_EQ(WithoutCutCharacter("ab"), "ab");
  EXPECT_EQ(WithoutCutCharacter("a\xC3"), "a");
  EXPECT_EQ(WithoutCutCharacter("a\xF0\x9F\x98"), "a");
  EXPECT_EQ(WithoutCutCharacter("a\xF0\x9F\x98\x80"), "a\xF0\x9F\x98\x80");
  EXPECT_EQ(WithoutCutCharacter(""), "");
  EXPECT_EQ(WithoutCutCharacter("\x80"), "\x80");
}

TEST(Utf8, Windows1252HasCurlyQuotesAndTheEuro) {
  std::string text;
  AppendWindows1252(text, "a\x80\x93\xE4\xFF\x81");
  EXPECT_EQ(text, "a\u20AC\u201C\u00E4\u00FF\u0081");
}

TEST(Utf8, Utf16InEitherOrder) {
  std::string little;
  AppendUtf16(little, "A\0\x3D\xD8\x00\xDE\xAC\x20"sv, ByteOrder::Little);
  EXPECT_EQ(little, "A\U0001F600\u20AC");
  std::string big;
  AppendUtf16(big, "\0A\x20\xAC"sv, ByteOrder::Big);
  EXPECT_EQ(big, "A\u20AC");
}

TEST(Utf8, ALoneSurrogateIsReplacedAndAnOddByteDropped) {
  std::string text;
  AppendUtf16(text, "\x3D\xD8\x41\x00\x00\xDE\x42"sv, ByteOrder::Little);
  EXPECT_EQ(text, "\uFFFDA\uFFFD");
  text.clear();
  AppendUtf16(text, "\x3D\xD8"sv, ByteOrder::Little);
  EXPECT_EQ(text, "\uFFFD");
}

}  // namespace
}  // namespace tarn::test
