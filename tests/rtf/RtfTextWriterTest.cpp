#include "rtf/RtfTextWriter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "Tarnbase/PlainKernel.h"
#include "rtf/FontSearch.h"
#include "rtf/FontTables.h"
#include "rtf/GraphicsProbe.h"
#include "support/FaultSweep.h"
#include "support/KernelUsage.h"
#include "support/TestFonts.h"

namespace tarn {
namespace {

using test::AllocationCalls;
using test::Prepare;
using test::Show;
using test::TableText;

[[maybe_unused]] const bool kFonts = test::UseTestFonts(test::StandardTestFonts()) &&
                                     test::UseTestFonts(test::PoorFonts({u"Courier"}));

// Font 0 has Windows-1252 and is the default.
constexpr std::string_view kWestern =
    "{\\rtf1\\ansi\\ansicpg1252\\deff0{\\fonttbl{\\f0\\fswiss\\fcharset0 Courier;}}\\pard x}";

std::string Written(const TrackedBuffer<char>& output) {
  return output.data() == nullptr ? std::string() : std::string(output.data(), output.length());
}

// A text that ends where its heap block does, so that a step outside is noticed; never null.
template <typename T>
std::unique_ptr<T[]> Copy(std::basic_string_view<T> text) {
  std::unique_ptr<T[]> copy(new T[text.size()]);
  std::copy(text.begin(), text.end(), copy.get());
  return copy;
}

// What a text becomes in a document, and the fonts after it.
struct Utf8 {
  explicit Utf8(std::string_view text, std::string_view document = kWestern) {
    Prepare(render.fonts, document).ignore();
    status = WriteRtfUtf8Text(render, Copy(text).get(), text.size());
    output = Written(render.output);
  }

  RtfRender render;
  Status status;
  std::string output;
};

// The same for a wide text.
struct Wide {
  explicit Wide(std::u16string_view text, std::string_view document = kWestern) {
    Prepare(fonts, document).ignore();
    TrackedBuffer<char> buffer;
    status = WriteRtfWideText(buffer, fonts, Copy(text).get(), text.size());
    output = Written(buffer);
  }

  const RtfFontTable& table() const { return fonts.table(); }

  RtfFonts fonts;
  Status status;
  std::string output;
};

struct CodePageText {
  CodePageText(uint32_t codePage, std::u16string_view text, uint32_t ascii = 0,
               uint32_t current = 0)
      : inForce{ascii, current} {
    Prepare(fonts, kWestern).ignore();
    TrackedBuffer<char> buffer;
    status =
        WriteRtfCodePageText(buffer, fonts, inForce, codePage, {Copy(text).get(), text.size()});
    output = Written(buffer);
  }

