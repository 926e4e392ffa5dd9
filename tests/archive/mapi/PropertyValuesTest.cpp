#include "archive/mapi/PropertyValues.h"

#include <gtest/gtest.h>

#include "archive/mapi/FakeMessage.h"

namespace tarn::archive::mapi {
namespace {

constexpr uint16_t kId = 0x6600;

TEST(TextCodePageTest, IsTheMessagesBeforeTheInternets) {
  FakeProperties properties;
  FakeSet set(properties);
  EXPECT_EQ(TextCodePage(set), std::nullopt);
  properties.integer(kTagInternetCodepage, 28592);
  EXPECT_EQ(TextCodePage(set), 28592u);
  properties.integer(kTagMessageCodepage, 1251);
  EXPECT_EQ(TextCodePage(set), 1251u);
}

TEST(TextCodePageTest, PassesOverWhatIsNoPageOf8BitTexts) {
  for (const uint32_t number : {0u, 1200u, 1201u, 3u, 4711u, 0x10001u, 0xFFFFFFFFu}) {
    FakeProperties properties;
    properties.integer(kTagMessageCodepage, number).integer(kTagInternetCodepage, 932);
    FakeSet set(properties);
    EXPECT_EQ(TextCodePage(set), 932u) << number;
  }
}

TEST(Utf8OfText8Test, ReadsCodePages) {
  EXPECT_EQ(Utf8OfText8("", 1252), "");
  EXPECT_EQ(Utf8OfText8("caf\xE9 \x80", 1252), "café €");
  EXPECT_EQ(Utf8OfText8("\xCF\xF0\xE8", 1251), "При");
  EXPECT_EQ(Utf8OfText8("\x93\xFA\x96\x7B", 932), "日本");
  EXPECT_EQ(Utf8OfText8("caf\xC3\xA9", 65001), "café");
}

TEST(Utf8OfText8Test, ReadsPagesThatSwitchByEscapes) {
  EXPECT_EQ(Utf8OfText8("\x1B$BF|K\\\x1B(B", 50220), "日本");
  EXPECT_EQ(Utf8OfText8("\xC6\xFC\xCB\xDC", 51932), "日本");
}

TEST(Utf8OfText8Test, WithoutAPageIsUtf8WhereItIsValid) {
  EXPECT_EQ(Utf8OfText8("caf\xC3\xA9", std::nullopt), "café");
  EXPECT_EQ(Utf8OfText8("caf\xE9", std::nullopt), "café");
  EXPECT_EQ(Utf8OfText8("\xC3", std::nullopt), "Ã");
}

TEST(Utf8OfText8Test, DropsFinalNuls) {
  EXPECT_EQ(Utf8OfText8(std::string_view("a\0b\0\0", 5), 1252), std::string("a\0b", 3));
  EXPECT_EQ(Utf8OfText8(std::string_view("\0", 1), 1252), "");
}

TEST(Utf8OfText16Test, ReadsUnits) {
  EXPECT_EQ(Utf8OfText16(Wide(u"caf\u00E9 \u20AC \U0001F600")), "café € 😀");
  EXPECT_EQ(Utf8OfText16(""), "");
  EXPECT_EQ(Utf8OfText16(std::string("a\0\0\0", 4)), "a");
  EXPECT_EQ(Utf8OfText16(std::string("a\0b", 3)), "a");
  EXPECT_EQ(Utf8OfText16(std::string("\x3D\xD8", 2) + Wide(u"x")), "\uFFFDx");
}

TEST(PropertyValuesTest, ReadsNumbers) {
  FakeProperties properties;
  properties.put(1, kTypeInteger16, LittleEndian(0xFFFE, 2))
      .integer(2, 0xFFFFFFFF)
      .put(3, kTypeInteger64, LittleEndian(0x123456789A, 8))
      .put(4, kTypeFloat64, LittleEndian(0x3FF8000000000000, 8))
      .put(5, kTypeFloat32, LittleEndian(0xC0200000, 4));
  FakeSet set(properties);
  PropertyValues values(set, std::nullopt);
  EXPECT_EQ(values.integer(1), -2);
  EXPECT_EQ(values.integer(2), -1);
  EXPECT_EQ(values.integer(3), 0x123456789A);
  EXPECT_EQ(values.real(4), 1.5);
  EXPECT_EQ(values.real(5), -2.5);
  EXPECT_EQ(values.integer(4), std::nullopt);
  EXPECT_EQ(values.real(1), std::nullopt);
}

TEST(PropertyValuesTest, ReadsOtherTypes) {
  FakeProperties properties;
  properties.boolean(1, true)
      .boolean(2, false)
      .time(3, 1714559696)
      .binary(4, "bytes")
      .put(5, kTypeGuid, "0123456789abcdef");
  FakeSet set(properties);
  PropertyValues values(set, std::nullopt);
  EXPECT_EQ(values.boolean(1), true);
  EXPECT_EQ(values.boolean(2), false);
  EXPECT_EQ(values.time(3), (Moment{1714559696, std::nullopt}));
  EXPECT_EQ(values.binary(4), "bytes");
  const std::array<uint8_t, 16> guid = {'0', '1', '2', '3', '4', '5', '6', '7',
                                        '8', '9', 'a', 'b', 'c', 'd', 'e', 'f'};
  EXPECT_EQ(values.guid(5), guid);
}

TEST(PropertyValuesTest, AnotherTypeIsNotThere) {
  FakeProperties properties;
  properties.integer(1, 7).text(2, u"7");
  FakeSet set(properties);
  std::vector<Trouble> troubles;
  PropertyValues values(set, std::nullopt, &troubles);
  EXPECT_EQ(values.text(1), std::nullopt);
  EXPECT_EQ(values.boolean(1), std::nullopt);
  EXPECT_EQ(values.time(1), std::nullopt);
  EXPECT_EQ(values.binary(2), std::nullopt);
  EXPECT_EQ(values.guid(2), std::nullopt);
  EXPECT_EQ(values.integer(2), std::nullopt);
  EXPECT_EQ(values.text(9), std::nullopt);
  EXPECT_TRUE(troubles.empty());
}

TEST(PropertyValuesTest, ShortValuesAreNotThere) {
  FakeProperties properties;
  properties.put(1, kTypeInteger32, "abc").put(2, kTypeTime, "1234567").put(3, kTypeBoolean, "");
  FakeSet set(properties);
  PropertyValues values(set, std::nullopt);
  EXPECT_EQ(values.integer(1), std::nullopt);
  EXPECT_EQ(values.time(2), std::nullopt);
  EXPECT_EQ(values.boolean(3), std::nullopt);
}

TEST(PropertyValuesTest, ReadsTextOfBothWidths) {
  FakeProperties properties;
  properties.text(1, u"\u017E").text8(2, "\x9E").text(3, u"");
  FakeSet set(properties);
  PropertyValues values(set, 1250);
  EXPECT_EQ(values.text(1), "ž");
  EXPECT_EQ(values.text(2), "ž");
  EXPECT_EQ(values.text(3), "");
  EXPECT_EQ(values.firstText({9, 3, 2}), "ž");
  EXPECT_EQ(values.firstText({9, 3}), "");
}

TEST(PropertyValuesTest, NamesWhatCannotBeRead) {
  FakeProperties properties;
  properties.damaged(kTagSubject, kTypeString).text(kId, u"long");
  FakeSet set(properties);
  std::vector<Trouble> troubles;
  PropertyValues values(set, std::nullopt, &troubles);
  EXPECT_EQ(values.text(kTagSubject), std::nullopt);
  EXPECT_EQ(values.text(kId, 7), std::nullopt);
  ASSERT_EQ(troubles.size(), 2u);
  EXPECT_EQ(troubles[0].kind, TroubleKind::Damaged);
  EXPECT_EQ(troubles[0].reason,
            "the property PidTagSubject (0x0037) cannot be read: a block is missing");
  EXPECT_EQ(troubles[1].kind, TroubleKind::TooLarge);
  EXPECT_EQ(troubles[1].reason, "the property 0x6600 cannot be read: too large");
}

}  // namespace
}  // namespace tarn::archive::mapi
