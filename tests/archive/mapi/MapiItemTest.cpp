#include "archive/mapi/MapiItem.h"

#include <gtest/gtest.h>

#include "archive/mapi/FakeMessage.h"
#include "archive/mapi/MapiFields.h"

namespace tarn::archive::mapi {
namespace {

constexpr int64_t kMoment = 1714559696;  // 2024-05-01T10:34:56Z

ItemPlace PlaceOf(std::string id) {
  return {std::move(id), std::nullopt,
          std::make_shared<const std::vector<std::string>>(std::vector<std::string>{"Inbox"})};
}

// Counts how often the message is opened.
struct Fixture {
  FakeDescription description;
  int opened = 0;

  std::unique_ptr<Item> item(KnownFields known = {}, int depth = 0) {
    const auto open = [this]() -> Outcome<std::unique_ptr<MapiMessage>> {
      ++opened;
      return std::unique_ptr<MapiMessage>(std::make_unique<FakeMessage>(description));
    };
    return MakeMapiItem(PlaceOf("1"), open, std::move(known), depth);
  }
  ItemFields envelope() { return item()->fields(Detail::Envelope); }
};

FakeProperties Recipient(uint32_t type, std::u16string_view name, std::u16string_view address) {
  FakeProperties recipient;
  recipient.integer(kTagRecipientType, type).text(kTagDisplayName, name);
  if (!address.empty()) recipient.text(kTagSmtpAddress, address);
  return recipient;
}

TEST(MapiItemTest, ReadsTheFieldsOfAMail) {
  Fixture mail;
  mail.description.properties.text(kTagMessageClass, u"IPM.Note")
      .text(kTagSubject, u"\u0001\u0005RE: Hello")
      .text(kTagSentRepresentingName, u"Ann")
      .text(kTagSentRepresentingSmtpAddress, u"ann@example.com")
      .text(kTagSenderName, u"Secretary")
      .text(kTagSenderSmtpAddress, u"sec@example.com")
      .time(kTagClientSubmitTime, kMoment)
      .time(kTagMessageDeliveryTime, kMoment + 4)
      .time(kTagCreationTime, kMoment + 9)
      .integer(kTagMessageSize, 4711)
      .text(kTagInternetMessageId, u"<id@example.com>")
      .text8(kTagTransportMessageHeaders, "Date: Wed, 1 May 2024 12:34:56 +0200\r\n");
  mail.description.recipients.emplace_back(Recipient(1, u"Bob", u"bob@example.com"));
  mail.description.recipients.emplace_back(Recipient(2, u"Cy", u"cy@example.com"));
  mail.description.recipients.emplace_back(Recipient(3, u"Di", u""));
  mail.description.recipients.emplace_back(Recipient(0x10000001, u"Ed", u""));
  mail.description.recipients.emplace_back(Recipient(0, u"Ann", u""));
  mail.description.attachments.emplace_back().emplace().binary(kTagAttachData, "x");
  const std::unique_ptr<Item> item = mail.item();
  const ItemFields& fields = item->fields(Detail::Envelope);
  EXPECT_EQ(fields.messageClass, "IPM.Note");
  EXPECT_EQ(fields.subject, "RE: Hello");
  EXPECT_EQ(fields.from, (Address{"Ann", "ann@example.com"}));
  EXPECT_EQ(fields.sender, (Address{"Secretary", "sec@example.com"}));
  EXPECT_EQ(fields.sent, (Moment{kMoment, 120}));
  EXPECT_EQ(fields.received, (Moment{kMoment + 4, std::nullopt}));
  EXPECT_EQ(fields.size, 4711u);
  EXPECT_EQ(fields.messageId, "id@example.com");
  EXPECT_EQ(fields.to, (std::vector<Address>{{"Bob", "bob@example.com"}, {"Ed", ""}}));
  EXPECT_EQ(fields.cc, (std::vector<Address>{{"Cy", "cy@example.com"}}));
  EXPECT_EQ(fields.bcc, (std::vector<Address>{{"Di", ""}}));
  EXPECT_EQ(fields.attachmentCount, 1u);
  EXPECT_TRUE(fields.hasAttachments);
  EXPECT_TRUE(item->troubles().empty());
  EXPECT_EQ(item->place().id, "1");
  EXPECT_EQ(*item->original(), nullptr);
  EXPECT_NE(item->properties(), nullptr);
  EXPECT_EQ(mail.opened, 1);
}

TEST(MapiItemTest, AnEmptyMessageHasEmptyFields) {
  Fixture mail;
  const ItemFields fields = mail.envelope();
  EXPECT_EQ(fields.messageClass, "");
  EXPECT_EQ(fields.subject, "");
  EXPECT_EQ(fields.from, Address());
  EXPECT_FALSE(fields.sent || fields.received || fields.size || fields.sender);
  EXPECT_FALSE(fields.hasAttachments);
}

TEST(MapiItemTest, AKnownHeadlineOpensNothing) {
  Fixture mail;
  mail.description.properties.text(kTagSubject, u"Of the message");
  KnownFields known;
  known.headline.emplace().subject = "Of the table";
  known.headline->messageClass = "IPM.Note";
  const std::unique_ptr<Item> item = mail.item(known);
  EXPECT_EQ(item->fields(Detail::Headline).subject, "Of the table");
  EXPECT_EQ(mail.opened, 0);
  EXPECT_EQ(item->fields(Detail::Envelope).subject, "Of the message");
  EXPECT_EQ(item->fields(Detail::Envelope).messageClass, "IPM.Note");
  EXPECT_EQ(mail.opened, 1);
}

TEST(MapiItemTest, AMessageThatDoesNotOpenIsOneTrouble) {
  KnownFields known;
  known.headline.emplace().subject = "Of the table";
  const auto item = MakeMapiItem(
      PlaceOf("7"),
      []() -> Outcome<std::unique_ptr<MapiMessage>> {
        return Trouble{TroubleKind::Damaged, "the page is damaged"};
      },
      known);
  EXPECT_EQ(item->fields(Detail::Envelope).subject, "Of the table");
  EXPECT_TRUE(item->attachments().empty());
  EXPECT_EQ(item->bodies().troubles.at(0).reason, "the page is damaged");
  EXPECT_EQ(item->originalHeaders().trouble().reason, "the page is damaged");
  EXPECT_EQ(item->open(0).trouble().reason, "the page is damaged");
  EXPECT_EQ(item->embedded(0).trouble().reason, "the page is damaged");
  EXPECT_EQ(item->properties(), nullptr);
  ASSERT_EQ(item->troubles().size(), 1u);
  EXPECT_EQ(item->troubles()[0].reason, "the page is damaged");
}

TEST(MapiItemTest, SubjectsComeFromWhatTheMessageHas) {
  EXPECT_EQ(SubjectWithoutMark("\x01\x05RE: a"), "RE: a");
  EXPECT_EQ(SubjectWithoutMark("\x01\u0105RE: a"), "RE: a");
  EXPECT_EQ(SubjectWithoutMark("\x01"), "");
  EXPECT_EQ(SubjectWithoutMark("a\x01"
                               "b"),
            "a\x01"
            "b");
  Fixture mail;
  mail.description.properties.text(kTagCompanyName, u"Example Inc");
  EXPECT_EQ(mail.envelope().subject, "Example Inc");
  mail.description.names.push_back({PropertyName{kAddressSet, 0x8005, {}}, 0x8001});
  mail.description.properties.text(0x8001, u"Doe, Ann");
  EXPECT_EQ(mail.envelope().subject, "Doe, Ann");
  mail.description.properties.text(kTagDisplayName, u"Ann Doe");
  EXPECT_EQ(mail.envelope().subject, "Ann Doe");
  mail.description.properties.text(kTagNormalizedSubject, u"Hello")
      .text(kTagSubjectPrefix, u"RE: ");
  EXPECT_EQ(mail.envelope().subject, "RE: Hello");
  mail.description.properties.text(kTagSubject, u"\u0001\u0001");
  EXPECT_EQ(mail.envelope().subject, "RE: Hello");
  mail.description.properties.text(kTagSubject, u"Own");
  EXPECT_EQ(mail.envelope().subject, "Own");
}

TEST(MapiItemTest, WhoWasNeverSentHasNoDates) {
  Fixture contact;
  contact.description.properties.text(kTagMessageClass, u"IPM.Contact")
      .time(kTagCreationTime, kMoment)
      .time(kTagLastModificationTime, kMoment);
  EXPECT_EQ(contact.envelope().sent, std::nullopt);
  EXPECT_EQ(contact.envelope().received, std::nullopt);
}

TEST(MapiItemTest, HeadersTellWhatPropertiesDoNot) {
  Fixture mail;
  mail.description.properties
      .text(kTagTransportMessageHeaders,
            u"Message-ID: <h@x>\r\nFrom: Ann <ann@example.com>\r\n"
            u"Date: Wed, 1 May 2024 12:34:56 +0200\r\n")
      .text(kTagSenderName, u"Ann")
      .text(kTagSenderAddressType, u"EX")
      .text(kTagSenderEmailAddress, u"/o=x/cn=ann");
  const ItemFields fields = mail.envelope();
  EXPECT_EQ(fields.sent, (Moment{kMoment, 120}));
  EXPECT_EQ(fields.from, (Address{"Ann", "ann@example.com"}));
  EXPECT_EQ(fields.sender, std::nullopt);
  EXPECT_EQ(fields.messageId, "h@x");
}

TEST(MapiItemTest, TheDateOfAnotherMailTellsNoOffset) {
  Fixture mail;
  mail.description.properties.time(kTagClientSubmitTime, kMoment)
      .text(kTagTransportMessageHeaders, u"Date: Thu, 2 May 2024 12:34:56 +0200\r\n");
  EXPECT_EQ(mail.envelope().sent, (Moment{kMoment, std::nullopt}));
}

TEST(MapiItemTest, ListedNamesStandInForRecipients) {
  Fixture mail;
  mail.description.properties.text(kTagDisplayTo, u"Bob; cy@example.com ;; ")
      .text(kTagDisplayCc, u"Di")
      .text(kTagDisplayBcc, u"Ed");
  const ItemFields fields = mail.envelope();
  EXPECT_EQ(fields.to, (std::vector<Address>{{"Bob", ""}, {"cy@example.com", "cy@example.com"}}));
  EXPECT_EQ(fields.cc, (std::vector<Address>{{"Di", ""}}));
  EXPECT_EQ(fields.bcc, (std::vector<Address>{{"Ed", ""}}));
  mail.description.recipients.emplace_back(Recipient(1, u"Fay", u"fay@example.com"));
  EXPECT_EQ(mail.envelope().to, (std::vector<Address>{{"Fay", "fay@example.com"}}));
  EXPECT_TRUE(mail.envelope().cc.empty());
}

TEST(MapiItemTest, DamagedRecipientsCostThemselves) {
  Fixture mail;
  mail.description.recipients.emplace_back();
  mail.description.recipients.emplace_back(Recipient(1, u"Bob", u""));
  mail.description.recipients.emplace_back();
  std::unique_ptr<Item> item = mail.item();
  EXPECT_EQ(item->fields(Detail::Envelope).to, (std::vector<Address>{{"Bob", ""}}));
  ASSERT_EQ(item->troubles().size(), 1u);
  EXPECT_EQ(item->troubles()[0].reason,
            "2 of 3 recipients cannot be read whole: the row is damaged");

  mail.description.recipientsTrouble = {TroubleKind::Damaged, "the table is damaged"};
  mail.description.attachmentsTrouble = {TroubleKind::Missing, "the list is missing"};
  item = mail.item();
  item->fields(Detail::Envelope);
  item->fields(Detail::Envelope);
  ASSERT_EQ(item->troubles().size(), 2u);
  EXPECT_EQ(item->troubles()[0].reason, "the attachments cannot be read: the list is missing");
  EXPECT_EQ(item->troubles()[1].reason, "the recipients cannot be read: the table is damaged");
  EXPECT_EQ(item->fields(Detail::Envelope).attachmentCount, 0u);
  EXPECT_FALSE(item->fields(Detail::Envelope).hasAttachments);
}

TEST(MapiItemTest, GivesAttachmentsAndTheirBytes) {
  Fixture mail;
  mail.description.attachments.emplace_back().emplace().binary(kTagAttachData, "bytes");
  const std::unique_ptr<Item> item = mail.item();
  ASSERT_EQ(item->attachments().size(), 1u);
  Outcome<std::unique_ptr<ByteSource>> source = item->open(0);
  ASSERT_TRUE(source.ok());
  EXPECT_EQ(*ReadAll(**source, 10), "bytes");
  EXPECT_EQ(item->open(1).trouble().kind, TroubleKind::Missing);
  EXPECT_EQ(item->embedded(0).trouble().kind, TroubleKind::Missing);
}

TEST(MapiItemTest, GivesEmbeddedItems) {
  Fixture mail;
  mail.description.attachments.emplace_back().emplace().binary(kTagAttachData, "bytes");
  mail.description.attachments.emplace_back().emplace().integer(kTagAttachMethod, 5);
  mail.description.embedded[1] = std::make_shared<FakeDescription>();
  mail.description.embedded[1]->properties.text(kTagSubject, u"Inner");
  const std::unique_ptr<Item> item = mail.item();
  Outcome<std::unique_ptr<Item>> inner = item->embedded(1);
  ASSERT_TRUE(inner.ok());
  EXPECT_EQ((*inner)->fields(Detail::Envelope).subject, "Inner");
  EXPECT_EQ((*inner)->place().id, "1/2");
  EXPECT_EQ((*inner)->place().parent, "1");
  EXPECT_EQ((*inner)->place().folder, item->place().folder);
}

TEST(MapiItemTest, EndsTheDepthOfItems) {
  Fixture mail;
  mail.description.attachments.emplace_back().emplace().integer(kTagAttachMethod, 5);
  mail.description.embedded[0] = std::make_shared<FakeDescription>();
  EXPECT_TRUE(mail.item({}, kDeepestItem - 1)->embedded(0).ok());
  EXPECT_EQ(mail.item({}, kDeepestItem)->embedded(0).trouble().kind, TroubleKind::TooDeep);
}

}  // namespace
}  // namespace tarn::archive::mapi
