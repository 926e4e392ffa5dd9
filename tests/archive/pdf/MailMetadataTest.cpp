#include "archive/pdf/MailMetadata.h"

#include <gtest/gtest.h>

#include <string>

using namespace tarn::archive;

namespace {

MailFacts EveryFact() {
  MailFacts facts;
  facts.subject = "Plans & <dates>";
  facts.from = "Ann Archer <ann@example.com>";
  facts.to = {"Bob <bob@example.com>", "carol@example.com"};
  facts.cc = {"Dan"};
  facts.bcc = {"Eve"};
  facts.sent = "2024-05-01T12:34:56+02:00";
  facts.received = "2024-05-01T10:35:00Z";
  facts.messageId = "1@example.com";
  return facts;
}

bool Has(const std::string& packet, const std::string& part) {
  return packet.find(part) != std::string::npos;
}

TEST(MailMetadataTest, SaysWhatTheMailSays) {
  const std::string packet = MailMetadata(EveryFact());
  EXPECT_TRUE(Has(packet,
                  "<dc:title><rdf:Alt><rdf:li xml:lang=\"x-default\">Plans &amp; "
                  "&lt;dates&gt;</rdf:li></rdf:Alt></dc:title>"));
  EXPECT_TRUE(Has(packet,
                  "<dc:creator><rdf:Seq><rdf:li>Ann Archer &lt;ann@example.com&gt;"
                  "</rdf:li>"));
  EXPECT_TRUE(Has(packet, "<dc:date><rdf:Seq><rdf:li>2024-05-01T12:34:56+02:00</rdf:li>"));
  EXPECT_TRUE(Has(packet, "<xmp:CreateDate>2024-05-01T12:34:56+02:00</xmp:CreateDate>"));
  EXPECT_TRUE(Has(packet, "<mail:from>Ann Archer &lt;ann@example.com&gt;</mail:from>"));
  EXPECT_TRUE(Has(packet,
                  "<mail:to><rdf:Seq><rdf:li>Bob &lt;bob@example.com&gt;</rdf:li>\n"
                  "<rdf:li>carol@example.com</rdf:li>\n</rdf:Seq></mail:to>"));
  EXPECT_TRUE(Has(packet, "<mail:cc><rdf:Seq><rdf:li>Dan</rdf:li>"));
  EXPECT_TRUE(Has(packet, "<mail:bcc><rdf:Seq><rdf:li>Eve</rdf:li>"));
  EXPECT_TRUE(Has(packet, "<mail:sent>2024-05-01T12:34:56+02:00</mail:sent>"));
  EXPECT_TRUE(Has(packet, "<mail:received>2024-05-01T10:35:00Z</mail:received>"));
  EXPECT_TRUE(Has(packet, "<mail:messageId>1@example.com</mail:messageId>"));
  EXPECT_TRUE(packet.starts_with("<?xpacket begin=\"\xEF\xBB\xBF\" id="));
  EXPECT_TRUE(packet.ends_with("<?xpacket end=\"r\"?>\n"));
}

TEST(MailMetadataTest, LeavesOutWhatIsEmpty) {
  const std::string packet = MailMetadata({});
  for (const char* name : {"dc:title", "dc:creator", "dc:date", "xmp:CreateDate", "mail:from",
                           "mail:to", "mail:cc", "mail:bcc", "mail:sent", "mail:messageId"}) {
    EXPECT_FALSE(Has(packet, "<" + std::string(name))) << name;
  }
  EXPECT_TRUE(Has(packet, "<dc:format>application/pdf</dc:format>"));
}

TEST(MailMetadataTest, WritesOnlyCharactersThatXmlHasRoomFor) {
  MailFacts facts;
  facts.subject = std::string("a\0b\x1B[31m\tc\r\xFF", 12) + "\xEF\xBF\xBF\xF0\x9F\x98\x80\x7F<";
  const std::string mark = "\xEF\xBF\xBD";
  EXPECT_TRUE(Has(MailMetadata(facts), ">a" + mark + "b" + mark + "[31m\tc&#13;" + mark + mark +
                                           "\xF0\x9F\x98\x80\x7F&lt;</rdf:li>"))
      << MailMetadata(facts);
}

}  // namespace
