#include <gtest/gtest.h>

#include "archive/mapi/FakeMessage.h"
#include "archive/writers/CalendarBytes.h"
#include "archive/writers/FakeItem.h"
#include "archive/writers/ItemDetails.h"
#include "archive/writers/NamedValues.h"
#include "archive/writers/Writers.h"

namespace tarn::archive {
namespace {

constexpr int64_t kMoment = 1714546800;  // 2024-05-01T07:00:00Z

class DetailFilesTest : public ::testing::Test {
 protected:
  uint16_t named(const PropertySetId& set, uint32_t number) {
    const auto id = static_cast<uint16_t>(0x8000 + description_.names.size());
    description_.names.push_back({{set, number, u""}, id});
    return id;
  }

  // Each Wednesday at nine in Berlin, but for one that is gone and one that is the day after.
  void makeAppointment() {
    content_.fields.messageClass = "IPM.Appointment";
    content_.fields.subject = "Talk";
    mapi::FakeProperties& properties = description_.properties;
    properties.time(named(kAppointmentProperties, 0x820D), kMoment);
    properties.time(named(kAppointmentProperties, 0x820E), kMoment + 3600);
    properties.text(named(kAppointmentProperties, 0x8208), u"Room <5>");
    properties.binary(named(kAppointmentProperties, 0x8233), BerlinStruct());
    properties.text(named(kAppointmentProperties, 0x8234), u"W. Europe");
    PatternBytes pattern{.frequency = 0x200B, .type = 1, .period = 1, .numbers = {0x08}};
    pattern.end = 0x2021;
    pattern.lastDay = Minutes(2024, 12, 18);
    pattern.deleted = {Minutes(2024, 5, 8), Minutes(2024, 5, 15)};
    pattern.modified = {Minutes(2024, 5, 16)};
    const ExceptionBytes moved{
        Minutes(2024, 5, 16, 600), Minutes(2024, 5, 16, 630), Minutes(2024, 5, 15, 540), 0, {}, {}};
    properties.binary(named(kAppointmentProperties, 0x8216),
                      AppointmentBytes(pattern, 540, {moved}));
  }

  std::string html() {
    mapi::FakeMessage message(description_);
    content_.message = &message;
    FakeItem item(content_);
    TextSink sink;
    EXPECT_FALSE(WriteHtml(item, {}, sink).full);
    return sink.text;
  }
  std::string text() {
    mapi::FakeMessage message(description_);
    content_.message = &message;
    FakeItem item(content_);
    TextSink sink;
    EXPECT_FALSE(WriteText(item, sink).full);
    return sink.text;
  }

  mapi::FakeDescription description_;
  FakeContent content_;
};

TEST_F(DetailFilesTest, TellWhenAnAppointmentIsByItsZone) {
  makeAppointment();
  EXPECT_EQ(text(),
            "Subject: Talk\n"
            "Start: Wed, 1 May 2024 09:00:00 +0200\nEnd: Wed, 1 May 2024 10:00:00 +0200\n"
            "Location: Room <5>\n"
            "Recurrence: every week on Wednesday, until 2024-12-18; not on 1 day; otherwise on 1 "
            "day\n\n");
  const std::string page = html();
  EXPECT_NE(page.find("<tr><th>Location</th><td>Room &lt;5&gt;</td></tr>\n"), std::string::npos)
      << page;
}

TEST_F(DetailFilesTest, BreakTheLinesOfAddresses) {
  content_.fields.messageClass = "IPM.Contact";
  description_.properties.text(named(kContactProperties, 0x801A), u"Road 1\r\nTown\u0007");
  EXPECT_EQ(text(), "Home address: Road 1, Town\n\n");
  const std::string page = html();
  EXPECT_NE(page.find("<tr><th>Home address</th><td>Road 1<br>\nTown</td></tr>\n"),
            std::string::npos)
      << page;
}

TEST_F(DetailFilesTest, TellHowOftenATaskRecurs) {
  content_.fields.messageClass = "IPM.Task";
  PatternBytes pattern{.end = 0x2022};
  pattern.count = 3;
  description_.properties.binary(named(kTaskProperties, 0x8116), pattern.bytes());
  description_.properties.boolean(named(kCommonProperties, 0x8503), true);
  description_.properties.time(named(kCommonProperties, 0x8502), kMoment);
  EXPECT_EQ(text(), "Recurrence: every day, 3 times\nReminder: Wed, 1 May 2024 07:00:00 UTC\n\n");
}

}  // namespace
}  // namespace tarn::archive
