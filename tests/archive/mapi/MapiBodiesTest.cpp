#include "archive/mapi/MapiBodies.h"

#include <gtest/gtest.h>

#include "archive/mapi/FakeMessage.h"
#include "support/RtfCompressor.h"

namespace tarn::archive::mapi {
namespace {

using test::PackRtf;

constexpr char kWrappedHtml[] =
    "{\\rtf1\\ansi\\ansicpg1252\\fromhtml1 {\\*\\htmltag64 <p>}Hello{\\*\\htmltag72 </p>}}";
constexpr char kWrappedText[] = "{\\rtf1\\ansi\\ansicpg1252\\fromtext Hello\\par }";

Bodies Read(const FakeProperties& properties, std::optional<uint32_t> codePage = std::nullopt) {
  FakeDescription description;
  description.properties = properties;
  FakeMessage message(description);
  return ReadBodies(message, codePage);
}

TEST(MapiBodiesTest, AreNoneOfAnEmptyMessage) {
  const Bodies bodies = Read({});
  EXPECT_FALSE(bodies.html || bodies.text || bodies.rtf);
  EXPECT_TRUE(bodies.troubles.empty());
}

TEST(MapiBodiesTest, BodiesWithoutAByteAreNotThere) {
  FakeProperties properties;
  properties.text(kTagBody, u"").binary(kTagHtml, "").binary(kTagRtfCompressed, "");
  const Bodies bodies = Read(properties);
  EXPECT_FALSE(bodies.html || bodies.text || bodies.rtf);
  EXPECT_TRUE(bodies.troubles.empty());
}

TEST(MapiBodiesTest, TextHasTheMessagesCodePage) {
  FakeProperties properties;
  properties.text8(kTagBody, "caf\xE9");
  EXPECT_EQ(Read(properties, 1252).text, "café");
}

TEST(MapiBodiesTest, HtmlHasTheCharsetOfTheInternet) {
  FakeProperties properties;
  properties.binary(kTagHtml, "<p>\xB1</p>").integer(kTagInternetCodepage, 28592);
  const Bodies bodies = Read(properties, 1252);
  ASSERT_TRUE(bodies.html.has_value());
  EXPECT_EQ(bodies.html->bytes, "<p>\xB1</p>");
  EXPECT_EQ(bodies.html->charset, "iso-8859-2");
}

TEST(MapiBodiesTest, HtmlWithoutACharsetTellsItself) {
  FakeProperties properties;
  properties.binary(kTagHtml, "<p>");
  EXPECT_EQ(Read(properties).html->charset, "");
  properties.integer(kTagInternetCodepage, 4711);
  EXPECT_EQ(Read(properties).html->charset, "");
}

TEST(MapiBodiesTest, HtmlOfATextTypeIsUtf8) {
  FakeProperties properties;
  properties.text(kTagHtml, u"<p>\u017E").integer(kTagInternetCodepage, 28592);
  EXPECT_EQ(Read(properties).html->bytes, "<p>ž");
  EXPECT_EQ(Read(properties).html->charset, "utf-8");
  properties.text8(kTagHtml, "<p>\x9E");
  EXPECT_EQ(Read(properties, 1250).html->bytes, "<p>ž");
  EXPECT_EQ(Read(properties, 1250).html->charset, "utf-8");
}

TEST(MapiBodiesTest, RtfIsUnpackedAndUnwrapped) {
  FakeProperties properties;
  properties.binary(kTagRtfCompressed, PackRtf(kWrappedHtml));
  Bodies bodies = Read(properties);
  EXPECT_EQ(bodies.rtf, kWrappedHtml);
  ASSERT_TRUE(bodies.html.has_value());
  EXPECT_EQ(bodies.html->bytes, "<p>Hello</p>");
  EXPECT_EQ(bodies.html->charset, "utf-8");
  EXPECT_FALSE(bodies.text.has_value());

  properties.binary(kTagRtfCompressed, PackRtf(kWrappedText));
  bodies = Read(properties);
  ASSERT_TRUE(bodies.text.has_value());
  EXPECT_EQ(bodies.text->substr(0, 5), "Hello");
  EXPECT_FALSE(bodies.html.has_value());
}

TEST(MapiBodiesTest, OwnBodiesGoBeforeWrappedOnes) {
  FakeProperties properties;
  properties.binary(kTagRtfCompressed, PackRtf(kWrappedHtml)).binary(kTagHtml, "<p>Own");
  EXPECT_EQ(Read(properties).html->bytes, "<p>Own");
  properties.binary(kTagRtfCompressed, PackRtf(kWrappedText)).text(kTagBody, u"Own");
  EXPECT_EQ(Read(properties).text, "Own");
}

TEST(MapiBodiesTest, DamagedRtfCostsNothingElse) {
  FakeProperties properties;
  properties.binary(kTagRtfCompressed, "nothing packed").text(kTagBody, u"Text");
  const Bodies bodies = Read(properties);
  EXPECT_EQ(bodies.text, "Text");
  EXPECT_FALSE(bodies.rtf.has_value());
  ASSERT_EQ(bodies.troubles.size(), 1u);
  EXPECT_EQ(bodies.troubles[0].kind, TroubleKind::Damaged);
  EXPECT_EQ(bodies.troubles[0].reason.rfind("the RTF body cannot be unpacked: ", 0), 0u);
}

TEST(MapiBodiesTest, NamesABodyThatCannotBeRead) {
  FakeProperties properties;
  properties.damaged(kTagHtml, kTypeBinary).text(kTagBody, u"Text");
  const Bodies bodies = Read(properties);
  EXPECT_EQ(bodies.text, "Text");
  EXPECT_FALSE(bodies.html.has_value());
  ASSERT_EQ(bodies.troubles.size(), 1u);
  EXPECT_EQ(bodies.troubles[0].reason,
            "the property PidTagHtml (0x1013) cannot be read: a block is missing");
}

TEST(TransportHeadersOfMessageTest, KeepTheirBytes) {
  FakeDescription description;
  FakeMessage message(description);
  EXPECT_EQ(*ReadTransportHeaders(message), "");
  description.properties.text8(kTagTransportMessageHeaders, std::string("A: \xE9\r\n\0", 7));
  EXPECT_EQ(*ReadTransportHeaders(message), "A: \xE9\r\n");
  description.properties.text(kTagTransportMessageHeaders, u"A: \u00E9\n");
  EXPECT_EQ(*ReadTransportHeaders(message), "A: é\n");
  description.properties.damaged(kTagTransportMessageHeaders, kTypeString);
  EXPECT_FALSE(ReadTransportHeaders(message).ok());
}

}  // namespace
}  // namespace tarn::archive::mapi
