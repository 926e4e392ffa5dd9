#include "eml/Charsets.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <string_view>

#include "Tarnbase/PlainKernel.h"
#include "support/FaultSweep.h"
#include "support/Texts.h"

namespace tarn {

// Readable failures; also says when two are the same charset.
static bool operator==(const CharsetRef& a, const CharsetRef& b) {
  return a.kind == b.kind && a.codePage == b.codePage;
}
static void PrintTo(const CharsetRef& charset, std::ostream* out) {
  *out << "kind " << charset.kind << ", code page " << charset.codePage;
}

namespace {

using namespace std::string_view_literals;
using test::Sized;

// Two words, the kind first, and kinds of fixed numbers.
static_assert(sizeof(CharsetRef) == 8 && offsetof(CharsetRef, kind) == 0);
static_assert(CharsetNone == 0 && CharsetIso2022Jp == 1 && CharsetLatin1 == 2 && CharsetUtf8 == 3);
static_assert(CharsetAscii == 4 && CharsetWindows == 5 && CharsetGb2312 == 6 && CharsetBig5 == 7);
static_assert(CharsetOther == 8);

constexpr CharsetRef kNone = {CharsetNone, 0};
constexpr CharsetRef kIso2022Jp = {CharsetIso2022Jp, 0};
constexpr CharsetRef kLatin1 = {CharsetLatin1, 0};
constexpr CharsetRef kUtf8 = {CharsetUtf8, 0};
constexpr CharsetRef kAscii = {CharsetAscii, 0};
constexpr CharsetRef kGb2312 = {CharsetGb2312, 0};
constexpr CharsetRef kBig5 = {CharsetBig5, 0};
constexpr CharsetRef kOther = {CharsetOther, 0};

constexpr CharsetRef Windows(uint32_t codePage) { return {CharsetWindows, codePage}; }

std::string Tail(std::string_view source, uint64_t offset, CharsetRef charset) {
  SizedBytes text = Sized(source);
  EXPECT_EQ(ConvertTailToUtf8(text, offset, charset), StatusOk);
  return std::string(text.view());
}

std::string Body(std::string_view source, CharsetRef charset, bool force = true) {
  SizedBytes text = Sized(source);
  EXPECT_EQ(ConvertBodyToUtf8(&text, &charset, force), StatusOk);
  return std::string(text.view());
}

std::string Field(std::string_view source, CharsetRef charset) {
  SizedBytes text = Sized(source);
  RepairFieldToUtf8(text, charset);
  return std::string(text.view());
}

TEST(ClassifyCharset, KnowsNamesThatMustBeWhole) {
  EXPECT_EQ(ClassifyCharset("gb2312"), kGb2312);
  EXPECT_EQ(ClassifyCharset("GB2312"), kGb2312);
  EXPECT_EQ(ClassifyCharset("big5"), kBig5);
  EXPECT_EQ(ClassifyCharset("Big5"), kBig5);
  EXPECT_EQ(ClassifyCharset("iso-8859-1"), kLatin1);
  EXPECT_EQ(ClassifyCharset("ISO-8859-1"), kLatin1);
  EXPECT_EQ(ClassifyCharset("gb2312 "), kOther);
  EXPECT_EQ(ClassifyCharset("gb231"), kOther);
  EXPECT_EQ(ClassifyCharset("big5-hkscs"), kOther);
  EXPECT_EQ(ClassifyCharset("iso-8859-15"), kOther);
  EXPECT_EQ(ClassifyCharset("iso-8859-1 "), kOther);
}

TEST(ClassifyCharset, KnowsNamesByTheirBeginning) {
  EXPECT_EQ(ClassifyCharset("iso-2022-jp"), kIso2022Jp);
  EXPECT_EQ(ClassifyCharset("ISO-2022-JP-2"), kIso2022Jp);
  EXPECT_EQ(ClassifyCharset("us-ascii"), kAscii);
  EXPECT_EQ(ClassifyCharset("US-ASCII; x"), kAscii);
  EXPECT_EQ(ClassifyCharset("utf-8"), kUtf8);
  EXPECT_EQ(ClassifyCharset("UTF-8bom"), kUtf8);
  EXPECT_EQ(ClassifyCharset("iso-2022-j"), kOther);
  EXPECT_EQ(ClassifyCharset("us-asci"), kOther);
  EXPECT_EQ(ClassifyCharset("utf-"), kOther);
}

TEST(ClassifyCharset, ReadsTheCodePageOfAWindowsName) {
  EXPECT_EQ(ClassifyCharset("windows-1251"), Windows(1251));
  EXPECT_EQ(ClassifyCharset("WINDOWS-1251"), Windows(1251));
  EXPECT_EQ(ClassifyCharset("windows-874 thai"), Windows(874));
  EXPECT_EQ(ClassifyCharset("windows-0001252"), Windows(1252));
  EXPECT_EQ(ClassifyCharset("windows-12x52"), Windows(12));
  EXPECT_EQ(ClassifyCharset("windows-"), Windows(0));
  EXPECT_EQ(ClassifyCharset("windows-x"), Windows(0));
  EXPECT_EQ(ClassifyCharset("windows-+1252"), Windows(0));
  EXPECT_EQ(ClassifyCharset("windows"), kOther);
}

TEST(ClassifyCharset, KeepsTheCodePageInRange) {
  EXPECT_EQ(ClassifyCharset("windows-2147483647"), Windows(2147483647));
  EXPECT_EQ(ClassifyCharset("windows-2147483648"), Windows(2147483647));
  EXPECT_EQ(ClassifyCharset("windows-4294968548"), Windows(2147483647));
  EXPECT_EQ(ClassifyCharset("windows-" + std::string(1000, '9')), Windows(2147483647));
}

TEST(ClassifyCharset, IsOtherForAllElse) {
  for (const std::string_view name : {""sv, "iso-8859-2"sv, "koi8-r"sv, "shift_jis"sv, "euc-jp"sv,
                                      "gbk"sv, "utf8"sv, " utf-8"sv, "\"utf-8\""sv, "cp1252"sv}) {
    EXPECT_EQ(ClassifyCharset(name), kOther) << name;
  }
  EXPECT_EQ(ClassifyCharset({}), kOther);
}

TEST(ConvertTailToUtf8, ConvertsEachCharset) {
  EXPECT_EQ(Tail("caf\xE9 \x80", 0, kLatin1), "caf\xC3\xA9 \xE2\x82\xAC\0"sv);
  EXPECT_EQ(Tail("\xCF\xF0", 0, Windows(1251)), "\xD0\x9F\xD1\x80\0"sv);
  EXPECT_EQ(Tail("\xC4\xE3", 0, kGb2312), "\xE4\xBD\xA0\0"sv);
  EXPECT_EQ(Tail("\xA7\x41", 0, kBig5), "\xE4\xBD\xA0\0"sv);
  EXPECT_EQ(Tail("plain", 0, kLatin1), "plain\0"sv);
}

TEST(ConvertTailToUtf8, KeepsWhatIsBeforeTheOffset) {
  EXPECT_EQ(Tail("\xE9\xE9\xE9", 2, kLatin1), "\xE9\xE9\xC3\xA9\0"sv);
  EXPECT_EQ(Tail("\xE9\xE9\xE9\0"sv, 1, kLatin1), "\xE9\xC3\xA9\xC3\xA9\0"sv);
}

TEST(ConvertTailToUtf8, DropsOneTrailingNulAndAddsOne) {
  EXPECT_EQ(Tail("\xE9\0"sv, 0, kLatin1), "\xC3\xA9\0"sv);
  EXPECT_EQ(Tail("\xE9\0\0"sv, 0, kLatin1), "\xC3\xA9\0\0"sv);
  EXPECT_EQ(Tail("\0\xE9"sv, 0, kLatin1), "\0\xC3\xA9\0"sv);
}

TEST(ConvertTailToUtf8, DoesNothingFromTheEndOn) {
  EXPECT_EQ(Tail("\xE9", 1, kLatin1), "\xE9");
  EXPECT_EQ(Tail("\xE9", 9, kLatin1), "\xE9");
  EXPECT_EQ(Tail("", 0, kLatin1), "");
  EXPECT_EQ(Tail("\xE9\0"sv, 1, kLatin1), "\xE9\0"sv);
  SizedBytes null;
  EXPECT_EQ(ConvertTailToUtf8(null, 0, kIso2022Jp), StatusOk);
  EXPECT_EQ(null.data(), nullptr);
}

TEST(ConvertTailToUtf8, LeavesCharsetsThatAreNotConverted) {
  for (const CharsetRef charset : {kNone, kUtf8, kAscii, kOther}) {
    EXPECT_EQ(Tail("a\xE9", 0, charset), "a\xE9");
    EXPECT_EQ(Tail("a\xE9\0"sv, 1, charset), "a\xE9\0"sv);
  }
}

TEST(ConvertTailToUtf8, TakesNoMemoryForCharsetsThatAreNotConverted) {
  for (const CharsetRef charset : {kNone, kUtf8, kAscii, kOther}) {
    SizedBytes text = Sized("a\xE9");
    PlainKernelFailAt(PlainKernelFaultMemory, 1);
    EXPECT_EQ(ConvertTailToUtf8(text, 0, charset), StatusOk);
    PlainKernelFailAt(PlainKernelFaultMemory, 0);
    EXPECT_EQ(text.view(), "a\xE9");
  }
}

TEST(ConvertTailToUtf8, LeavesTextOfNumbersThatAreNoCodePage) {
  for (const uint32_t codePage : {0U, 1U, 2U, 3U, 12U, 99999U, 2147483647U}) {
    EXPECT_EQ(Tail("a\xE9\0"sv, 0, Windows(codePage)), "a\xE9\0"sv) << codePage;
  }
}

TEST(ConvertTailToUtf8, LeavesTheDecoderItsLength) {
  EXPECT_EQ(Tail("\33(J\\\33$BF|\33(B\0"sv, 3, kIso2022Jp), "\33(J\\\xE6\x97\xA5");
  EXPECT_EQ(Tail("plain\0"sv, 0, kIso2022Jp), "plain\0"sv);
}

// What the code page does not map comes out as the code page has it.
TEST(ConvertTailToUtf8, TakesWhatTheCodePageGivesForBytesWithoutACharacter) {
  EXPECT_EQ(Tail("\x81", 0, kLatin1), "\xC2\x81\0"sv);
  EXPECT_EQ(Tail("a\xC4", 0, kGb2312), "a?\0"sv);
}

TEST(ConvertTailToUtf8, LeavesTheTextAloneWithoutMemory) {
  const auto round = [](test::FaultedWork& faulted) {
    SizedBytes text = Sized("a\xE9\0"sv);
    const Status status = faulted([&] { return ConvertTailToUtf8(text, 1, kLatin1); });
    EXPECT_EQ(status, faulted.isReached() ? StatusOutOfMemory : StatusOk);
    EXPECT_EQ(text.view(), faulted.isReached() ? "a\xE9\0"sv : "a\xC3\xA9\0"sv);
  };
  EXPECT_EQ(test::SweepFaults(PlainKernelFaultMemory, round, test::FaultKinds::OneAndFrom), 2u);
}

TEST(ConvertTailToUtf8, CutsTheTextWhenUtf8CannotBeMade) {
  SizedBytes text = Sized("ab\xE9");
  PlainKernelFailAt(PlainKernelFaultText, 1);
  EXPECT_EQ(ConvertTailToUtf8(text, 2, kLatin1), StatusPathToUtf8Failed);
  EXPECT_EQ(text.view(), "ab");
  EXPECT_EQ(text.data()[2], '\0');
}

// A text too long for a code page to take stays; only its last byte is looked at.
TEST(ConvertTailToUtf8, LeavesTextBeyondTwoGigabytes) {
  SizedBytes text;
  constexpr uint64_t length = uint64_t{INT32_MAX} + 1;
  ASSERT_TRUE(text.overwrite(length, [](char*) { return length; }));
  text.data()[0] = '\xE9';
  text.data()[length - 1] = 'x';
  PlainKernelUsageRecord before = {};
  PlainKernelUsage(&before);
  EXPECT_EQ(ConvertTailToUtf8(text, 0, kLatin1), StatusOk);
  PlainKernelUsageRecord after = {};
  PlainKernelUsage(&after);
  EXPECT_EQ(after.allocationCalls, before.allocationCalls);
  EXPECT_EQ(text.length(), length);
  EXPECT_EQ(text.data()[0], '\xE9');
}

TEST(ConvertBodyToUtf8, RefusesNullAddresses) {
  SizedBytes text = Sized("a");
  CharsetRef charset = kLatin1;
  EXPECT_EQ(ConvertBodyToUtf8(nullptr, &charset, true), StatusNullArgument);
  EXPECT_EQ(ConvertBodyToUtf8(&text, nullptr, true), StatusNullArgument);
  EXPECT_EQ(ConvertBodyToUtf8(nullptr, nullptr, false), StatusNullArgument);
  SizedBytes null;
  charset = kIso2022Jp;
  EXPECT_EQ(ConvertBodyToUtf8(&null, &charset, false), StatusNullArgument);
}

TEST(ConvertBodyToUtf8, ConvertsOnlyIso2022JpWithoutForce) {
  EXPECT_EQ(Body("iso-2022-jp \33(J\\", kIso2022Jp, false), "UTF-8 \xA5");
  EXPECT_EQ(Body("iso-8859-1 \xE9\0"sv, kLatin1, false), "iso-8859-1 \xE9\0"sv);
  EXPECT_EQ(Body("us-ascii", kAscii, false), "us-ascii");
  EXPECT_EQ(Body("windows-1251 \xE9", Windows(1251), false), "windows-1251 \xE9");
  EXPECT_EQ(Body("gb2312 \xC4\xE3", kGb2312, false), "gb2312 \xC4\xE3");
  EXPECT_EQ(Body("big5 \xA7\x41", kBig5, false), "big5 \xA7\x41");
  EXPECT_EQ(Body("\xE9", kOther, false), "\xE9");
}

TEST(ConvertBodyToUtf8, ConvertsIso2022JpWithForce) {
  EXPECT_EQ(Body("iso-2022-jp \33(J\\", kIso2022Jp), "UTF-8 \xA5");
}

TEST(ConvertBodyToUtf8, LeavesCharsetsWithoutAName) {
  for (const CharsetRef charset : {kNone, kUtf8, kOther}) {
    EXPECT_EQ(Body("utf-8 \xE9\0"sv, charset), "utf-8 \xE9\0"sv);
  }
}

// The name becomes UTF-8, what comes after it is converted, and what comes before it is
// not.
TEST(ConvertBodyToUtf8, ConvertsWhatComesAfterTheDeclaration) {
  EXPECT_EQ(Body("<html>\xE9<meta charset=ISO-8859-1>\xE9</html>\0"sv, kLatin1),
            "<html>\xE9<meta charset=UTF-8>\xC3\xA9</html>");
  EXPECT_EQ(Body("\xE9 windows-1251 \xE9", Windows(1251)), "\xE9 UTF-8 \xD0\xB9");
  EXPECT_EQ(Body("\xC4\xE3 GB2312 \xC4\xE3", kGb2312), "\xC4\xE3 UTF-8 \xE4\xBD\xA0");
  EXPECT_EQ(Body("\xA7\x41 Big5 \xA7\x41", kBig5), "\xA7\x41 UTF-8 \xE4\xBD\xA0");
}

TEST(ConvertBodyToUtf8, ReplacesTheNameWhereItFirstIsAndOnlyThere) {
  EXPECT_EQ(Body("iso-8859-1 \xE9 iso-8859-1", kLatin1), "UTF-8 \xC3\xA9 iso-8859-1");
  EXPECT_EQ(Body("xiso-8859-15", kLatin1), "xUTF-85");
}

TEST(ConvertBodyToUtf8, ConvertsAllWithoutADeclaration) {
  EXPECT_EQ(Body("\xE9 iso-8859-2", kLatin1), "\xC3\xA9 iso-8859-2");
  EXPECT_EQ(Body("\xE9 windows-1252 windows-125", Windows(1251)),
            "\xD0\xB9 windows-1252 windows-125");
}

// The name that is searched is made from the number: leading zeros do not match.
TEST(ConvertBodyToUtf8, SearchesTheNameMadeFromTheNumber) {
  EXPECT_EQ(Body("windows-01251 \xE9", Windows(1251)), "windows-01251 \xD0\xB9");
}

TEST(ConvertBodyToUtf8, ConvertsNothingAfterADeclarationAtTheEnd) {
  EXPECT_EQ(Body("\xE9 gb2312", kGb2312), "\xE9 UTF-8");
  EXPECT_EQ(Body("\xE9 gb2312\0"sv, kGb2312), "\xE9 UTF-8\0"sv);
}

TEST(ConvertBodyToUtf8, LeavesTheLengthWithoutATrailingNul) {
  SizedBytes text = Sized("\xE9\0"sv);
  CharsetRef charset = kLatin1;
  ASSERT_EQ(ConvertBodyToUtf8(&text, &charset, true), StatusOk);
  EXPECT_EQ(text.view(), "\xC3\xA9");
  EXPECT_EQ(text.data()[2], '\0');
}

TEST(ConvertBodyToUtf8, OnlyRenamesAscii) {
  SizedBytes text = Sized("\xE9 charset=US-ASCII; us-ascii \xE9\0"sv);
  CharsetRef charset = kAscii;
  ASSERT_EQ(ConvertBodyToUtf8(&text, &charset, true), StatusOk);
  EXPECT_EQ(text.view(), "\xE9 charset=UTF-8; us-ascii \xE9\0"sv);
  EXPECT_EQ(charset, kUtf8);
}

TEST(ConvertBodyToUtf8, LeavesAsciiWithoutADeclaration) {
  SizedBytes text = Sized("\xE9\0"sv);
  CharsetRef charset = kAscii;
  ASSERT_EQ(ConvertBodyToUtf8(&text, &charset, true), StatusOk);
  EXPECT_EQ(text.view(), "\xE9\0"sv);
  EXPECT_EQ(charset, kAscii);
}

TEST(ConvertBodyToUtf8, KeepsTheCharsetOfAConvertedText) {
  SizedBytes text = Sized("gb2312");
  CharsetRef charset = kGb2312;
  ASSERT_EQ(ConvertBodyToUtf8(&text, &charset, true), StatusOk);
  EXPECT_EQ(charset, kGb2312);
}

TEST(ConvertBodyToUtf8, LeavesTextOfNumbersThatAreNoCodePage) {
  EXPECT_EQ(Body("a\xE9\0"sv, Windows(0)), "a\xE9\0"sv);
  EXPECT_EQ(Body("a\xE9\0"sv, Windows(99999)), "a\xE9\0"sv);
  // A declaration is replaced all the same.
  EXPECT_EQ(Body("windows-99999 \xE9", Windows(99999)), "UTF-8 \xE9");
  EXPECT_EQ(Body("windows-2147483647 \xE9", Windows(2147483647)), "UTF-8 \xE9");
  EXPECT_EQ(Body("windows-4294967295 \xE9", Windows(4294967295)), "UTF-8 \xE9");
}

TEST(ConvertBodyToUtf8, TakesAnEmptyOrAbsentText) {
  EXPECT_EQ(Body("", kLatin1), "");
  EXPECT_EQ(Body("\0"sv, kLatin1), "\0"sv);
  SizedBytes null;
  CharsetRef charset = kLatin1;
  EXPECT_EQ(ConvertBodyToUtf8(&null, &charset, true), StatusOk);
  EXPECT_EQ(null.data(), nullptr);
}

// The name is given back when the conversion it announces has no memory.
TEST(ConvertBodyToUtf8, LeavesTheTextAloneWithoutMemory) {
  const std::string_view source = "\xE9 charset=Windows-1251 \xE9\0"sv;
  const auto round = [&](test::FaultedWork& faulted) {
    SizedBytes text = Sized(source);
    CharsetRef charset = Windows(1251);
    const Status status = faulted([&] { return ConvertBodyToUtf8(&text, &charset, true); });
    EXPECT_EQ(status, faulted.isReached() ? StatusOutOfMemory : StatusOk);
    EXPECT_EQ(text.view(), faulted.isReached() ? source : "\xE9 charset=UTF-8 \xD0\xB9"sv);
  };
  EXPECT_EQ(test::SweepFaults(PlainKernelFaultMemory, round, test::FaultKinds::OneAndFrom), 2u);
}

// "big5" is shorter than "UTF-8": the renaming itself needs memory, and frees the text without.
TEST(ConvertBodyToUtf8, FreesATextThatCannotTakeTheLongerName) {
  const auto round = [](test::FaultedWork& faulted) {
    SizedBytes text = Sized("BIG5 \xA7\x41");
    CharsetRef charset = kBig5;
    const Status status = faulted([&] { return ConvertBodyToUtf8(&text, &charset, true); });
    if (faulted.ordinal() == 1) {
      EXPECT_EQ(status, StatusFailed);
      EXPECT_EQ(text.data(), nullptr);
      EXPECT_EQ(text.length(), 0U);
    } else {
      EXPECT_EQ(status, faulted.isReached() ? StatusOutOfMemory : StatusOk);
      EXPECT_EQ(text.view(), faulted.isReached() ? "BIG5 \xA7\x41" : "UTF-8 \xE4\xBD\xA0");
    }
  };
  EXPECT_EQ(test::SweepFaults(PlainKernelFaultMemory, round), 3u);
}

TEST(ConvertBodyToUtf8, CutsTheTextWhenUtf8CannotBeMade) {
  SizedBytes text = Sized("a iso-8859-1 \xE9");
  CharsetRef charset = kLatin1;
  PlainKernelFailAt(PlainKernelFaultText, 1);
  EXPECT_EQ(ConvertBodyToUtf8(&text, &charset, true), StatusPathToUtf8Failed);
  EXPECT_EQ(text.view(), "a UTF-8");
  EXPECT_EQ(text.data()[7], '\0');
}

TEST(RepairFieldToUtf8, KeepsFieldsOfUtf8Form) {
  for (const std::string_view field :
       {""sv, "plain\0"sv, "\xC3\xA9"sv, "\xE6\x97\xA5\0"sv, "\xF0\x9F\x98\x80"sv,
        // Overlong forms, a surrogate, and a code point beyond the last one.
        "\xC0\x80"sv, "\xE0\x80\x80"sv, "\xED\xA0\x80"sv, "\xF7\xBF\xBF\xBF"sv}) {
    EXPECT_EQ(Field(field, kLatin1), field);
  }
}

TEST(RepairFieldToUtf8, ConvertsFieldsThatAreNotUtf8) {
  // A stray following byte, lead bytes without enough of them, and lead bytes that there are none
  // of.
  EXPECT_EQ(Field("\xA9", kLatin1), "\xC2\xA9");
  EXPECT_EQ(Field("\xE9\0"sv, kLatin1), "\xC3\xA9");
  EXPECT_EQ(Field("\xC3", kLatin1), "\xC3\x83");
  EXPECT_EQ(Field("\xC3x", kLatin1), "\xC3\x83x");
  EXPECT_EQ(Field("\xE6\xA5", kLatin1), "\xC3\xA6\xC2\xA5");
  EXPECT_EQ(Field("\xE6\xA5x", kLatin1), "\xC3\xA6\xC2\xA5x");
  EXPECT_EQ(Field("\xF0\xA5\xA5", kLatin1), "\xC3\xB0\xC2\xA5\xC2\xA5");
  EXPECT_EQ(Field("\xF8\xA5\xA5\xA5\xA5", kLatin1), "\xC3\xB8\xC2\xA5\xC2\xA5\xC2\xA5\xC2\xA5");
  EXPECT_EQ(Field("\xFF", kLatin1), "\xC3\xBF");
  EXPECT_EQ(Field("\xC3\xA9\xE9", kLatin1), "\xC3\x83\xC2\xA9\xC3\xA9");
  EXPECT_EQ(Field("\xCF\xF0\0"sv, Windows(1251)), "\xD0\x9F\xD1\x80");
}

// None of these bytes leads a character, however many following bytes come after it.
TEST(RepairFieldToUtf8, BytesFromF8OnOpenNothing) {
  EXPECT_EQ(Field("\xF8\xA5\xA5\xA5", kLatin1), "\xC3\xB8\xC2\xA5\xC2\xA5\xC2\xA5");
  EXPECT_EQ(Field("\xF9\xA5\xA5\xA5", kLatin1), "\xC3\xB9\xC2\xA5\xC2\xA5\xC2\xA5");
  EXPECT_EQ(Field("\xFA\xA5\xA5\xA5", kLatin1), "\xC3\xBA\xC2\xA5\xC2\xA5\xC2\xA5");
  EXPECT_EQ(Field("\xFB\xA5\xA5\xA5", kLatin1), "\xC3\xBB\xC2\xA5\xC2\xA5\xC2\xA5");
  EXPECT_EQ(Field("\xFC\xA5\xA5\xA5", kLatin1), "\xC3\xBC\xC2\xA5\xC2\xA5\xC2\xA5");
  EXPECT_EQ(Field("\xFD\xA5\xA5\xA5", kLatin1), "\xC3\xBD\xC2\xA5\xC2\xA5\xC2\xA5");
  EXPECT_EQ(Field("\xFE\xA5\xA5\xA5", kLatin1), "\xC3\xBE\xC2\xA5\xC2\xA5\xC2\xA5");
  EXPECT_EQ(Field("\xFF\xA5\xA5\xA5", kLatin1), "\xC3\xBF\xC2\xA5\xC2\xA5\xC2\xA5");
}

TEST(RepairFieldToUtf8, LeavesFieldsOfCharsetsThatAreNotConverted) {
  for (const CharsetRef charset : {kNone, kUtf8, kOther, kAscii, Windows(0)}) {
    EXPECT_EQ(Field("\xE9\0"sv, charset), "\xE9\0"sv);
  }
}

// The field goes the way of a body: a charset's name in it is replaced, too.
TEST(RepairFieldToUtf8, ReplacesTheNameOfTheCharset) {
  EXPECT_EQ(Field("\xE9 iso-8859-1 \xE9", kLatin1), "\xE9 UTF-8 \xC3\xA9");
  EXPECT_EQ(Field("\xE9 \33(J\\\0"sv, kIso2022Jp), "\xE9 \xA5");
}

TEST(RepairFieldToUtf8, LeavesTheCallersCharset) {
  SizedBytes field = Sized("\xE9 us-ascii");
  CharsetRef charset = kAscii;
  RepairFieldToUtf8(field, charset);
  EXPECT_EQ(field.view(), "\xE9 UTF-8");
  EXPECT_EQ(charset, kAscii);
}

TEST(RepairFieldToUtf8, LeavesTheFieldWithoutMemory) {
  const auto round = [](test::FaultedWork& faulted) {
    SizedBytes field = Sized("\xE9\0"sv);
    faulted([&] { RepairFieldToUtf8(field, kLatin1); });
    EXPECT_EQ(field.view() == "\xE9\0"sv, faulted.isReached());
  };
  EXPECT_EQ(test::SweepFaults(PlainKernelFaultMemory, round, test::FaultKinds::OneAndFrom), 2u);
}

TEST(ReplaceWithUtf8Name, OverwritesTheStretch) {
  SizedBytes text = Sized("a us-ascii b");
  EXPECT_EQ(ReplaceWithUtf8Name(text, 2, 8), StatusOk);
  EXPECT_EQ(text.view(), "a UTF-8 b");
  EXPECT_EQ(ReplaceWithUtf8Name(text, 0, 1), StatusOk);
  EXPECT_EQ(text.view(), "UTF-8 UTF-8 b");
  EXPECT_EQ(ReplaceWithUtf8Name(text, 13, 0), StatusOk);
  EXPECT_EQ(text.view(), "UTF-8 UTF-8 bUTF-8");
}

TEST(ReplaceWithUtf8Name, FreesTheTextOnAFailure) {
  SizedBytes text = Sized("big5");
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  EXPECT_EQ(ReplaceWithUtf8Name(text, 0, 4), StatusFailed);
  EXPECT_EQ(text.data(), nullptr);
  EXPECT_EQ(text.length(), 0U);
}

}  // namespace
}  // namespace tarn
