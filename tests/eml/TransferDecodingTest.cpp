#include "eml/TransferDecoding.h"

#include <gtest/gtest.h>

#include <cctype>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "Tarnbase/PlainKernel.h"
#include "support/KernelUsage.h"
#include "support/Texts.h"

namespace tarn {
namespace {

using namespace std::string_view_literals;

static_assert(TransferQuotedPrintable == 0 && TransferBase64 == 1);
static_assert(Transfer7Bit == 2 && TransferRaw == 3);

// The bytes that the source decodes to. The destination ends where its room does, so that the
// sanitizer sees a byte too many.
std::string Base64(std::string_view source) {
  std::vector<char> destination(source.size() + 2);
  uint64_t capacity = destination.size();
  EXPECT_EQ(DecodeBase64(source, destination.data(), capacity), StatusOk);
  return std::string(destination.data(), capacity);
}

std::string Base64InPlace(std::string_view source) {
  std::vector<char> block(source.begin(), source.end());
  block.resize(source.size() + 2);
  uint64_t capacity = block.size();
  EXPECT_EQ(DecodeBase64({block.data(), source.size()}, block.data(), capacity), StatusOk);
  return std::string(block.data(), capacity);
}

std::string Quoted(std::string_view source, bool underscoreIsBlank = false,
                   std::string_view after = {}) {
  const std::vector<char> exact(source.begin(), source.end());
  std::vector<char> destination(source.size(), '#');
  const uint64_t written = DecodeQuotedPrintable({exact.data(), exact.size()}, destination.data(),
                                                 underscoreIsBlank, after);
  EXPECT_LE(written, source.size());
  return std::string(destination.data(), written);
}

TEST(ClassifyTransferEncoding, KnowsTheEncodingsByTheirBeginning) {
  EXPECT_EQ(ClassifyTransferEncoding("Quoted-Printable"), TransferQuotedPrintable);
  EXPECT_EQ(ClassifyTransferEncoding("qUOTED-pRINTABLE; x"), TransferQuotedPrintable);
  EXPECT_EQ(ClassifyTransferEncoding("base64"), TransferBase64);
  EXPECT_EQ(ClassifyTransferEncoding("BASE64\r\n"), TransferBase64);
  EXPECT_EQ(ClassifyTransferEncoding("8bit"), TransferRaw);
  EXPECT_EQ(ClassifyTransferEncoding("8BIT"), TransferRaw);
  EXPECT_EQ(ClassifyTransferEncoding("7bit"), Transfer7Bit);
  EXPECT_EQ(ClassifyTransferEncoding("7Bitx"), Transfer7Bit);
  EXPECT_EQ(ClassifyTransferEncoding("binary"), TransferRaw);
}

TEST(ClassifyTransferEncoding, IsRawForAllOthers) {
  EXPECT_EQ(ClassifyTransferEncoding(""), TransferRaw);
  EXPECT_EQ(ClassifyTransferEncoding(" base64"), TransferRaw);
  EXPECT_EQ(ClassifyTransferEncoding("base6"), TransferRaw);
  EXPECT_EQ(ClassifyTransferEncoding("\"base64\""), TransferRaw);
  EXPECT_EQ(ClassifyTransferEncoding("quoted-printabl"), TransferRaw);
  EXPECT_EQ(ClassifyTransferEncoding("x-uuencode"), TransferRaw);
  EXPECT_EQ(ClassifyTransferEncoding({}), TransferRaw);
}

TEST(DecodeBase64, DecodesGroups) {
  EXPECT_EQ(Base64("QUJD"), "ABC");
  EXPECT_EQ(Base64("QUJDREVG"), "ABCDEF");
  EXPECT_EQ(Base64("AAAA"), "\0\0\0"sv);
  EXPECT_EQ(Base64("////"), "\xFF\xFF\xFF");
  EXPECT_EQ(Base64("+/+/"), "\xFB\xFF\xBF");
}

TEST(DecodeBase64, KnowsEveryCharacterOfTheAlphabet) {
  EXPECT_EQ(Base64("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/"),
            "\x00\x10\x83\x10\x51\x87\x20\x92\x8B\x30\xD3\x8F\x41\x14\x93\x51\x55\x97\x61\x96\x9B"
            "\x71\xD7\x9F\x82\x18\xA3\x92\x59\xA7\xA2\x9A\xAB\xB2\xDB\xAF\xC3\x1C\xB3\xD3\x5D\xB7"
            "\xE3\x9E\xBB\xF3\xDF\xBF"sv);
}

TEST(DecodeBase64, EndsAtPadding) {
  EXPECT_EQ(Base64("QQ=="), "A");
  EXPECT_EQ(Base64("QUI="), "AB");
  EXPECT_EQ(Base64("QUJDQQ=="), "ABCA");
}

// Lines of 76 columns and any others give what the unbroken text gives.
TEST(DecodeBase64, PassesOverLineEnds) {
  std::string plain;
  std::string expected;
  for (int i = 0; i < 500; ++i) {
    plain += "QUJDREVG";
    expected += "ABCDEF";
  }
  ASSERT_EQ(Base64(plain), expected);
  for (const size_t columns : {1U, 2U, 3U, 4U, 5U, 7U, 60U, 64U, 74U, 75U, 76U, 77U, 1000U}) {
    std::string broken;
    for (size_t i = 0; i < plain.size(); i += columns) broken += plain.substr(i, columns) + "\r\n";
    EXPECT_EQ(Base64(broken), expected) << columns;
    EXPECT_EQ(Base64InPlace(broken), expected) << columns;
  }
}

TEST(DecodeBase64, PassesOverEveryByteOutsideTheAlphabet) {
  const std::string_view alphabet =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/=";
  for (int value = 0; value < 256; ++value) {
    const char byte = static_cast<char>(value);
    if (alphabet.find(byte) != std::string_view::npos) continue;
    for (size_t place = 0; place <= 8; ++place) {
      std::string text = "QUJDREVG";
      text.insert(place, 3, byte);
      ASSERT_EQ(Base64(text), "ABCDEF") << value << " at " << place;
    }
  }
}

// A group that the end cuts off counts "A" for each missing character and gives all three bytes.
TEST(DecodeBase64, FillsTheLastGroupUp) {
  EXPECT_EQ(Base64("QUJDQ"), "ABC\x40\0\0"sv);
  EXPECT_EQ(Base64("QUJDQU"), "ABC\x41\x40\0"sv);
  EXPECT_EQ(Base64("QUJDQUI"), "ABC\x41\x42\0"sv);
  EXPECT_EQ(Base64("Q"), "\x40\0\0"sv);
  EXPECT_EQ(Base64("QQ"), "\x41\0\0"sv);
  EXPECT_EQ(Base64("QQ="), "\x41\xC0");
  EXPECT_EQ(Base64("Q\r\n"), "\x40\0\0"sv);
}

TEST(DecodeBase64, GivesSpareBytesForMissingPadding) {
  EXPECT_EQ(Base64("QQ="), "A\xC0");
  EXPECT_EQ(Base64("QQ"), "A\0\0"sv);
  EXPECT_EQ(Base64("QUI"), "AB\0"sv);
}

// "=" has the value of "/", and only in the third and fourth place does it keep a byte back.
TEST(DecodeBase64, GoesOnAfterPadding) {
  EXPECT_EQ(Base64("QQ==QUJD"), "AABC");
  EXPECT_EQ(Base64("QUI=QUJD"), "ABABC");
  EXPECT_EQ(Base64("QQ=QUJD="), "\x41\xD0\x50\x90");
  EXPECT_EQ(Base64("=QUJ"), "\xFD\x05\x09");
  EXPECT_EQ(Base64("Q=JD"), "\x43\xF2\x43");
  EXPECT_EQ(Base64("QU=D"), "\x41\xC3");
  EXPECT_EQ(Base64("===="), "\xFF");
  EXPECT_EQ(Base64("===A"), "\xFF\xC0");
  EXPECT_EQ(Base64("="), "\xFC\0\0"sv);
  EXPECT_EQ(Base64("=="), "\xFF\xF0\0"sv);
  EXPECT_EQ(Base64("==="), "\xFF\xC0"sv);
}

TEST(DecodeBase64, IsNothingWithoutACharacterOfTheAlphabet) {
  EXPECT_EQ(Base64("\r\n"), "");
  EXPECT_EQ(Base64(" \t-_.\0\xFF"sv), "");
}

// All groups of four out of one character of each kind, by the rule written out once more.
TEST(DecodeBase64, TreatsEveryMixtureByTheRule) {
  const std::string_view kinds = "Ab9+/=\n!";
  const auto value = [](char c) -> unsigned {
    if (c >= 'A' && c <= 'Z') return static_cast<unsigned>(c - 'A');
    if (c >= 'a' && c <= 'z') return static_cast<unsigned>(c - 'a') + 26;
    if (c >= '0' && c <= '9') return static_cast<unsigned>(c - '0') + 52;
    return c == '+' ? 62 : 63;
  };
  for (size_t number = 0; number < 8 * 8 * 8 * 8 * 8 * 8; ++number) {
    std::string text;
    for (size_t digits = number, i = 0; i < 6; ++i, digits /= 8) text += kinds[digits % 8];
    std::string kept;
    for (const char c : text) {
      if (c != '\n' && c != '!') kept += c;
    }
    std::string expected;
    kept.resize((kept.size() + 3) / 4 * 4, 'A');
    for (size_t i = 0; i < kept.size(); i += 4) {
      const unsigned a = value(kept[i]), b = value(kept[i + 1]);
      const unsigned c = value(kept[i + 2]), d = value(kept[i + 3]);
      expected += static_cast<char>(a << 2 | b >> 4);
      if (kept[i + 2] != '=') expected += static_cast<char>(b << 4 | c >> 2);
      if (kept[i + 3] != '=') expected += static_cast<char>(c << 6 | d);
    }
    ASSERT_EQ(Base64(text), expected) << text;
  }
}

TEST(DecodeBase64, RefusesNullPointersAndSmallRoom) {
  char block[4] = {'Q', 'U', 'J', 'D'};
  uint64_t capacity = 4;
  EXPECT_EQ(DecodeBase64({}, block, capacity), StatusBadArgument);
  EXPECT_EQ(DecodeBase64("QUJD", nullptr, capacity), StatusBadArgument);
  EXPECT_EQ(capacity, 4U);
  capacity = 3;
  EXPECT_EQ(DecodeBase64("QUJD", block, capacity), StatusBadArgument);
  EXPECT_EQ(capacity, 3U);
  EXPECT_EQ(std::string_view(block, 4), "QUJD");
}

TEST(DecodeBase64, RefusesLengthZero) {
  char block[4] = {};
  uint64_t capacity = 4;
  EXPECT_EQ(DecodeBase64("", block, capacity), StatusOutOfMemory);
  EXPECT_EQ(capacity, 4U);
}

// A cut last group can give more bytes than the text has; a room of the text's length takes what
// fits.
TEST(DecodeBase64, StaysInsideTheRoom) {
  const auto decode = [](std::string_view source) {
    std::vector<char> destination(source.size());
    uint64_t capacity = source.size();
    EXPECT_EQ(DecodeBase64(source, destination.data(), capacity), StatusOk);
    return std::string(destination.data(), capacity);
  };
  EXPECT_EQ(decode("Q"), "\x40");
  EXPECT_EQ(decode("QU"), "\x41\x40");
  EXPECT_EQ(decode("QUJDQ"), "ABC\x40\0"sv);
  EXPECT_EQ(decode("QUJDQUI"), "ABC\x41\x42\0"sv);
}

TEST(DecodeQuotedPrintable, CopiesPlainText) {
  EXPECT_EQ(Quoted(""), "");
  EXPECT_EQ(Quoted("a"), "a");
  EXPECT_EQ(Quoted("Line\r\nLine \t\r\n_\0\xFF"sv), "Line\r\nLine \t\r\n_\0\xFF"sv);
}

TEST(DecodeQuotedPrintable, DecodesEscapes) {
  EXPECT_EQ(Quoted("=41"), "A");
  EXPECT_EQ(Quoted("=3D=3d"), "==");
  EXPECT_EQ(Quoted("=C3=BCber"),
            "\xC3\xBC"
            "ber");
  EXPECT_EQ(Quoted("=00"), "\0"sv);
  EXPECT_EQ(Quoted("=FF=ff=Ff"), "\xFF\xFF\xFF");
}

TEST(DecodeQuotedPrintable, DropsSoftLineBreaks) {
  EXPECT_EQ(Quoted("ab=\r\ncd"), "abcd");
  EXPECT_EQ(Quoted("=\r\n"), "");
  EXPECT_EQ(Quoted("=\r\n=\r\n=41=\r\n"), "A");
}

TEST(DecodeQuotedPrintable, KeepsBlanksAtTheEndsOfLines) {
  EXPECT_EQ(Quoted("ab \t\r\ncd "), "ab \t\r\ncd ");
  // A soft line break with a blank before its CR is an escape of blank and CR.
  EXPECT_EQ(Quoted("ab= \r\ncd"), "ab\r\ncd");
}

TEST(DecodeQuotedPrintable, ReadsWhatIsAfterTheSource) {
  EXPECT_EQ(Quoted("a="), "a\0"sv);
  EXPECT_EQ(Quoted("a=4"), "a\x40"sv);
  EXPECT_EQ(Quoted("a=x"), "a\x80"sv);
  // "?" is 63 and no digit, "=" is none either: a zero byte.
  EXPECT_EQ(Quoted("a=", true, "?="), "a\0"sv);
  EXPECT_EQ(Quoted("a=4", true, "?="), "a\x7F"sv);
  EXPECT_EQ(Quoted("a=x", true, "?="), "a\0x"sv);
  EXPECT_EQ(Quoted("a=", false, "\r\n"), "a");
  EXPECT_EQ(Quoted("a=\r", false, "\n"), "a");
  EXPECT_EQ(Quoted("a=", false, "4"), "a\x40"sv);
}

TEST(DecodeQuotedPrintable, TurnsUnderscoresIntoBlanksOnDemand) {
  EXPECT_EQ(Quoted("a_b__c=5F_", true), "a b  c_ ");
  EXPECT_EQ(Quoted("a_b__c=5F_", false), "a_b__c__");
  EXPECT_EQ(Quoted("0123456789_0123456789_", true), "0123456789 0123456789 ");
  // After "=" it is a byte like any other.
  EXPECT_EQ(Quoted("=_1", true), "\xF1");
}

// The rule once more, a byte at a time, with signed values.
std::string QuotedByTheRule(const std::string& source) {
  const std::string raw = source + std::string(2, '\0');
  const auto value = [](char c) -> int {
    const std::string_view digits = "0123456789ABCDEF";
    const size_t digit = digits.find(static_cast<char>(std::toupper(c & 0x7F)));
    return c >= 0 && digit != std::string_view::npos ? static_cast<int>(digit)
                                                     : static_cast<signed char>(c);
  };
  std::string out;
  for (size_t i = 0; i < source.size(); ++i) {
    if (raw[i] != '=') {
      out += raw[i];
    } else if (raw[i + 1] == '\r' && raw[i + 2] == '\n') {
      i += 2;
    } else if (value(raw[i + 1]) <= 15 || value(raw[i + 2]) <= 15) {
      out += static_cast<char>(value(raw[i + 1]) * 16 + value(raw[i + 2]));
      i += 2;
    } else {
      out += '\0';
    }
  }
  return out;
}

TEST(DecodeQuotedPrintable, TreatsEveryPairByTheRule) {
  for (int first = 0; first < 256; ++first) {
    for (int second = 0; second < 256; ++second) {
      std::string source = "<=..>";
      source[2] = static_cast<char>(first);
      source[3] = static_cast<char>(second);
      ASSERT_EQ(Quoted(source), QuotedByTheRule(source)) << first << ' ' << second;
    }
  }
}

// Named pairs of the rule above, with the bytes written out.
TEST(DecodeQuotedPrintable, AcceptsOneValidDigit) {
  EXPECT_EQ(Quoted("=G0"), "\x70");
  EXPECT_EQ(Quoted("=0G"), "\x47");
  EXPECT_EQ(Quoted("=GG"), "\0GG"sv);
  EXPECT_EQ(Quoted("=\nA"), "\xAA");
  EXPECT_EQ(Quoted("=\nx"), "\x18");
  EXPECT_EQ(Quoted("=\r\r"), "\xDD");
  EXPECT_EQ(Quoted("=\x80\x7F"), "\x7F");
  EXPECT_EQ(Quoted("=\x7F\x80"), "\x70");
  EXPECT_EQ(Quoted("=zz=41"), "\0zzA"sv);
  EXPECT_EQ(Quoted("=  "), "\0  "sv);
}

TEST(DecodeQuotedPrintable, FindsEscapesAtEveryPlace) {
  for (size_t before = 0; before < 40; ++before) {
    for (size_t after = 0; after < 40; ++after) {
      const std::string left(before, 'l');
      const std::string right(after, 'r');
      ASSERT_EQ(Quoted(left + "=41" + right), left + "A" + right);
      ASSERT_EQ(Quoted(left + "=\r\n" + right), left + right);
      ASSERT_EQ(Quoted(left + "_" + right, true), left + " " + right);
      ASSERT_EQ(Quoted(left + "_" + right, false), left + "_" + right);
    }
  }
}

// Bytes next to "=" and "_" in value, and those with the top bit, are plain.
TEST(DecodeQuotedPrintable, TakesNoOtherByteForAnEscape) {
  std::string text;
  for (int value = 0; value < 256; ++value) {
    if (value != '=') text += static_cast<char>(value);
  }
  EXPECT_EQ(Quoted(text), text);
  std::string blank = text;
  blank[blank.find('_')] = ' ';
  EXPECT_EQ(Quoted(text, true), blank);
  EXPECT_EQ(Quoted("<<<<<<<<>>>>>>>>\xBD\xBD\xBD\xBD\xBD\xBD\xBD\xBD"),
            "<<<<<<<<>>>>>>>>\xBD\xBD\xBD\xBD\xBD\xBD\xBD\xBD");
}

// Nothing of the source stays after what was written: callers have zeroed the block.
TEST(DecodeQuotedPrintable, LeavesZerosAfterTheText) {
  std::vector<char> destination(40, '\0');
  const std::string_view source = "ab=\r\ncdefghijklmnop=\r\n";
  ASSERT_EQ(DecodeQuotedPrintable(source, destination.data(), false, {}), 16U);
  EXPECT_EQ(std::string_view(destination.data(), 18), "abcdefghijklmnop\0\0"sv);
}

uint64_t LiveBytes() { return test::Usage().liveBytes; }

class PartContent : public ::testing::Test {
 protected:
  Status decode(TransferEncoding encoding, std::string_view raw) {
    file_ = test::Sized(raw);
    part_.raw = file_.view();
    part_.encoding = encoding;
    return DecodePartContent(part_);
  }

