#include "archive/tnef/TnefOldValues.h"

#include <gtest/gtest.h>

#include "archive/mapi/PropertyValues.h"
#include "archive/mapi/Tags.h"
#include "support/TnefBuilder.h"

namespace tarn::archive::tnef {
namespace {

using namespace mapi;
using test::TnefNumber;

std::string Date(std::initializer_list<uint64_t> parts) {
  std::string bytes;
  for (const uint64_t part : parts) bytes += TnefNumber(part, 2);
  return bytes;
}

// The properties of one attribute, and the values in them.
struct OfMessage {
  OfMessage(uint16_t id, std::string bytes, uint16_t type = 0) : held(std::move(bytes)) {
    AddMessageValue({.id = id, .type = type, .bytes = held}, set);
  }
  std::string text(uint16_t id) { return PropertyValues(set, 1252).text(id).value_or("none"); }
  std::string time(uint16_t id) {
    const std::optional<Moment> moment = PropertyValues(set, 1252).time(id);
    return moment ? Iso8601(*moment) : "none";
  }

  std::string held;
  TnefProperties set;
};

TEST(TnefOldValuesTest, TextsEndAtTheirNul) {
  EXPECT_EQ(OfMessage(kAttributeSubject, std::string("Hi\0x", 4)).text(kTagSubject), "Hi");
  EXPECT_EQ(OfMessage(kAttributeSubject,
                      "Gr\xFC\xDF"
                      "e")
                .text(kTagSubject),
            "Grüße");
  EXPECT_EQ(OfMessage(kAttributeBody, "text").text(kTagBody), "text");
}

TEST(TnefOldValuesTest, ClassesGetTheirNewNames) {
  EXPECT_EQ(OfMessage(kAttributeMessageClass, "IPM.Microsoft Mail.Note").text(kTagMessageClass),
            "IPM.Note");
  EXPECT_EQ(
      OfMessage(kAttributeMessageClass, "IPM.Microsoft Schedule.MtgRespA").text(kTagMessageClass),
      "IPM.Schedule.Meeting.Resp.Tent");
  EXPECT_EQ(OfMessage(kAttributeMessageClass, "IPM.Task").text(kTagMessageClass), "IPM.Task");
}

TEST(TnefOldValuesTest, DatesAreTheirParts) {
  const std::string date = Date({2024, 5, 1, 10, 34, 56, 3});
  EXPECT_EQ(OfMessage(kAttributeDateSent, date).time(kTagClientSubmitTime), "2024-05-01T10:34:56Z");
  EXPECT_EQ(OfMessage(kAttributeDateReceived, date).time(kTagMessageDeliveryTime),
            "2024-05-01T10:34:56Z");
  EXPECT_EQ(OfMessage(kAttributeDateModified, date).time(kTagLastModificationTime),
            "2024-05-01T10:34:56Z");
  EXPECT_EQ(OfMessage(kAttributeDateStart, date, kDateType).time(0x60), "2024-05-01T10:34:56Z");
  EXPECT_EQ(OfMessage(kAttributeDateEnd, date, kDateType).time(0x61), "2024-05-01T10:34:56Z");
  EXPECT_EQ(OfMessage(kAttributeDateStart, date, 7).time(0x60), "none");
  const auto sent = [](const std::string& bytes) {
    return OfMessage(kAttributeDateSent, bytes).time(kTagClientSubmitTime);
  };
  EXPECT_EQ(sent(Date({1601, 1, 1, 0, 0, 1, 0})), "1601-01-01T00:00:01Z");
  EXPECT_EQ(sent(Date({2000, 2, 29, 23, 59, 59, 0})), "2000-02-29T23:59:59Z");
  EXPECT_EQ(sent(Date({2000, 3, 1, 0, 0, 0, 0})), "2000-03-01T00:00:00Z");
  EXPECT_EQ(sent(Date({2100, 3, 1, 0, 0, 0, 0})), "2100-03-01T00:00:00Z");
  EXPECT_EQ(sent(Date({2023, 12, 31, 0, 0, 0, 0})), "2023-12-31T00:00:00Z");
}

TEST(TnefOldValuesTest, WhatIsNoDateIsNotThere) {
  const std::initializer_list<uint64_t> kNone[] = {
      {1600, 5, 1, 0, 0, 0},  {10000, 5, 1, 0, 0, 0}, {2024, 0, 1, 0, 0, 0},
      {2024, 13, 1, 0, 0, 0}, {2024, 5, 0, 0, 0, 0},  {2024, 5, 32, 0, 0, 0},
      {2024, 5, 1, 24, 0, 0}, {2024, 5, 1, 0, 60, 0}, {2024, 5, 1, 0, 0, 61}};
  for (const auto& parts : kNone) {
    OfMessage message(kAttributeDateSent, Date(parts));
    EXPECT_TRUE(message.set.tags().empty()) << testing::PrintToString(std::vector(parts));
  }
  EXPECT_TRUE(OfMessage(kAttributeDateSent, "cut").set.tags().empty());
}

TEST(TnefOldValuesTest, TheSenderHasNameAndAddress) {
  const std::string name("Ann\0", 4);
  const std::string address("SMTP:ann@example.com\0", 21);
  OfMessage message(kAttributeFrom, TnefNumber(4, 2) + TnefNumber(40, 2) + TnefNumber(4, 2) +
                                        TnefNumber(21, 2) + name + address);
  EXPECT_EQ(message.text(kTagSenderName), "Ann");
  EXPECT_EQ(message.text(kTagSenderAddressType), "SMTP");
  EXPECT_EQ(message.text(kTagSenderEmailAddress), "ann@example.com");
  OfMessage cut(kAttributeFrom, TnefNumber(4, 2) + TnefNumber(40, 2) + TnefNumber(400, 2) +
                                    TnefNumber(21, 2) + "An");
  EXPECT_EQ(cut.text(kTagSenderName), "An");
  EXPECT_EQ(cut.text(kTagSenderEmailAddress), "none");
  EXPECT_TRUE(OfMessage(kAttributeFrom, "1234567").set.tags().empty());
}

TEST(TnefOldValuesTest, ThePersonThatWasSentForToo) {
  OfMessage message(kAttributeSentFor, TnefNumber(4, 2) + std::string("Bob\0", 4) +
                                           TnefNumber(8, 2) + std::string("bob@x\0\0\0", 8));
  EXPECT_EQ(message.text(kTagSentRepresentingName), "Bob");
  EXPECT_EQ(message.text(kTagSentRepresentingAddressType), "none");
  EXPECT_EQ(message.text(kTagSentRepresentingEmailAddress), "bob@x");
  for (const char* bytes : {"", "1", "\x05"}) {
    EXPECT_TRUE(OfMessage(kAttributeSentFor, bytes).set.tags().empty());
  }
}

TEST(TnefOldValuesTest, PrioritiesAreImportances) {
  for (uint16_t priority = 1; priority <= 3; ++priority) {
    OfMessage message(kAttributePriority, TnefNumber(priority, 2));
    EXPECT_EQ(PropertyValues(message.set, 1252).integer(0x0017), 3 - priority);
  }
  EXPECT_TRUE(OfMessage(kAttributePriority, TnefNumber(0, 2)).set.tags().empty());
  EXPECT_TRUE(OfMessage(kAttributePriority, TnefNumber(4, 2)).set.tags().empty());
  EXPECT_TRUE(OfMessage(kAttributePriority, "1").set.tags().empty());
}

TEST(TnefOldValuesTest, OthersAddNothing) {
  EXPECT_TRUE(OfMessage(kAttributeOwner, "1234").set.tags().empty());
  TnefProperties set;
  AddAttachmentValue({.id = kAttributeSubject, .bytes = "x"}, set);
  EXPECT_TRUE(set.tags().empty());
}

TEST(TnefOldValuesTest, AttachmentsHaveNamesDatesAndBytes) {
  const std::string created = Date({2024, 5, 1, 10, 34, 56, 3});
  const std::string modified = Date({2024, 5, 2, 10, 34, 56, 3});
  TnefProperties set;
  AddAttachmentValue({.id = kAttributeAttachTitle, .bytes = std::string_view("a.txt\0", 6)}, set);
  AddAttachmentValue({.id = kAttributeAttachTransportName, .bytes = "b.txt"}, set);
  AddAttachmentValue({.id = kAttributeAttachData, .bytes = "bytes"}, set);
  AddAttachmentValue({.id = kAttributeAttachMetaFile, .bytes = "picture"}, set);
  AddAttachmentValue({.id = kAttributeAttachCreated, .bytes = created}, set);
  AddAttachmentValue({.id = kAttributeAttachModified, .bytes = modified}, set);
  PropertyValues values(set, 1252);
  EXPECT_EQ(values.text(kTagAttachFilename), "a.txt");
  EXPECT_EQ(values.text(kTagAttachTransportName), "b.txt");
  EXPECT_EQ(values.binary(kTagAttachData), "bytes");
  EXPECT_EQ(values.binary(kTagAttachRendering), "picture");
  EXPECT_EQ(Iso8601(*values.time(kTagCreationTime)), "2024-05-01T10:34:56Z");
  EXPECT_EQ(Iso8601(*values.time(kTagLastModificationTime)), "2024-05-02T10:34:56Z");
  EXPECT_TRUE(set.troubles().empty());
  TnefProperties cut;
  AddAttachmentValue({.id = kAttributeAttachData, .bytes = "by", .isCutOff = true}, cut);
  ASSERT_EQ(cut.troubles().size(), 1u);
  EXPECT_EQ(cut.troubles()[0].reason, "the bytes of the attachment are cut off");
}

}  // namespace
}  // namespace tarn::archive::tnef
