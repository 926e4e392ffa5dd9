#include "archive/export/Fingerprint.h"

#include <gtest/gtest.h>

#include "archive/mapi/FakeMessage.h"
#include "archive/writers/FakeItem.h"

namespace tarn::archive {
namespace {

Fingerprint Of(const FakeContent& content, const std::vector<std::string>& attachments = {}) {
  FakeItem item(content);
  return FingerprintOf(item, attachments);
}

// An item of a store or MSG file.
struct Stored {
  mapi::FakeDescription description;
  FakeContent content;

  explicit Stored(const std::string& messageClass) {
    content.fields.messageClass = messageClass;
    content.fields.subject = "Ann";
  }

  Fingerprint fingerprint() {
    mapi::FakeMessage message(description);
    content.message = &message;
    const Fingerprint made = Of(content);
    content.message = nullptr;
    return made;
  }
};

TEST(FingerprintTest, IsOfWhatAMailSaysAndNotOfWhereItIs) {
  FakeContent one("1");
  one.fields.messageId = "a@example.com";
  one.bodies.text = "Hello";
  FakeContent other("2");
  other.fields.messageId = one.fields.messageId;
  other.bodies.text = "Hello";
  EXPECT_EQ(Of(one).sum, Of(other).sum);
  EXPECT_TRUE(Of(one).isTelling);
  other.bodies.text = "Hullo";
  EXPECT_NE(Of(one).sum, Of(other).sum);
  EXPECT_NE(Of(one, {"a"}).sum, Of(one, {"b"}).sum);
}

TEST(FingerprintTest, TellsNothingOfAMailWithASubjectAlone) {
  FakeContent content;
  content.fields.subject = "Plans";
  content.fields.from.address = "ann@example.com";
  EXPECT_FALSE(Of(content).isTelling);
  EXPECT_TRUE(Of(content, {"x"}).isTelling);
  content.bodies.text = "Hello";
  EXPECT_TRUE(Of(content).isTelling);
}

TEST(FingerprintTest, IsOfTheFieldsOfAContact) {
  Stored ann("IPM.Contact");
  ann.description.properties.text(0x3001, u"Ann").text(0x3A08, u"1");
  Stored other("IPM.Contact");
  other.description.properties.text(0x3001, u"Ann").text(0x3A08, u"2");
  EXPECT_NE(ann.fingerprint().sum, other.fingerprint().sum);
  EXPECT_TRUE(ann.fingerprint().isTelling);
  // What only the one copy of a contact has: its key, and when it was changed.
  Stored copy("IPM.Contact");
  copy.description.properties.text(0x3001, u"Ann")
      .text(0x3A08, u"1")
      .binary(0x300B, "key")
      .time(0x3008, 1'700'000'000);
  EXPECT_EQ(ann.fingerprint().sum, copy.fingerprint().sum);
}

TEST(FingerprintTest, IsOfWhenAnAppointmentIs) {
  const auto appointmentAt = [](int64_t seconds) {
    Stored made("IPM.Appointment");
    constexpr std::array<uint8_t, 16> kSet = {0x02, 0x20, 0x06, 0, 0, 0, 0, 0,
                                              0xC0, 0,    0,    0, 0, 0, 0, 0x46};
    made.description.names.push_back({{kSet, 0x820D, u""}, 0x8000});
    made.description.properties.time(0x8000, seconds);
    return made.fingerprint().sum;
  };
  constexpr int64_t kMonday = 1'714'550'400;
  constexpr int64_t kHour = 3600;
  EXPECT_EQ(appointmentAt(kMonday), appointmentAt(kMonday));
  EXPECT_NE(appointmentAt(kMonday), appointmentAt(kMonday + kHour));
}

// Some programs write no more than these.
TEST(FingerprintTest, IsOfTheTimesThatEveryAppointmentHas) {
  const auto startingAt = [](int64_t seconds) {
    Stored made("IPM.Appointment");
    made.description.properties.time(0x0060, seconds).time(0x0061, seconds + 3600);
    return made.fingerprint().sum;
  };
  EXPECT_EQ(startingAt(1'714'550'400), startingAt(1'714'550'400));
  EXPECT_NE(startingAt(1'714'550'400), startingAt(1'715'155'200));
}

TEST(FingerprintTest, IsOfFieldsThatSomebodyMadeAndOfClasses) {
  const auto withField = [](const std::string& messageClass, const std::u16string& value) {
    Stored made(messageClass);
    made.description.names.push_back({{{}, 0, u"Account"}, 0x8000});
    made.description.properties.text(0x8000, value);
    return made.fingerprint();
  };
  for (const char* const messageClass : {"IPM.Contact.Client", "IPM.DistList"}) {
    EXPECT_EQ(withField(messageClass, u"1").sum, withField(messageClass, u"1").sum);
    EXPECT_NE(withField(messageClass, u"1").sum, withField(messageClass, u"2").sum);
  }
  EXPECT_NE(withField("IPM.DistList", u"1").sum, withField("IPM.Activity", u"1").sum);
  EXPECT_FALSE(withField("IPM.DistList", u"1").isTelling);
}

}  // namespace
}  // namespace tarn::archive
