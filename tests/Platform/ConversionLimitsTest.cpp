// What both conversions refuse, and properties that hold for any input.
#include <gtest/gtest.h>

#include <array>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "CodePageText.h"

namespace tarn::platform {
namespace {

constexpr std::array<uint32_t, 47> kTablePages = {
    437,   737,   775,   850,   852,   855,   857,   860,   861,   862,   863,   865,
    866,   874,   932,   936,   949,   950,   1250,  1251,  1252,  1253,  1254,  1255,
    1256,  1257,  1258,  1361,  10000, 10006, 10007, 10029, 10081, 20127, 20866, 21866,
    28591, 28592, 28593, 28594, 28595, 28596, 28597, 28598, 28599, 28603, 28605};

bool IsLead(uint32_t page, int byte) {
  switch (page) {
    case 932:
      return (byte >= 0x81 && byte <= 0x9F) || (byte >= 0xE0 && byte <= 0xFC);
    case 936:
    case 949:
    case 950:
      return byte >= 0x81 && byte <= 0xFE;
    case 1361:
      return (byte >= 0x84 && byte <= 0xD3) || (byte >= 0xD8 && byte <= 0xDE) ||
             (byte >= 0xE0 && byte <= 0xF9);
    default:
      return false;
  }
}

TEST(ConversionLimits, RefuseAnUnknownPage) {
  for (const uint32_t page : {0u, 1u, 2u, 3u, 4u, 41u, 43u, 438u, 931u, 933u, 1200u, 1201u, 1259u,
                              28590u, 28606u, 65002u, 0xFFFFFFFFu}) {
    char16_t unit = u'#';
    char byte = '#';
    EXPECT_EQ(BytesToUtf16(page, "x", {&unit, 1}), 0u) << page;
    EXPECT_EQ(BytesToUtf16(page, "x", {}), 0u) << page;
    EXPECT_EQ(Utf16ToBytes(page, u"x", {&byte, 1}).size, 0u) << page;
    EXPECT_FALSE(IsCodePageSupported(page)) << page;
    EXPECT_EQ(unit, u'#');
    EXPECT_EQ(byte, '#');
  }
}

TEST(ConversionLimits, KnowTheirPages) {
  for (const uint32_t page : kTablePages) EXPECT_TRUE(IsCodePageSupported(page)) << page;
  EXPECT_TRUE(IsCodePageSupported(42));
  EXPECT_TRUE(IsCodePageSupported(65001));
}

TEST(ConversionLimits, RefuseAnEmptySource) {
  for (const uint32_t page : {1252u, 932u, 42u, 65001u}) {
    char16_t unit = u'#';
    char byte = '#';
    EXPECT_EQ(BytesToUtf16(page, {}, {&unit, 1}), 0u);
    EXPECT_EQ(BytesToUtf16(page, "", {}), 0u);
    EXPECT_EQ(Utf16ToBytes(page, {}, {&byte, 1}).size, 0u);
    EXPECT_EQ(unit, u'#');
    EXPECT_EQ(byte, '#');
  }
}

TEST(ConversionLimits, RefuseASourceBeyond32Bits) {
  // Refused by its size alone: only the first byte exists.
  const char byte = 'x';
  const char16_t unit = u'x';
  const size_t beyond = size_t{INT32_MAX} + 1;
  EXPECT_EQ(BytesToUtf16(1252, std::string_view(&byte, beyond), {}), 0u);
  EXPECT_EQ(Utf16ToBytes(1252, std::u16string_view(&unit, beyond), {}).size, 0u);
}

TEST(ConversionLimits, FillADestinationOfTheExactSize) {
  std::array<char16_t, 4> units{};
  units.fill(u'#');
  EXPECT_EQ(BytesToUtf16(932, "a\x82\xA0z", {}), 3u);
  EXPECT_EQ(BytesToUtf16(932, "a\x82\xA0z", {units.data(), 3}), 3u);
  EXPECT_EQ(units, (std::array<char16_t, 4>{u'a', u'\u3042', u'z', u'#'}));
  units.fill(u'#');
  EXPECT_EQ(BytesToUtf16(932, "a\x82\xA0z", {units.data(), 2}), 0u);
  EXPECT_EQ(units[2], u'#');
  units.fill(u'#');
  EXPECT_EQ(BytesToUtf16(42, "abc", {units.data(), 2}), 0u);
  EXPECT_EQ(BytesToUtf16(1252, "abc", {units.data(), 2}), 0u);
  EXPECT_EQ(units[2], u'#');

  std::array<char, 5> bytes{};
  bytes.fill('#');
  EXPECT_EQ(Utf16ToBytes(932, u"a\u3042z", {bytes.data(), 4}).size, 4u);
  EXPECT_EQ(bytes, (std::array<char, 5>{'a', '\x82', '\xA0', 'z', '#'}));
  bytes.fill('#');
  EXPECT_EQ(Utf16ToBytes(932, u"a\u3042z", {bytes.data(), 2}).size, 0u);
  EXPECT_EQ(bytes[2], '#');
  bytes.fill('#');
  EXPECT_EQ(Utf16ToBytes(42, u"\uF041\uF042", {bytes.data(), 1}).size, 0u);
  EXPECT_EQ(bytes[1], '#');
}

// Whatever a byte or pair gives, other than the default, leads back to something that gives the
// same.
TEST(ConversionProperties, EveryMappedCodeOfAPageComesBack) {
  for (const uint32_t page : kTablePages) {
    size_t mapped = 0;
    const auto check = [&](const std::string& code) {
      const std::u16string unit = Decode(page, code);
      ASSERT_EQ(unit.size(), 1u);
      if (unit == u"?" && code != "?") return;
      if (unit == u"\u30FB" && code != "\x81\x45") return;
      const Encoded back = Encode(page, unit);
      EXPECT_FALSE(back.usedDefault) << page << " U+" << std::hex << int{unit[0]};
      EXPECT_EQ(Decode(page, back.bytes), unit) << page << " U+" << std::hex << int{unit[0]};
      ++mapped;
    };
    for (int byte = 0; byte < 256; ++byte) {
      if (!IsLead(page, byte)) {
        check(OneByte(byte));
        continue;
      }
      for (int trail = 1; trail < 256; ++trail) check(OneByte(byte) + OneByte(trail));
    }
    const size_t expected = page == 932    ? 9700u
                            : page == 936  ? 24000u
                            : page == 949  ? 17300u
                            : page == 950  ? 19800u
                            : page == 1361 ? 17300u
                                           : 250u;
    EXPECT_GT(mapped, expected) << page;
  }
}

// Splits at a place that is not inside a pair, going by the walker's own rule.
size_t BoundaryNear(uint32_t page, const std::string& text, size_t wanted) {
  size_t at = 0;
  while (at < wanted && at < text.size()) {
    const bool pair = IsLead(page, static_cast<uint8_t>(text[at])) && at + 1 < text.size() &&
                      text[at + 1] != '\0';
    at += pair ? 2 : 1;
  }
  return at;
}

TEST(ConversionProperties, RandomBytesDecodeAlikeInOneCallAndInTwo) {
  std::mt19937 random(20260101);
  for (int round = 0; round < 4000; ++round) {
    const uint32_t page = kTablePages[random() % kTablePages.size()];
    std::string text(1 + random() % 60, '\0');
    for (char& byte : text) {
      byte = static_cast<char>(random() % 8 == 0 ? random() % 2 : random() % 256);
    }
    const std::u16string whole = Decode(page, text);
    ASSERT_EQ(whole.size(), BytesToUtf16(page, text, {}));
    const size_t split = BoundaryNear(page, text, random() % text.size());
    EXPECT_EQ(whole, Decode(page, text.substr(0, split)) + Decode(page, text.substr(split)));
  }
}

TEST(ConversionProperties, NothingIsWrittenAfterTheDestination) {
  std::mt19937 random(4711);
  for (int round = 0; round < 4000; ++round) {
    const bool isUtf8 = round % 5 == 0;
    const uint32_t page = isUtf8 ? 65001 : kTablePages[random() % kTablePages.size()];
    std::string bytes(1 + random() % 24, '\0');
    std::u16string units(1 + random() % 24, u'\0');
    for (char& byte : bytes) byte = static_cast<char>(random());
    for (char16_t& unit : units) unit = static_cast<char16_t>(random());

    // Allocated to the exact size, so that the sanitizers watch the ends.
    std::vector<char16_t> unitTarget(1 + random() % 24);
    const size_t neededUnits = BytesToUtf16(page, bytes, {});
    EXPECT_EQ(BytesToUtf16(page, bytes, unitTarget),
              neededUnits <= unitTarget.size() ? neededUnits : 0);

    std::vector<char> byteTarget(1 + random() % 48);
    const size_t neededBytes = Utf16ToBytes(page, units, {}).size;
    EXPECT_EQ(Utf16ToBytes(page, units, byteTarget).size,
              neededBytes <= byteTarget.size() ? neededBytes : 0);
  }
}

TEST(ConversionProperties, ThreadsAgreeOnTablesMadeAtOnce) {
  std::string text;
  for (int lead = 0xA1; lead <= 0xF9; ++lead) text += OneByte(lead) + OneByte(0xA5);
  std::array<std::u16string, 8> decoded;
  std::array<Encoded, 8> encoded;
  std::vector<std::thread> threads;
  for (size_t at = 0; at < decoded.size(); ++at) {
    threads.emplace_back([&text, &decoded, &encoded, at] {
      decoded[at] = Decode(950, text);
      encoded[at] = Encode(950, decoded[at]);
    });
  }
  for (std::thread& thread : threads) thread.join();
  ASSERT_EQ(decoded[0].size(), 89u);
  EXPECT_EQ(decoded[0].substr(0, 2), u"\u2018\u255E");
  for (size_t at = 1; at < decoded.size(); ++at) {
    EXPECT_EQ(decoded[at], decoded[0]);
    EXPECT_EQ(encoded[at], encoded[0]);
  }
}

}  // namespace
}  // namespace tarn::platform