  // The decoded bytes and the terminator after them.
  std::string decoded() const { return {part_.decoded.data(), part_.decoded.length() + 1}; }

  SizedBytes file_;  // a block of its own for the raw content, so that reads past it are found out
  EmlPart part_;
};

TEST_F(PartContent, CopiesRawContent) {
  ASSERT_EQ(decode(TransferRaw, "a=41\0\xFF\r\n"sv), StatusOk);
  EXPECT_EQ(part_.decoded.length(), 8U);
  EXPECT_EQ(decoded(), "a=41\0\xFF\r\n\0"sv);
  ASSERT_EQ(decode(TransferRaw, ""), StatusOk);
  EXPECT_EQ(part_.decoded.length(), 0U);
  EXPECT_EQ(decoded(), "\0"sv);
}

TEST_F(PartContent, CopiesContentOfAnUnknownEncoding) {
  ASSERT_EQ(decode(static_cast<TransferEncoding>(17), "=41"), StatusOk);
  EXPECT_EQ(decoded(), "=41\0"sv);
}

TEST_F(PartContent, MarksSevenBitContent) {
  ASSERT_EQ(decode(Transfer7Bit, "text"), StatusOk);
  EXPECT_EQ(part_.decoded.length(), 7U);
  EXPECT_EQ(decoded(), "+/vtext\0"sv);
  ASSERT_EQ(decode(Transfer7Bit, ""), StatusOk);
  EXPECT_EQ(part_.decoded.length(), 3U);
  EXPECT_EQ(decoded(), "+/v\0"sv);
}

TEST_F(PartContent, DecodesQuotedPrintable) {
  ASSERT_EQ(decode(TransferQuotedPrintable, "a=41=\r\nb_="), StatusOk);
  EXPECT_EQ(part_.decoded.length(), 5U);
  EXPECT_EQ(decoded(), "aAb_\0\0"sv);
  ASSERT_EQ(decode(TransferQuotedPrintable, ""), StatusOk);
  EXPECT_EQ(part_.decoded.length(), 0U);
  EXPECT_EQ(decoded(), "\0"sv);
}

TEST_F(PartContent, DecodesBase64) {
  ASSERT_EQ(decode(TransferBase64, "QUJD\r\nQQ==\r\n"), StatusOk);
  EXPECT_EQ(part_.decoded.length(), 4U);
  EXPECT_EQ(decoded(), "ABCA\0"sv);
}

// Three bytes out of one character: more than the content has.
TEST_F(PartContent, HasRoomForALastGroupThatIsCutShort) {
  ASSERT_EQ(decode(TransferBase64, "Q"), StatusOk);
  EXPECT_EQ(decoded(), "\x40\0\0\0"sv);
  ASSERT_EQ(decode(TransferBase64, "QQ"), StatusOk);
  EXPECT_EQ(decoded(), "\x41\0\0\0"sv);
  ASSERT_EQ(decode(TransferBase64, "QUJDQ"), StatusOk);
  EXPECT_EQ(decoded(), "ABC\x40\0\0\0"sv);
}

TEST_F(PartContent, IsEmptyWithoutACharacterOfTheAlphabet) {
  ASSERT_EQ(decode(TransferBase64, "\r\n"), StatusOk);
  EXPECT_EQ(part_.decoded.length(), 0U);
  EXPECT_EQ(decoded(), "\0"sv);
}

TEST_F(PartContent, FailsForEmptyBase64WithAnEmptyText) {
  EXPECT_EQ(decode(TransferBase64, ""), StatusOutOfMemory);
  ASSERT_TRUE(part_.decoded.hasBlock());
  EXPECT_EQ(part_.decoded.length(), 0U);
  EXPECT_EQ(decoded(), "\0"sv);
}

TEST_F(PartContent, RefusesANullRaw) {
  for (const TransferEncoding encoding :
       {TransferQuotedPrintable, TransferBase64, Transfer7Bit, TransferRaw}) {
    part_.encoding = encoding;
    EXPECT_EQ(DecodePartContent(part_), StatusBadArgument);
    EXPECT_EQ(EnsureDecoded(part_), StatusNullArgument);
    EXPECT_FALSE(part_.decoded.hasBlock());
  }
}

// The block's length is counted beforehand; the text must fit it, whatever the content is.
TEST_F(PartContent, GivesWhatTheDecodersGiveWithRoomToSpare) {
  std::mt19937 random(20261122);
  const std::string_view alphabet = "AQz09+/===\r\n \xFFG4a";
  for (int round = 0; round < 20000; ++round) {
    std::string raw(random() % 40, '\0');
    for (char& byte : raw) byte = alphabet[random() % (random() % alphabet.size() + 1)];
    std::string expected(raw.size() + 8, '\0');
    uint64_t room = expected.size();
    if (raw.empty()) room = 0;
    if (!raw.empty()) {
      ASSERT_EQ(DecodeBase64(raw, expected.data(), room), StatusOk);
      ASSERT_EQ(decode(TransferBase64, raw), StatusOk);
      ASSERT_EQ(decoded(), expected.substr(0, room) + '\0') << ::testing::PrintToString(raw);
    }
    expected.assign(raw.size() + 8, '\0');
    room = DecodeQuotedPrintable(raw, expected.data(), false, {});
    ASSERT_EQ(decode(TransferQuotedPrintable, raw), StatusOk);
    ASSERT_EQ(decoded(), expected.substr(0, room) + '\0') << ::testing::PrintToString(raw);
  }
}

TEST_F(PartContent, ReplacesTheDecodedTextOfAnEarlierPart) {
  ASSERT_EQ(decode(TransferRaw, "first"), StatusOk);
  ASSERT_EQ(decode(TransferRaw, "2nd"), StatusOk);
  EXPECT_EQ(decoded(), "2nd\0"sv);
}

// Groups that are padded each have room for three bytes and fill one.
TEST_F(PartContent, GivesBackRoomThatBase64DoesNotFill) {
  std::string raw;
  for (int i = 0; i < 10000; ++i) raw += "QQ==";
  const std::string expected = std::string(10000, 'A') + '\0';
  const uint64_t before = LiveBytes();
  ASSERT_EQ(decode(TransferBase64, raw), StatusOk);
  EXPECT_TRUE(decoded() == expected);
  EXPECT_LE(LiveBytes() - before, raw.size() + expected.size() + 100);

  part_.decoded.release();
  file_.release();
  PlainKernelFailAt(PlainKernelFaultMemory, 3);  // after those of the content and its room
  EXPECT_EQ(decode(TransferBase64, raw), StatusOk);
  PlainKernelFailAt(PlainKernelFaultMemory, 0);
  EXPECT_TRUE(decoded() == expected);
  EXPECT_GE(LiveBytes() - before, raw.size() + 3 * 10000) << "a block that cannot shrink stays";
}

TEST_F(PartContent, ReportsMissingMemory) {
  for (const TransferEncoding encoding :
       {TransferQuotedPrintable, TransferBase64, Transfer7Bit, TransferRaw}) {
    part_.raw = "QUJD";
    part_.encoding = encoding;
    part_.decoded = test::Sized("old");
    PlainKernelFailAt(PlainKernelFaultMemory, 1);
    EXPECT_EQ(DecodePartContent(part_), StatusOutOfMemory);
    EXPECT_FALSE(part_.decoded.hasBlock());
    EXPECT_EQ(part_.decoded.length(), 0U);
    PlainKernelFailAt(PlainKernelFaultMemory, 2);
    EXPECT_EQ(DecodePartContent(part_), StatusOk) << "more than one allocation";
    PlainKernelFailAt(PlainKernelFaultMemory, 0);
    part_.decoded.release();
  }
}

}  // namespace
}  // namespace tarn