  RtfFonts fonts;
  RtfFontsInForce inForce;
  Status status;
  std::string output;
};

TEST(WriteRtfUtf8Text, AsciiIsWrittenWithoutAFont) {
  EXPECT_EQ(Utf8("Plain text ~\x7F").output, "Plain text ~\x7F");
  EXPECT_EQ(Utf8("a{b").output, "a\\'7bb");
  EXPECT_EQ(Utf8("\\}\t\r\n.").output, "\\'5c\\'7d\\'09\\'0d\\'0a.");
  EXPECT_EQ(Utf8(std::string_view("a\0b", 3)).output, "a\\'00b");
  EXPECT_EQ(Utf8("").output, "");
}

TEST(WriteRtfUtf8Text, WhatIsBetweenTwoAccentedLettersIsLost) {
  const Utf8 text("R\xC3\xA9union \xC3\xA0 Paris");
  EXPECT_EQ(text.status, StatusOk);
  EXPECT_EQ(text.output, "R\\'e9\\'e0 Paris");
  EXPECT_EQ(text.render.fonts.table().changed, 0u);
}

TEST(WriteRtfUtf8Text, TheSameInADocumentWithoutAFittingFont) {
  const Utf8 text("R\xC3\xA9union \xC3\xA0 Paris",
                  "\\ansicpg1252\\deff2{\\fonttbl{\\f2\\fcharset2 Symbol;}}");
  EXPECT_EQ(text.output, "R\\f3 \\'e9\\'e0\\f2  Paris");
  EXPECT_EQ(TableText(text.render.fonts),
            "\\fonttbl{\\f2\\fcharset2 Symbol;}{\\f3 \\swiss \\fcharset0 Arial}}");
}

TEST(WriteRtfUtf8Text, SpecialsAfterTheFirstForeignCharacter) {
  EXPECT_EQ(Utf8("\xC3\xA9"
                 "a{b\xC3\xA9")
                .output,
            "\\'e9a\\'7b\\'e9");
  EXPECT_EQ(Utf8("\xC3\xA9\n\\").output, "\\'e9\\'0a\\'5c");
}

TEST(WriteRtfUtf8Text, JapaneseGetsAFontOfItsOwn) {
  const Utf8 text("\xE6\x97\xA5\xE6\x9C\xAC");
  EXPECT_EQ(text.status, StatusOk);
  EXPECT_EQ(text.output, "\\f1 \\'93\\'fa\\'96{\\f0 ");
  EXPECT_EQ(Show(text.render.fonts), "0:1252:0:Courier|1:932:128:MS Gothic");
  EXPECT_EQ(TableText(text.render.fonts),
            "\\fonttbl{\\f0\\fswiss\\fcharset0 Courier;}{\\f1 \\swiss \\fcharset128 MS Gothic}}");
  EXPECT_EQ(text.render.fonts.table().changed, 1u);
}

TEST(WriteRtfUtf8Text, TheSecondTextUsesTheFontOfTheFirst) {
  Utf8 text("\xE6\x97\xA5");
  EXPECT_EQ(WriteRtfUtf8Text(text.render, "a\xE6\x97\xA5", 4), StatusOk);
  EXPECT_EQ(Written(text.render.output), "\\f1 \\'93\\'fa\\f0 a\\f1 \\'93\\'fa\\f0 ");
  EXPECT_EQ(text.render.fonts.table().count(), 2u);
}

TEST(WriteRtfUtf8Text, MalformedPartsAreReplacementCharacters) {
  // U+FFFD, which no code page and no font of the test has.
  EXPECT_EQ(Utf8("a\xFF"
                 "b")
                .output,
            "a\\u-3 ?b");
  EXPECT_EQ(Utf8("\xE6\x97").output, "\\u-3 ?");
  EXPECT_EQ(Utf8("\xC3\xC3").output, "\\u-3 ?\\u-3 ?");
}

TEST(WriteRtfUtf8Text, NullTextFails) {
  RtfRender render;
  EXPECT_EQ(WriteRtfUtf8Text(render, nullptr, 1), StatusNullArgument);
  EXPECT_EQ(WriteRtfUtf8Text(render, nullptr, 0), StatusNullArgument);
  EXPECT_EQ(WriteRtfUtf8Text(render, "", 0), StatusOk);
}

// More than a conversion takes. Of the second byte on, nothing is read.
TEST(WriteRtfUtf8Text, ATextOfMoreThan31BitsBeyondAsciiFails) {
  RtfRender render;
  const char byte = '\xC3';
  const uint64_t before = AllocationCalls();
  EXPECT_EQ(WriteRtfUtf8Text(render, &byte, uint64_t{INT32_MAX} + 1), StatusBadArgument);
  EXPECT_EQ(AllocationCalls(), before);
}

TEST(WriteRtfUtf8Text, AnOutputThatCannotGrowIsReported) {
  // The collected bytes, the escape and the bytes before a foreign character.
  for (const std::string_view text : {"ab", "{", "a\xC3\xA9"}) {
    PlainKernelFailAt(PlainKernelFaultMemory, 1);
    const Utf8 written(text, "");
    EXPECT_EQ(written.status, StatusOutOfMemory) << text;
    EXPECT_EQ(written.output, "") << text;
  }
}

TEST(WriteRtfUtf8Text, EachFailedAllocationHasItsResult) {
  struct Case {
    Status status;
    const char* output;
  };
  const std::vector<Case> cases = {
      {StatusOutOfMemory, ""},                   // the wide text
      {StatusOutOfMemory, ""},                   // the name of the new font
      {StatusOutOfMemory, ""},                   // its entry
      {StatusOk, "\\'93\\'fa\\'96{\\f0 "},       // the output: the font is left out
      {StatusOutOfMemory, "\\f1 "},              // the scratch of the run
      {StatusOk, "\\f1 \\'93\\'fa\\'96{\\f0 "},  // none
  };
  const uint64_t calls = test::SweepFaults(PlainKernelFaultMemory, [&](test::FaultedWork& faulted) {
    ASSERT_LE(faulted.ordinal(), cases.size());
    const Case& row = cases[faulted.ordinal() - 1];
    RtfRender render;
    ASSERT_EQ(Prepare(render.fonts, kWestern), StatusOk);
    const Status status =
        faulted([&] { return WriteRtfUtf8Text(render, "\xE6\x97\xA5\xE6\x9C\xAC", 6); });
    EXPECT_EQ(status, row.status);
    EXPECT_EQ(Written(render.output), row.output);
  });
  EXPECT_EQ(calls, 5u);
}

TEST(WriteRtfUtf8Text, AFailedConversionOfAsciiIsReported) {
  PlainKernelFailAt(PlainKernelFaultText, 1);
  const Utf8 text("a\xC3\xA9 b");
  EXPECT_EQ(text.status, StatusPathToUtf8Failed);
  EXPECT_EQ(text.output, "a\\'e9");
  PlainKernelFailAt(PlainKernelFaultText, 2);
  EXPECT_EQ(Utf8("a\xC3\xA9 b").output, "a\\'e9 b");
}

TEST(WriteRtfWideText, GreekAndRussianEachGetTheirFont) {
  // Accented Greek is in the Greek page only; Russian is carried by the Japanese one first.
  const Wide text(u"\u0386\u03B3\u03B9\u03BF\u03C2 \u0416\u0443\u043A\u043E\u0432");
  EXPECT_EQ(text.status, StatusOk);
  EXPECT_EQ(text.output,
            "\\f1 \\'a2\\'e3\\'e9\\'ef\\'f2\\f0  "
            "\\f2 \\'84G\\'84\\'85\\'84{\\'84\\'80\\'84r\\f0 ");
  EXPECT_EQ(Show(text.fonts), "0:1252:0:Courier|1:1253:161:Batang|2:932:128:MS Gothic");
}

TEST(WriteRtfWideText, APieceTakesAsciiAlong) {
  // "bc" is between two characters of one piece and is lost there; "{" is written.
  EXPECT_EQ(Wide(u"\u0402a{bc\u0403 d\u0386").output,
            "\\f1 \\'80\\f0 a\\'7b\\f1 \\'81\\f0  d\\f2 \\'a2\\f0 ");
}

TEST(WriteRtfWideText, ACharacterWithoutACodePageIsAnEscapeInTheFirstFontThatHasIt) {
  const std::string_view document =
      "\\ansicpg1252\\deff0{\\fonttbl{\\f0\\fcharset0 Courier;}{\\f5\\fcharset0 Arial;}{\\f6 "
      "Sylfaen;}}";
  const Wide text(u"\u0561", document);
  EXPECT_EQ(text.status, StatusOk);
  EXPECT_EQ(text.output, "\\f5 \\u1377 ?\\f0 ");
  EXPECT_EQ(text.table().changed, 0u);
  EXPECT_EQ(Wide(u"\uFB13", document).output, "\\f5 \\u-1261 ?\\f0 ");
  EXPECT_EQ(Wide(u"\u10D0", document).output, "\\f6 \\u4304 ?\\f0 ");
}

TEST(WriteRtfWideText, TheDefaultFontIsNotSelectedAgain) {
  const Wide text(u"\u0561", "\\ansicpg1252\\deff5{\\fonttbl{\\f5 Arial;}}");
  EXPECT_EQ(text.output, "\\u1377 ?");
}

TEST(WriteRtfWideText, AFontMayBeAddedForACharacter) {
  const Wide text(u"\u1681");
  EXPECT_EQ(text.output, "\\f1 \\u5761 ?\\f0 ");
  EXPECT_EQ(TableText(text.fonts),
            "\\fonttbl{\\f0\\fswiss\\fcharset0 Courier;}{\\f1 \\ \\fcharset0 Gulim}}");
}

TEST(WriteRtfWideText, WithoutAFontTheCharacterIsWrittenInTheCurrentOne) {
  EXPECT_EQ(Wide(u"\xD83D\xDE00").output, "\\u-10179 ?\\u-8704 ?");
  EXPECT_EQ(Wide(u"\xDC00").output, "\\u-9216 ?");
  EXPECT_EQ(Wide(u"\u0386\u2603").output, "\\f1 \\'a2\\u9731 ?\\f0 ");
}

TEST(WriteRtfWideText, EveryUnitOfACharacterIsWritten) {
  // A mark that no font of the test has goes with its letter.
  EXPECT_EQ(Wide(u"\u0561\u0308").output, "\\u1377 ?\\u776 ?");
}

TEST(WriteRtfWideText, ACharacterJoinsAPieceAsAWhole) {
  // An accented letter of 1252, and another one inside a sign that 1252 lacks.
  EXPECT_EQ(Wide(u"\u00E9\u00E8\u0489").output, "\\'e9\\u232 ?\\u1161 ?");
}

TEST(WriteRtfWideText, ACharacterOfMoreThanFiveBytesJoinsNoPiece) {
  const std::string_view document = "\\ansicpg1252\\deff0{\\fonttbl{\\f0\\fcharset0 A;}}";
  const std::u16string_view text = u"\u0386\u01A1ab\u01B0\u0301\u0301\u0301\u0301\u0301";
  // Vietnamese: a letter under four accents goes with the letter in front, and "ab" is lost.
  EXPECT_EQ(Wide(text.substr(0, 9), document).output,
            "\\f1 \\'a2\\f2 \\'f5\\'fd\\'ec\\'ec\\'ec\\'ec\\f0 ");
  EXPECT_EQ(Wide(text, document).output,
            "\\f1 \\'a2\\f2 \\'f5\\f0 ab\\f2 \\'fd\\'ec\\'ec\\'ec\\'ec\\'ec\\f0 ");
}

TEST(WriteRtfWideText, AnAsciiLetterJoinsAPieceWithoutItsMark) {
  EXPECT_EQ(Wide(u"\u00E9a\u0489").output, "\\'e9a\\u1161 ?");
}

TEST(WriteRtfWideText, AsciiAfterACharacterWithoutACodePage) {
  EXPECT_EQ(Wide(u"\u0561 b").output, "\\f1 \\u1377 ?\\f0  b");
  EXPECT_EQ(Wide(u"\u0561 b\u0561").output, "\\f1 \\u1377 ?\\u1377 ?\\f0 ");
}

TEST(WriteRtfWideText, TheUnknownDefaultFontIsThatOfTheDocumentsCodePage) {
  const Wide known(u"\u00E9", "\\ansicpg1252\\deff4294967295{\\fonttbl{\\f4\\fcharset0 A;}}");
  EXPECT_EQ(known.table().defaultFont, 4u);
  EXPECT_EQ(known.output, "\\'e9");
  const Wide added(u"\u00E9", "\\ansicpg1252\\deff4294967295{\\fonttbl{\\f4\\fcharset2 A;}}");
  EXPECT_EQ(added.table().defaultFont, 5u);
  EXPECT_EQ(added.output, "\\'e9");
  const Wide none(u"\u00E9", "\\ansicpg65001\\deff4294967295{\\fonttbl{\\f4\\fcharset0 A;}}");
  EXPECT_EQ(none.status, StatusBadArgument);
  EXPECT_EQ(none.output, "");
}

TEST(WriteRtfWideText, NoTextIsWrittenAsNothing) {
  EXPECT_EQ(Wide(u"").status, StatusOk);
  EXPECT_EQ(Wide(u"").output, "");
  TrackedBuffer<char> output;
  RtfFonts fonts;
  EXPECT_EQ(WriteRtfWideText(output, fonts, nullptr, 0), StatusNullArgument);
  EXPECT_EQ(WriteRtfWideText(output, fonts, nullptr, 1), StatusNullArgument);
}

TEST(WriteRtfWideText, OnlyCharactersWithoutACodePageNeedADeviceContext) {
  const test::GraphicsProbe probe;
  for (const std::u16string_view text :
       {u"Plain", u"R\u00E9union \u00E0 Paris", u"\u65E5\u672C", u"\u0386 \u0402 \u65E5"}) {
    EXPECT_EQ(Wide(text).status, StatusOk);
    EXPECT_EQ(probe.contexts, 0u);
  }
  EXPECT_EQ(Wide(u"\u0386\u1681").output, "\\f1 \\'a2\\f2 \\u5761 ?\\f0 ");
  EXPECT_EQ(probe.contexts, 1u);
}

TEST(WriteRtfWideText, ANulEndsWithAFailure) {
  EXPECT_EQ(Wide(std::u16string_view(u"\u00E9\0", 2)).status, StatusBadArgument);
  EXPECT_EQ(Wide(std::u16string_view(u"\u00E9\0", 2)).output, "\\'e9");
  EXPECT_EQ(Wide(std::u16string_view(u"\u0561\0b", 3)).status, StatusBadArgument);
}

TEST(WriteRtfWideText, FailedGrowthsLeaveWordsOut) {
  // The name and the entry of the font come first, then the output for each word in turn.
  struct Case {
    uint64_t room;
    uint64_t ordinal;
    const char* output;
  };
  const Case cases[] = {
      {0, 3, "\\'a2\\f0 "},  // the font
      {4, 4, "\\f1 \\f0 "},  // the byte
      {8, 4, "\\f1 \\'a2"},  // the default font at the end
  };
  for (const Case& row : cases) {
    RtfFonts fonts;
    ASSERT_EQ(Prepare(fonts, kWestern), StatusOk);
    TrackedBuffer<char> output(0, 0);
    if (row.room != 0) {
      ASSERT_NE(output.reserve(row.room), nullptr);
    }
    PlainKernelFailAt(PlainKernelFaultMemory, row.ordinal);
    EXPECT_EQ(WriteRtfWideText(output, fonts, u"\u0386", 1), StatusOk) << row.room;
    EXPECT_EQ(Written(output), row.output);
  }
}

TEST(WriteRtfWideText, AFailedGrowthLeavesAnEscapeOut) {
  bool leftOut = false;
  bool failed = false;
  test::SweepFaults(PlainKernelFaultMemory, [&](test::FaultedWork& faulted) {
    const Wide text = faulted([] { return Wide(u"\xDC00", "\\from"); });
    // Without memory to ask a font with, the writer fails.
    EXPECT_TRUE(text.status == StatusOk || text.status == StatusOutOfMemory);
    EXPECT_TRUE(text.output == "\\u-9216 ?" || text.output.empty()) << text.output;
    EXPECT_TRUE(text.status == StatusOk || text.output.empty()) << text.output;
    EXPECT_TRUE(faulted.isReached() || (text.status == StatusOk && !text.output.empty()));
    leftOut = leftOut || (text.status == StatusOk && text.output.empty());
    failed = failed || text.status == StatusOutOfMemory;
  });
  EXPECT_TRUE(leftOut);
  EXPECT_TRUE(failed);
}

TEST(WriteRtfCodePageText, RunsAndAsciiAlternate) {
  const CodePageText text(932, u"\u65E5 a\u672C b");
  EXPECT_EQ(text.status, StatusOk);
  EXPECT_EQ(text.output, "\\f1 \\'93\\'fa\\'96{\\f0  b");
  EXPECT_EQ(text.inForce.current, 0u);
}

TEST(WriteRtfCodePageText, TheCurrentFontStaysAfterARun) {
  const CodePageText text(932, u"\u65E5");
  EXPECT_EQ(text.output, "\\f1 \\'93\\'fa");
  EXPECT_EQ(text.inForce.current, 1u);
  const CodePageText selected(932, u"\u65E5", 0, 1);
  EXPECT_EQ(selected.output, "\\'93\\'fa");
}

TEST(WriteRtfCodePageText, TrailBytesAreWrittenAsTheyAre) {
  // The second bytes are "\", "{", "}" and "A".
  EXPECT_EQ(CodePageText(932, u"\u8868\u672C\u515A\u30A2").output,
            "\\f1 \\'95\\\\'96{\\'93}\\'83A");
}

TEST(WriteRtfCodePageText, WhatTheCodePageLacksIsAQuestionMark) {
  EXPECT_EQ(CodePageText(1252, u"\u00E9\u0416").output, "\\'e9?");
}

TEST(WriteRtfCodePageText, AsciiMayComeFirst) {
  EXPECT_EQ(CodePageText(1252, u"a{\u00E9 b").output, "a\\'7b\\'e9 b");
  EXPECT_EQ(CodePageText(1253, u"ab", 0, 7).output, "\\f0 ab");
}

TEST(WriteRtfCodePageText, ANulEndsWithAFailure) {
  EXPECT_EQ(CodePageText(1252, std::u16string_view(u"\u00E9 a\0", 4)).status, StatusBadArgument);
  EXPECT_EQ(CodePageText(1252, std::u16string_view(u"\0", 1)).status, StatusBadArgument);
}

TEST(WriteRtfCodePageText, FailuresAreReported) {
  EXPECT_EQ(CodePageText(65001, u"\u00E9").status, StatusBadArgument);  // no charset
  EXPECT_EQ(CodePageText(42, u"\u00E9").status, StatusBadArgument);     // no conversion
  TrackedBuffer<char> output;
  RtfFonts fonts;
  RtfFontsInForce inForce;
  EXPECT_EQ(WriteRtfCodePageText(output, fonts, inForce, 1252, {nullptr, 1}), StatusNullArgument);
  EXPECT_EQ(WriteRtfCodePageText(output, fonts, inForce, 1252, {}), StatusNullArgument);
  EXPECT_EQ(fonts.table().count(), 0u);
}

TEST(WriteRtfCodePageText, ARunThatFailsHasSelectedItsFont) {
  const CodePageText text(42, u"\u00E9");
  EXPECT_EQ(text.output, "\\f1 ");
  EXPECT_EQ(text.inForce.current, 1u);
}

// Half a megabyte of pieces in a table that is as long as any: it is looked through when a font is
// added, and for each code page once more.
TEST(WriteRtfWideText, HostileTextsLookThroughALongTableAFewTimes) {
  RtfFonts fonts(test::ZeroEntries(kMaxRtfFonts));
  fonts.setAnsiCodePage(1252);
  std::u16string text;
  while (text.size() < (1 << 18)) text += u"\u0386 \u0436\u0402 ";
  TrackedBuffer<char> output;
  EXPECT_EQ(WriteRtfWideText(output, fonts, text.data(), text.size()), StatusOk);
  EXPECT_EQ(fonts.table().count(), kMaxRtfFonts + 3);
  EXPECT_LE(fonts.fontSteps(), 6u * (kMaxRtfFonts + 3));
}

}  // namespace
}  // namespace tarn
