#include "archive/writers/ItemText.h"

#include <gtest/gtest.h>

namespace tarn::archive {
namespace {

TEST(ItemTextTest, TellsDatesByTheSendersClock) {
  EXPECT_EQ(DateText({1714559696, 120}, UnknownZone::Utc), "Wed, 1 May 2024 12:34:56 +0200");
  EXPECT_EQ(DateText({1714559696, -210}, UnknownZone::Utc), "Wed, 1 May 2024 07:04:56 -0330");
  EXPECT_EQ(DateText({1714559696, 0}, UnknownZone::Minus), "Wed, 1 May 2024 10:34:56 +0000");
}

TEST(ItemTextTest, TellsDatesOfUnknownZonesInUtc) {
  EXPECT_EQ(DateText({1714559696, {}}, UnknownZone::Utc), "Wed, 1 May 2024 10:34:56 UTC");
  EXPECT_EQ(DateText({1714559696, {}}, UnknownZone::Minus), "Wed, 1 May 2024 10:34:56 -0000");
}

TEST(ItemTextTest, CutsDatesToYearsOfFourDigits) {
  EXPECT_EQ(DateText({INT64_MAX, 60}, UnknownZone::Utc), "Fri, 31 Dec 9999 23:59:59 +0100");
  EXPECT_EQ(DateText({INT64_MIN, {}}, UnknownZone::Utc), "Mon, 1 Jan 0001 00:00:00 UTC");
}

TEST(ItemTextTest, TellsDatesOfMboxes) {
  EXPECT_EQ(MboxDateText({1714559696, 120}), "Wed May  1 10:34:56 2024");
}

TEST(ItemTextTest, TellsAddresses) {
  EXPECT_EQ(AddressText({"Ann", "ann@example.com"}), "Ann <ann@example.com>");
  EXPECT_EQ(AddressText({"", "ann@example.com"}), "ann@example.com");
  EXPECT_EQ(AddressText({"ann@example.com", "ann@example.com"}), "ann@example.com");
  EXPECT_EQ(AddressText({"A\r\nnn", ""}), "A  nn");
  EXPECT_EQ(AddressText({"Ann", "/O=CORP/CN=ANN"}), "Ann");
  EXPECT_EQ(AddressText({"", "/O=CORP/CN=ANN"}), "/O=CORP/CN=ANN");
  EXPECT_EQ(AddressText({"Ann", "/c=de/@example.com"}), "Ann </c=de/@example.com>");
  EXPECT_EQ(AddressesText({{"Ann", ""}, {"", "b@example.com"}}), "Ann, b@example.com");
}

TEST(ItemTextTest, TellsSizes) {
  EXPECT_EQ(SizeText(0), "0 bytes");
  EXPECT_EQ(SizeText(1), "1 byte");
  EXPECT_EQ(SizeText(999), "999 bytes");
  EXPECT_EQ(SizeText(1000), "1.0 KB");
  EXPECT_EQ(SizeText(999949), "999.9 KB");
  EXPECT_EQ(SizeText(999950), "1.0 MB");
  EXPECT_EQ(SizeText(3400000000), "3.4 GB");
}

TEST(ItemTextTest, TellsTitlesOfAttachments) {
  Attachment attachment;
  EXPECT_EQ(AttachmentTitle(attachment, 2), "attachment 3");
  attachment.name = "a\nb";
  EXPECT_EQ(AttachmentTitle(attachment, 0), "a b");
  attachment.name.clear();
  attachment.kind = AttachmentKind::Reference;
  attachment.target = "https://x";
  EXPECT_EQ(AttachmentTitle(attachment, 0), "https://x");
}

TEST(ItemTextTest, MakesOneLine) {
  EXPECT_EQ(OneLine("a\xE2\x80\xA8"
                    "b\x7F\xC2\x85\xFF"),
            "a b  \xEF\xBF\xBD");
}

TEST(ItemTextTest, MakesLinesThatEndWithLf) {
  using namespace std::string_view_literals;
  EXPECT_EQ(ManyLines("\xEF\xBB\xBF\x61\r\nb\rc\nd\0\x1B\te\xFF"sv), "a\nb\nc\nd\te\xEF\xBF\xBD");
}

}  // namespace
}  // namespace tarn::archive
