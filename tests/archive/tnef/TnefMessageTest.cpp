#include "archive/tnef/TnefMessage.h"

#include <gtest/gtest.h>

#include "archive/mapi/PropertyValues.h"
#include "archive/mapi/Tags.h"
#include "archive/tnef/TnefReader.h"
#include "support/TnefBuilder.h"

namespace tarn::archive::tnef {
namespace {

using namespace mapi;
using test::TnefAttachmentLevel;
using test::TnefBuilder;
using test::TnefList;
using test::TnefMessageLevel;
using test::TnefNumber;

std::vector<std::string> Reasons(const std::vector<Trouble>& troubles) {
  std::vector<std::string> reasons;
  for (const Trouble& trouble : troubles) reasons.push_back(trouble.reason);
  return reasons;
}

std::string TextOf(PropertySet& set, uint16_t id) {
  return PropertyValues(set, 1252).text(id).value_or("none");
}

std::unique_ptr<PropertySet> AttachmentOf(TnefMessage& message, size_t index) {
  return std::move(*message.attachment(index));
}

TEST(TnefMessageTest, TheListCountsBeforeAttributes) {
  TnefBuilder mail;
  mail.text8(TnefMessageLevel, kAttributeSubject, "of the attribute");
  mail.text8(TnefMessageLevel, kAttributeBody, "body");
  mail.properties(TnefList().text(kTagSubject, u"of the list"));
  mail.properties(TnefList().text(kTagBody, u"of a second list"));
  TnefMessage message(mail.write());
  EXPECT_EQ(TextOf(message.properties(), kTagSubject), "of the list");
  EXPECT_EQ(TextOf(message.properties(), kTagBody), "body");
  EXPECT_TRUE(message.troubles().empty());
}

TEST(TnefMessageTest, TheCodePageIsThatOfTheAttribute) {
  TnefBuilder mail;
  mail.properties(TnefList().integer(kTagMessageCodepage, 1252).text8(kTagSubject, "\xCF"));
  TnefMessage plain(mail.write());
  EXPECT_EQ(TextCodePage(plain.properties()), 1252u);
  mail.codePage(1251);
  TnefMessage message(mail.write());
  EXPECT_EQ(TextCodePage(message.properties()), 1251u);
  mail.codePage(7);  // no code page
  TnefMessage unknown(mail.write());
  EXPECT_EQ(TextCodePage(unknown.properties()), 1252u);
}

TEST(TnefMessageTest, NamesAreOfTheWholeMessage) {
  const std::string_view set = "0123456789abcdef";
  TnefBuilder mail;
  mail.properties(TnefList().named(set, 1u).integer(0x8000, 1));
  mail.attachment().attachmentProperties(TnefList().named(set, 2u).integer(0x8000, 2));
  TnefMessage message(mail.write());
  EXPECT_EQ(message.nameOf(0x8000).value().number, 1u);
  EXPECT_EQ(*AttachmentOf(message, 0)->bytes(0x8001, 4), TnefNumber(2, 4));
  const std::optional<PropertyName> second = message.nameOf(0x8001);
  ASSERT_TRUE(second.has_value());
  EXPECT_EQ(message.idOf(*second), 0x8001);
}

TEST(TnefMessageTest, GivesRecipients) {
  TnefBuilder mail;
  mail.recipients({TnefList().integer(kTagRecipientType, 1).text(kTagDisplayName, u"Bob"),
                   TnefList().integer(kTagRecipientType, 2).text(kTagDisplayName, u"Cy")});
  TnefMessage message(mail.write());
  ASSERT_EQ(*message.recipientCount(), 2u);
  EXPECT_EQ(TextOf(**message.recipient(1), kTagDisplayName), "Cy");
  EXPECT_EQ(message.recipient(2).trouble().kind, TroubleKind::Missing);
  EXPECT_TRUE(message.troubles().empty());
}

TEST(TnefMessageTest, RecipientsThatAreMissingAreCounted) {
  TnefBuilder mail;
  mail.attribute(TnefMessageLevel, kAttributeRecipients, 6,
                 TnefNumber(5, 4) + TnefList().text(kTagDisplayName, u"Bob").write());
  TnefMessage message(mail.write());
  EXPECT_EQ(*message.recipientCount(), 1u);
  EXPECT_EQ(Reasons(message.troubles()), std::vector<std::string>{"4 of 5 recipients are missing"});
}

TEST(TnefMessageTest, AttachmentsBeginWithTheirRendering) {
  TnefBuilder mail;
  mail.attachment().text8(TnefAttachmentLevel, kAttributeAttachTitle, "a.txt").attachmentData("a");
  mail.attachment().attachmentData("b").attachmentProperties(
      TnefList().text(kTagAttachLongFilename, u"b.txt"));
  TnefMessage message(mail.write());
  ASSERT_EQ(*message.attachmentCount(), 2u);
  EXPECT_EQ(TextOf(*AttachmentOf(message, 0), kTagAttachFilename), "a.txt");
  EXPECT_EQ(*AttachmentOf(message, 0)->bytes(kTagAttachData, 9), "a");
  EXPECT_EQ(*AttachmentOf(message, 0)->bytes(kTagAttachMethod, 4), TnefNumber(1, 4));
  EXPECT_EQ(TextOf(*AttachmentOf(message, 1), kTagAttachLongFilename), "b.txt");
  EXPECT_EQ(*AttachmentOf(message, 1)->bytes(kTagAttachData, 9), "b");
  EXPECT_EQ(message.attachment(2).trouble().kind, TroubleKind::Missing);
  EXPECT_EQ(message.embedded(2).trouble().kind, TroubleKind::Missing);
  EXPECT_EQ(message.object(2).trouble().kind, TroubleKind::Missing);
}

TEST(TnefMessageTest, OneWithoutARenderingIsAnAttachmentToo) {
  TnefMessage message(TnefBuilder().attachmentData("a").write());
  ASSERT_EQ(*message.attachmentCount(), 1u);
  EXPECT_EQ(*AttachmentOf(message, 0)->bytes(kTagAttachData, 9), "a");
}

TEST(TnefMessageTest, MethodsComeFromWhatIsThere) {
  const std::string inner = TnefBuilder().write();
  TnefBuilder mail;
  mail.attachment(2).attachmentData("object");
  mail.attachment().attachmentProperties(
      TnefList().object(kTagAttachData, test::kTnefMessageInterface, inner));
  mail.attachment().attachmentProperties(
      TnefList().object(kTagAttachData, test::kTnefStorageInterface, "storage"));
  mail.attachment(2).attachmentProperties(
      TnefList()
          .integer(kTagAttachMethod, 1)
          .object(kTagAttachData, test::kTnefStreamInterface, "stream"));
  TnefMessage message(mail.write());
  ASSERT_EQ(*message.attachmentCount(), 4u);
  const uint32_t methods[] = {6, 5, 6, 1};
  for (size_t at = 0; at < 4; ++at) {
    EXPECT_EQ(*AttachmentOf(message, at)->bytes(kTagAttachMethod, 4), TnefNumber(methods[at], 4));
  }
  EXPECT_EQ(*ReadAll(**message.object(0), 99), "object");
  EXPECT_EQ(*ReadAll(**message.object(2), 99), "storage");
  EXPECT_EQ(AttachmentOf(message, 3)->typeOf(kTagAttachData), kTypeBinary);
  EXPECT_EQ(*AttachmentOf(message, 3)->bytes(kTagAttachData, 99), "stream");
  EXPECT_TRUE(message.embedded(1).ok());
  EXPECT_EQ(message.embedded(2).trouble().reason, "the embedded message does not begin as one");
}

TEST(TnefMessageTest, AnAttachmentMayHoldNothing) {
  TnefMessage message(TnefBuilder().attachment().write());
  EXPECT_EQ(message.embedded(0).trouble().reason, "the embedded message is missing");
  EXPECT_EQ(message.object(0).trouble().reason, "the object is missing");
}

TEST(TnefMessageTest, EmbeddedMessagesHaveTheCodePageAroundThem) {
  const std::string inner =
      TnefBuilder().text8(TnefMessageLevel, kAttributeSubject, "\xCF").write();
  TnefBuilder mail;
  mail.codePage(1251).attachment().attachmentProperties(
      TnefList()
          .integer(kTagAttachMethod, 5)
          .object(kTagAttachData, test::kTnefMessageInterface, inner));
  TnefMessage message(mail.write());
  const auto embedded = std::move(*message.embedded(0));
  EXPECT_EQ(TextCodePage(embedded->properties()), 1251u);
  EXPECT_EQ(TextOf(embedded->properties(), kTagSubject), "Ï");
}

TEST(TnefMessageTest, AWrongChecksumIsATroubleAndTheValueIsRead) {
  std::string bytes = TnefBuilder()
                          .text8(TnefMessageLevel, kAttributeSubject, "Subject")
                          .text8(TnefMessageLevel, kAttributeBody, "Body")
                          .write();
  ++bytes[6 + 9];  // "Tubject"
  ++bytes.back();
  TnefMessage message(bytes);
  EXPECT_EQ(TextOf(message.properties(), kTagSubject), "Tubject");
  EXPECT_EQ(TextOf(message.properties(), kTagBody), "Body");
  EXPECT_EQ(Reasons(message.troubles()),
            std::vector<std::string>{"the checksums of 2 parts of the message do not fit"});
}

TEST(TnefMessageTest, WhatIsLeftOfACutMessageIsRead) {
  const std::string bytes = TnefBuilder()
                                .text8(TnefMessageLevel, kAttributeSubject, "Subject")
                                .attachment()
                                .attachmentData("0123456789")
                                .write();
  TnefMessage message(bytes.substr(0, bytes.size() - 6));
  EXPECT_EQ(TextOf(message.properties(), kTagSubject), "Subject");
  EXPECT_EQ(Reasons(message.troubles()), std::vector<std::string>{"the message is cut off"});
  const auto set = AttachmentOf(message, 0);
  EXPECT_EQ(*set->bytes(kTagAttachData, 99), "012345");
  EXPECT_EQ(Reasons(set->troubles()),
            std::vector<std::string>{"the bytes of the attachment are cut off"});
}

TEST(TnefMessageTest, FillingAtTheEndIsNoTrouble) {
  for (const std::string end : {"", "\r\n", "\r\n\r\n"}) {
    EXPECT_TRUE(TnefMessage(TnefBuilder().bytes(end).write()).troubles().empty());
  }
  EXPECT_TRUE(TnefMessage(TnefBuilder().bytes(std::string(100, '\0')).write()).troubles().empty());
  for (const std::string end : {"x", "--=_boundary of a mail--"}) {
    EXPECT_EQ(Reasons(TnefMessage(TnefBuilder().bytes(end).write()).troubles()),
              std::vector<std::string>{"the message ends in bytes that are no part of it"});
  }
}

TEST(TnefMessageTest, EveryCutOfAMessageIsRead) {
  const std::string inner = TnefBuilder().properties(TnefList().text(1, u"in")).write();
  TnefBuilder mail;
  mail.codePage(1252).properties(TnefList().named("0123456789abcdef", u"n").integer(0x8000, 1));
  mail.recipients({TnefList().text(kTagDisplayName, u"Bob")});
  mail.attachment().attachmentProperties(
      TnefList().object(kTagAttachData, test::kTnefMessageInterface, inner));
  const std::string bytes = mail.write();
  for (size_t size = 6; size < bytes.size(); ++size) {
    TnefMessage message(bytes.substr(0, size));
    const size_t count = *message.attachmentCount();
    for (size_t at = 0; at < count; ++at) {
      EXPECT_TRUE(message.attachment(at).ok());
      message.embedded(at);
    }
  }
}

}  // namespace
}  // namespace tarn::archive::tnef
