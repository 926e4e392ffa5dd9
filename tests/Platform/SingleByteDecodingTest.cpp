// Single-byte pages: letters, bytes that Windows leaves undefined, and every overlay.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "CodePageText.h"

namespace tarn::platform {
namespace {

TEST(SingleByteDecoding, KeepsAsciiInEveryPage) {
  std::string ascii;
  std::u16string expected;
  for (int byte = 0; byte < 0x80; ++byte) {
    ascii.push_back(static_cast<char>(byte));
    expected.push_back(static_cast<char16_t>(byte));
  }
  for (const uint32_t page :
       {437u,   737u,   775u,   850u,   852u,   855u,   857u,   860u,   861u,   862u,
        863u,   865u,   866u,   874u,   932u,   936u,   949u,   950u,   1250u,  1251u,
        1252u,  1253u,  1254u,  1255u,  1256u,  1257u,  1258u,  1361u,  10000u, 10006u,
        10007u, 10029u, 10081u, 20127u, 20866u, 21866u, 28591u, 28592u, 28593u, 28594u,
        28595u, 28596u, 28597u, 28598u, 28599u, 28603u, 28605u, 65001u}) {
    EXPECT_EQ(Decode(page, ascii), expected) << page;
    EXPECT_EQ(Encode(page, expected), (Encoded{ascii, false})) << page;
  }
}

TEST(SingleByteDecoding, ReadsLettersOfTheAnsiPages) {
  EXPECT_EQ(Decode(1250, "\x8A\xA3\xB9\xF8"), u"\u0160\u0141\u0105\u0159");
  EXPECT_EQ(Decode(1251, "\xCF\xF0\xE8\xA8\xB8"), u"\u041F\u0440\u0438\u0401\u0451");
  EXPECT_EQ(Decode(1252, "\x80\x85\x93\x96\xA0\xE9\xFF"),
            u"\u20AC\u2026\u201C\u2013\u00A0\u00E9\u00FF");
  EXPECT_EQ(Decode(1253, "\xA2\xC1\xF9\xFE"), u"\u0386\u0391\u03C9\u03CE");
  EXPECT_EQ(Decode(1254, "\xD0\xDD\xDE\xF0\xFD\xFE"), u"\u011E\u0130\u015E\u011F\u0131\u015F");
  EXPECT_EQ(Decode(1255, "\xA4\xC0\xE0\xFA\xFD\xFE"), u"\u20AA\u05B0\u05D0\u05EA\u200E\u200F");
  EXPECT_EQ(Decode(1256, "\x81\x8D\xC7\xED\xFF"), u"\u067E\u0686\u0627\u064A\u06D2");
  EXPECT_EQ(Decode(1257, "\xA8\xC0\xD0\xFE"), u"\u00D8\u0104\u0160\u017E");
  EXPECT_EQ(Decode(1258, "\xC3\xCC\xD2\xDE\xFE"), u"\u0102\u0300\u0309\u0303\u20AB");
  EXPECT_EQ(Decode(874, "\x80\xA1\xDF\xFB"), u"\u20AC\u0E01\u0E3F\u0E5B");
  EXPECT_EQ(Decode(437, "\x80\x9B\xB0\xE1\xFF"), u"\u00C7\u00A2\u2591\u00DF\u00A0");
  EXPECT_EQ(Decode(850, "\x84\x9B\xD5\xE6\xF5"), u"\u00E4\u00F8\u0131\u00B5\u00A7");
}

struct ByteRow {
  uint32_t page;
  std::string bytes;
  std::u16string units;
};

class MappedBytes : public testing::TestWithParam<ByteRow> {};

// Each of these bytes decodes to its unit, and the unit encodes to that byte.
TEST_P(MappedBytes, GoBothWays) {
  const ByteRow& row = GetParam();
  ASSERT_EQ(row.bytes.size(), row.units.size());
  EXPECT_EQ(Decode(row.page, row.bytes), row.units);
  for (size_t at = 0; at < row.bytes.size(); ++at) {
    EXPECT_EQ(Decode(row.page, row.bytes.substr(at, 1)), row.units.substr(at, 1)) << at;
    EXPECT_EQ(Encode(row.page, row.units.substr(at, 1)), (Encoded{row.bytes.substr(at, 1), false}))
        << at;
  }
}

std::string NameOfRow(const testing::TestParamInfo<ByteRow>& info) {
  return "Page" + std::to_string(info.param.page) + "Row" + std::to_string(info.index);
}

INSTANTIATE_TEST_SUITE_P(
    UndefinedToControls, MappedBytes,
    testing::Values(
        ByteRow{1250, "\x81\x83\x88\x90\x98", u"\u0081\u0083\u0088\u0090\u0098"},
        ByteRow{1251, "\x98", u"\u0098"},
        ByteRow{1252, "\x81\x8D\x8F\x90\x9D", u"\u0081\u008D\u008F\u0090\u009D"},
        ByteRow{1253, "\x81\x88\x8A\x8C\x8D\x8E\x8F\x90\x98\x9A\x9C\x9D\x9E\x9F",
                u"\u0081\u0088\u008A\u008C\u008D\u008E\u008F\u0090\u0098\u009A\u009C\u009D\u009E"
                u"\u009F"},
        ByteRow{1254, "\x81\x8D\x8E\x8F\x90\x9D\x9E",
                u"\u0081\u008D\u008E\u008F\u0090\u009D\u009E"},
        ByteRow{1255, "\x81\x8A\x8C\x8D\x8E\x8F\x90\x9A\x9C\x9D\x9E\x9F",
                u"\u0081\u008A\u008C\u008D\u008E\u008F\u0090\u009A\u009C\u009D\u009E\u009F"},
        ByteRow{1257, "\x81\x83\x88\x8A\x8C\x90\x98\x9A\x9C\x9F",
                u"\u0081\u0083\u0088\u008A\u008C\u0090\u0098\u009A\u009C\u009F"},
        ByteRow{1258, "\x81\x8A\x8D\x8E\x8F\x90\x9A\x9D\x9E",
                u"\u0081\u008A\u008D\u008E\u008F\u0090\u009A\u009D\u009E"},
        ByteRow{874, "\x81\x84\x86\x90\x98\x9F", u"\u0081\u0084\u0086\u0090\u0098\u009F"}),
    NameOfRow);

INSTANTIATE_TEST_SUITE_P(
    UndefinedToPrivateUnits, MappedBytes,
    testing::Values(
        ByteRow{874, "\xDB\xDC\xDD\xDE\xFC\xFD\xFE\xFF",
                u"\uF8C1\uF8C2\uF8C3\uF8C4\uF8C5\uF8C6\uF8C7\uF8C8"},
        ByteRow{1253, "\xAA\xD2\xFF", u"\uF8F9\uF8FA\uF8FB"},
        ByteRow{1255, "\xD9\xDA\xDB\xDC\xDD\xDE\xDF\xFB\xFC\xFF",
                u"\uF88D\uF88E\uF88F\uF890\uF891\uF892\uF893\uF894\uF895\uF896"},
        ByteRow{1257, "\xA1\xA5", u"\uF8FC\uF8FD"},
        ByteRow{932, "\xA0\xFD\xFE\xFF", u"\uF8F0\uF8F1\uF8F2\uF8F3"},
        ByteRow{936, "\xFF", u"\uF8F5"}, ByteRow{949, "\xFF", u"\uF8F7"},
        ByteRow{950, "\xFF", u"\uF8F8"}, ByteRow{857, "\xD5\xE7\xF2", u"\uF8BB\uF8BC\uF8BD"},
        ByteRow{1361, "\xD4\xD5\xD6\xD7\xDF\xFA\xFB\xFC\xFD\xFE\xFF",
                u"\uF8EC\uF8ED\uF8EE\uF8EF\uF8F0\uF8F1\uF8F2\uF8F3\uF8F4\uF8F5\uF8F6"},
        ByteRow{10006, "\xFF", u"\uF8A0"},
        ByteRow{28593, "\xA5\xAE\xBE\xC3\xD0\xE3\xF0",
                u"\uF7F5\uF7F6\uF7F7\uF7F8\uF7F9\uF7FA\uF7FB"},
        ByteRow{28596, "\xA1\xA3\xA5\xAB\xAE\xBA\xBC\xBE\xC0\xDB\xDF\xF3\xFF",
                u"\uF7C8\uF7CA\uF7CB\uF7D1\uF7D2\uF7DE\uF7DF\uF7E1\uF7E2\uF7E3\uF7E7\uF7E8\uF7F4"},
        ByteRow{28597, "\xA4\xA5\xAA\xAE\xD2\xFF", u"\uF7C2\uF7C3\uF7C4\uF7C5\uF7C6\uF7C7"},
        ByteRow{28598, "\xA1\xBF\xC0\xDE\xFB\xFC\xFD\xFE\xFF",
                u"\uF79C\uF79D\uF79E\uF7BC\uF7BD\uF7BE\uF7BF\uF7C0\uF7C1"}),
    NameOfRow);

INSTANTIATE_TEST_SUITE_P(
    OtherDifferences, MappedBytes,
    testing::Values(
        ByteRow{437, "\x1A\x1C\x7F\xE6", u"\u001A\u001C\u007F\u00B5"},
        ByteRow{850, "\x1A\x1C\x7F", u"\u001A\u001C\u007F"},
        ByteRow{852, "\x1A\x1C\x7F\xAA", u"\u001A\u001C\u007F\u00AC"},
        ByteRow{866, "\x1A\x1C\x7F\x80\xF0", u"\u001A\u001C\u007F\u0410\u0401"},
        ByteRow{932, "\x1A\x1C\x7F\x80", u"\u001A\u001C\u007F\u0080"},
        ByteRow{936, "\x80", u"\u20AC"}, ByteRow{949, "\x80", u"\u0080"},
        ByteRow{950, "\x80", u"\u0080"}, ByteRow{1255, "\xCA", u"\u05BA"},
        ByteRow{1361, "\x80\x83", u"\u0080\u0083"},
        ByteRow{10000, "\xBD\xDB\x8A", u"\u2126\u20AC\u00E4"},
        ByteRow{10006, "\x9C\xAF", u"\u00AD\u0387"},
        ByteRow{10007, "\xA2\xB6\xFF\x80", u"\u00A2\u2202\u00A4\u0410"},
        ByteRow{10029, "\x81\xFF", u"\u0100\u02C7"}, ByteRow{10081, "\xBD\xDA", u"\u2126\u011E"},
        ByteRow{20866, "\xC1\xE1\xB3", u"\u0430\u0410\u0401"},
        ByteRow{21866, "\xAE\xBE\xA4", u"\u045E\u040E\u0454"},
        ByteRow{28591, "\x80\x9F\xA0\xE9\xFF", u"\u0080\u009F\u00A0\u00E9\u00FF"},
        ByteRow{28592, "\xA1\xB1", u"\u0104\u0105"}, ByteRow{28595, "\xB0\xF0", u"\u0410\u2116"},
        ByteRow{28597, "\xA1\xA2\xC1", u"\u02BD\u02BC\u0391"},
        ByteRow{28598, "\xAF\xE0", u"\u203E\u05D0"}, ByteRow{28599, "\xD0\xFD", u"\u011E\u0131"},
        ByteRow{28605, "\xA4\xBE", u"\u20AC\u0178"}),
    NameOfRow);

TEST(SingleByteDecoding, DropsTheHighBitInUsAscii) {
  EXPECT_EQ(Decode(20127, Bytes("\xC1\xE2\x80\xFF")), Units(u"Ab\0\x7F"));
  EXPECT_EQ(Encode(20127, Units(u"\0Ab")), (Encoded{Bytes("\0Ab"), false}));
}

TEST(SingleByteDecoding, TakesEveryByteOfItsPage) {
  // What an overlay took from a byte does not encode to that byte any more.
  EXPECT_EQ(Encode(1253, u"\u00AA"), (Encoded{"?", true}));
  EXPECT_EQ(Encode(10000, u"\u03A9"), (Encoded{"?", true}));
  EXPECT_EQ(Encode(10006, u"\u20AC\u00B7"), (Encoded{"??", true}));
  EXPECT_EQ(Encode(10007, u"\u0490\u0491\u20AC"), (Encoded{"???", true}));
  EXPECT_EQ(Encode(28597, u"\u037A"), (Encoded{"?", true}));
  // The Greek letter stays an approximation of the micro sign.
  EXPECT_EQ(Encode(437, u"\u03BC"), (Encoded{"\xE6", false}));
}

}  // namespace
}  // namespace tarn::platform
