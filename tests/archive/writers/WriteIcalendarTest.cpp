#include <gtest/gtest.h>

#include "archive/writers/CalendarBytes.h"
#include "archive/writers/FakeItem.h"
#include "archive/writers/NamedValues.h"
#include "archive/writers/Writers.h"

namespace tarn::archive {
namespace {

constexpr int64_t kMoment = 1714559696;  // 2024-05-01T10:34:56Z
constexpr int64_t kNine = 1714546800;    // 2024-05-01T07:00:00Z, 09:00 in Berlin

struct Calendar {
  mapi::FakeDescription description;
  FakeContent content;
  size_t lost = 0;

  explicit Calendar(std::string messageClass) {
    content.fields.messageClass = std::move(messageClass);
    content.fields.subject = "Talk";
    description.properties.time(0x3008, kMoment);
  }

  uint16_t named(const PropertySetId& set, uint32_t number) {
    const auto id = static_cast<uint16_t>(0x8000 + description.names.size());
    description.names.push_back({{set, number, u""}, id});
    return id;
  }
  uint16_t appointment(uint32_t number) { return named(kAppointmentProperties, number); }

  std::string text() {
    mapi::FakeMessage message(description);
    content.message = &message;
    FakeItem item(content);
    TextSink sink;
    const Written written = WriteIcalendar(item, sink);
    EXPECT_FALSE(written.full.has_value());
    EXPECT_EQ(written.lost.size(), lost);
    return sink.text;
  }
};

std::string Object(const std::string& lines) {
  return "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//Tarn//Archive//EN\r\n" + lines +
         "END:VCALENDAR\r\n";
}

constexpr const char* kCommon =
    "UID:item-2097188\r\nDTSTAMP:20240501T103456Z\r\nLAST-MODIFIED:20240501T103456Z\r\n"
    "SUMMARY:Talk\r\n";
constexpr const char* kConfirmed = "STATUS:CONFIRMED\r\nTRANSP:OPAQUE\r\n";

constexpr const char* kBerlin =
    "BEGIN:VTIMEZONE\r\nTZID:W. Europe\r\n"
    "BEGIN:STANDARD\r\nDTSTART:19701025T030000\r\nTZOFFSETFROM:+0200\r\nTZOFFSETTO:+0100\r\n"
    "RRULE:FREQ=YEARLY;BYDAY=-1SU;BYMONTH=10\r\nEND:STANDARD\r\n"
    "BEGIN:DAYLIGHT\r\nDTSTART:19700329T020000\r\nTZOFFSETFROM:+0100\r\nTZOFFSETTO:+0200\r\n"
    "RRULE:FREQ=YEARLY;BYDAY=-1SU;BYMONTH=3\r\nEND:DAYLIGHT\r\nEND:VTIMEZONE\r\n";

void InBerlin(Calendar& calendar) {
  calendar.description.properties.binary(
      calendar.appointment(0x825E), DefinitionBytes(u"W. Europe", {RuleBytes(2, BerlinBiases())}));
}

void AtNine(Calendar& calendar) {
  calendar.description.properties.time(calendar.appointment(0x820D), kNine)
      .time(calendar.appointment(0x820E), kNine + 3600);
}

TEST(WriteIcalendarTest, WritesAppointments) {
  Calendar calendar("IPM.Appointment");
  AtNine(calendar);
  calendar.content.bodies.text = "a, b;\r\nc\r\n";
  calendar.description.properties.text(calendar.appointment(0x8208), u"Room 1")
      .integer(calendar.appointment(0x8205), 0)
      .integer(0x0017, 2)
      .integer(0x0036, 2)
      .time(0x3007, kMoment - 60);
  EXPECT_EQ(calendar.text(),
            Object("BEGIN:VEVENT\r\nUID:item-2097188\r\nDTSTAMP:20240501T103456Z\r\n"
                   "CREATED:20240501T103356Z\r\nLAST-MODIFIED:20240501T103456Z\r\n"
                   "SUMMARY:Talk\r\nDESCRIPTION:a\\, b\\;\\nc\r\nPRIORITY:1\r\nCLASS:PRIVATE\r\n"
                   "LOCATION:Room 1\r\nDTSTART:20240501T070000Z\r\nDTEND:20240501T080000Z\r\n"
                   "STATUS:CONFIRMED\r\nTRANSP:TRANSPARENT\r\nEND:VEVENT\r\n"));
}

TEST(WriteIcalendarTest, TellsTimesByTheClockOfTheZone) {
  Calendar calendar("IPM.Appointment");
  AtNine(calendar);
  InBerlin(calendar);
  EXPECT_EQ(calendar.text(), Object(std::string(kBerlin) + "BEGIN:VEVENT\r\n" + kCommon +
                                    "DTSTART;TZID=W. Europe:20240501T090000\r\n"
                                    "DTEND;TZID=W. Europe:20240501T100000\r\n" +
                                    kConfirmed + "END:VEVENT\r\n"));
}

TEST(WriteIcalendarTest, TellsZonesThatNeverChange) {
  Calendar calendar("IPM.Appointment");
  AtNine(calendar);
  calendar.description.properties
      .binary(calendar.appointment(0x8233), LittleEndian(300, 4) + std::string(44, '\0'))
      .text(calendar.appointment(0x8234), u"East");
  EXPECT_EQ(calendar.text(),
            Object("BEGIN:VTIMEZONE\r\nTZID:East\r\nBEGIN:STANDARD\r\nDTSTART:19700101T000000\r\n"
                   "TZOFFSETFROM:-0500\r\nTZOFFSETTO:-0500\r\nEND:STANDARD\r\nEND:VTIMEZONE\r\n"
                   "BEGIN:VEVENT\r\n" +
                   std::string(kCommon) +
                   "DTSTART;TZID=East:20240501T020000\r\nDTEND;TZID=East:20240501T030000\r\n" +
                   kConfirmed + "END:VEVENT\r\n"));
}

TEST(WriteIcalendarTest, TellsWholeDays) {
  Calendar calendar("IPM.Appointment");
  calendar.description.properties.boolean(calendar.appointment(0x8215), true)
      .time(calendar.appointment(0x820D), kNine - 9 * 3600)
      .time(calendar.appointment(0x820E), kNine + 15 * 3600);
  const std::string expected = Object("BEGIN:VEVENT\r\n" + std::string(kCommon) +
                                      "DTSTART;VALUE=DATE:20240501\r\n"
                                      "DTEND;VALUE=DATE:20240502\r\n" +
                                      kConfirmed + "END:VEVENT\r\n");
  EXPECT_EQ(calendar.text(), expected);
  InBerlin(calendar);
  EXPECT_EQ(calendar.text(), expected);
}

TEST(WriteIcalendarTest, WritesMeetings) {
  Calendar calendar("IPM.Schedule.Meeting.Request");
  AtNine(calendar);
  calendar.content.fields.from = {"Ann \"A\"", "ann@example.com"};
  calendar.content.fields.to = {{"Bob", "bob@example.com"}, {"Cid", ""}};
  calendar.content.fields.cc = {{"", "/O=ORG/CN=DAN"}};
  calendar.content.fields.bcc = {{"Room", "room@example.com"}};
  calendar.description.properties.integer(calendar.appointment(0x8217), 5)
      .integer(calendar.appointment(0x8201), 3)
      .boolean(calendar.named(kCommonProperties, 0x8503), true)
      .integer(calendar.named(kCommonProperties, 0x8501), 30)
      .binary(calendar.named(kMeetingProperties, 0x0023), "\x04\xAB");
  std::string common = kCommon;
  common.replace(0, common.find('\r'), "UID:04AB");
  EXPECT_EQ(calendar.text(),
            Object("METHOD:REQUEST\r\nBEGIN:VEVENT\r\n" + common +
                   "DTSTART:20240501T070000Z\r\nDTEND:20240501T080000Z\r\n"
                   "STATUS:CANCELLED\r\nTRANSP:OPAQUE\r\nSEQUENCE:3\r\n"
                   "ORGANIZER;CN=Ann 'A':mailto:ann@example.com\r\n"
                   "ATTENDEE;CN=Bob;ROLE=REQ-PARTICIPANT:mailto:bob@example.com\r\n"
                   "ATTENDEE;CN=Cid;ROLE=REQ-PARTICIPANT:invalid:nomail\r\n"
                   "ATTENDEE;CN=/O=ORG/CN=DAN;ROLE=OPT-PARTICIPANT:invalid:nomail\r\n"
                   "ATTENDEE;CN=Room;ROLE=NON-PARTICIPANT:mailto:room@example.com\r\n"
                   "BEGIN:VALARM\r\nACTION:DISPLAY\r\nDESCRIPTION:Talk\r\nTRIGGER:-PT30M\r\n"
                   "END:VALARM\r\nEND:VEVENT\r\n"));
}

TEST(WriteIcalendarTest, NamesTheMethodOfMeetings) {
  for (const auto& [messageClass, method] :
       {std::pair{"IPM.Schedule.Meeting.Canceled", "METHOD:CANCEL\r\n"},
        {"IPM.Schedule.Meeting.Resp.Pos", "METHOD:REPLY\r\n"}}) {
    EXPECT_NE(Calendar(messageClass).text().find(method), std::string::npos) << messageClass;
  }
  EXPECT_EQ(Calendar("IPM.Schedule.Meeting.Notification").text().find("METHOD"), std::string::npos);
}

TEST(WriteIcalendarTest, WritesResponses) {
  for (const auto& [kind, answer] : {std::pair{"Pos", "ACCEPTED"},
                                     {"Neg", "DECLINED"},
                                     {"Tent", "TENTATIVE"},
                                     {"Other", "NEEDS-ACTION"}}) {
    Calendar calendar(std::string("IPM.Schedule.Meeting.Resp.") + kind);
    AtNine(calendar);
    calendar.content.fields.from = {"Bob", "bob@example.com"};
    calendar.content.fields.to = {{"Ann", "ann@example.com"}, {"Cid", "cid@example.com"}};
    calendar.description.properties.boolean(calendar.named(kCommonProperties, 0x8503), true);
    EXPECT_EQ(calendar.text(),
              Object("METHOD:REPLY\r\nBEGIN:VEVENT\r\n" + std::string(kCommon) +
                     "DTSTART:20240501T070000Z\r\nDTEND:20240501T080000Z\r\n" + kConfirmed +
                     "ORGANIZER;CN=Ann:mailto:ann@example.com\r\n"
                     "ATTENDEE;CN=Bob;PARTSTAT=" +
                     answer + ":mailto:bob@example.com\r\nEND:VEVENT\r\n"));
  }
}

TEST(WriteIcalendarTest, KnowsTheDayOfAMidnightOfAnyClock) {
  // From 14 hours east of Greenwich, where that is of another day than Hawaii, to 9:30 west.
  for (const int64_t offset : {13 * 60 + 45, 13 * 60, 720, 330, 0, -300, -570, -600}) {
    Calendar calendar("IPM.Appointment");
    calendar.description.properties.boolean(calendar.appointment(0x8215), true)
        .time(calendar.appointment(0x820D), kNine - 7 * 3600 - offset * 60);
    EXPECT_NE(calendar.text().find("DTSTART;VALUE=DATE:20240501\r\n"), std::string::npos) << offset;
  }
}

// Occurrences of the 2nd and the 3rd of May, at their time and as a day.
std::string BytesOfMixedSeries() {
  PatternBytes pattern;
  pattern.deleted = {Minutes(2024, 5, 2), Minutes(2024, 5, 3)};
  pattern.modified = pattern.deleted;
  return AppointmentBytes(pattern, 0,
                          {{Minutes(2024, 5, 2, 600), Minutes(2024, 5, 2, 660), Minutes(2024, 5, 2),
                            0x80, LittleEndian(0, 4), ""},
                           {Minutes(2024, 5, 3), Minutes(2024, 5, 4), Minutes(2024, 5, 3), 0x80,
                            LittleEndian(1, 4), ""}});
}

TEST(WriteIcalendarTest, TellsTheZoneOfAChangedOccurrenceAlone) {
  Calendar calendar("IPM.Appointment");
  calendar.description.properties.boolean(calendar.appointment(0x8215), true)
      .time(calendar.appointment(0x820D), kNine - 9 * 3600)
      .binary(calendar.appointment(0x8216), BytesOfMixedSeries());
  std::string text = calendar.text();
  EXPECT_EQ(text.find("VTIMEZONE"), std::string::npos);
  EXPECT_NE(text.find("RECURRENCE-ID;VALUE=DATE:20240502\r\nDTSTART:20240502T080000Z\r\n"),
            std::string::npos);
  EXPECT_NE(text.find("DTSTART;VALUE=DATE:20240503\r\n"), std::string::npos);
  InBerlin(calendar);
  text = calendar.text();
  EXPECT_NE(text.find(kBerlin), std::string::npos);
  EXPECT_NE(text.find("DTSTART;TZID=W. Europe:20240502T100000\r\n"), std::string::npos);
}

TEST(WriteIcalendarTest, TellsDaysOfChangedOccurrencesWithoutAZone) {
  Calendar calendar("IPM.Appointment");
  calendar.description.properties.time(calendar.appointment(0x820D), kNine - 9 * 3600)
      .binary(calendar.appointment(0x8216), BytesOfMixedSeries());
  EXPECT_NE(calendar.text().find("DTSTART;VALUE=DATE:20240503\r\n"), std::string::npos);
}

TEST(WriteIcalendarTest, DescribesChangedOccurrencesUpToALimit) {
  Calendar calendar("IPM.Appointment");
  AtNine(calendar);
  calendar.content.bodies.text = std::string(200000, 'x');
  PatternBytes pattern;
  std::vector<ExceptionBytes> exceptions;
  for (uint32_t day = 2; day < 12; ++day) {
    pattern.deleted.push_back(Minutes(2024, 5, day));
    exceptions.push_back(
        {Minutes(2024, 5, day, 600), Minutes(2024, 5, day, 660), Minutes(2024, 5, day), 0, "", ""});
  }
  pattern.modified = pattern.deleted;
  calendar.description.properties.binary(calendar.appointment(0x8216),
                                         AppointmentBytes(pattern, 540, exceptions));
  calendar.lost = 1;
  const std::string text = calendar.text();
  size_t descriptions = 0;
  for (size_t at = 0; (at = text.find("\r\nDESCRIPTION:", at)) != text.npos; ++at) ++descriptions;
  EXPECT_EQ(descriptions, 6u);
}

TEST(WriteIcalendarTest, KeepsTheIdThatCameByIcalendar) {
  Calendar calendar("IPM.Appointment");
  calendar.description.properties.binary(calendar.named(kMeetingProperties, 0x0003),
                                         std::string(40, 'x') +
                                             std::string("vCal-Uid\x01\0\0\0", 12) +
                                             "abc@example.com" + std::string(1, '\0'));
  EXPECT_NE(calendar.text().find("UID:abc@example.com\r\n"), std::string::npos);
}

TEST(WriteIcalendarTest, WritesRecurrencesWithTheirExceptions) {
  Calendar calendar("IPM.Appointment");
  AtNine(calendar);
  InBerlin(calendar);
  PatternBytes pattern{.frequency = 0x200B, .type = 1, .period = 1, .numbers = {0x08}};
  pattern.end = 0x2021;
  pattern.lastDay = Minutes(2024, 12, 18);
  pattern.deleted = {Minutes(2024, 5, 8), Minutes(2024, 5, 15)};
  pattern.modified = {Minutes(2024, 5, 16)};
  const ExceptionBytes moved{Minutes(2024, 5, 16, 600),
                             Minutes(2024, 5, 16, 630),
                             Minutes(2024, 5, 15, 540),
                             0x31,
                             Text8("x") + Text8("y") + LittleEndian(1, 4),
                             Text16(u"Other") + Text16(u"There")};
  calendar.description.properties.binary(calendar.appointment(0x8216),
                                         AppointmentBytes(pattern, 540, {moved}));
  std::string other = kCommon;
  other.replace(other.find("Talk"), 4, "Other");
  EXPECT_EQ(calendar.text(),
            Object(std::string(kBerlin) + "BEGIN:VEVENT\r\n" + kCommon +
                   "DTSTART;TZID=W. Europe:20240501T090000\r\n"
                   "DTEND;TZID=W. Europe:20240501T100000\r\n" +
                   kConfirmed +
                   "RRULE:FREQ=WEEKLY;UNTIL=20241218T080000Z;BYDAY=WE\r\n"
                   "EXDATE;TZID=W. Europe:20240508T090000\r\nEND:VEVENT\r\n"
                   "BEGIN:VEVENT\r\n" +
                   other +
                   "LOCATION:There\r\nRECURRENCE-ID;TZID=W. Europe:20240515T090000\r\n"
                   "DTSTART;TZID=W. Europe:20240516T100000\r\n"
                   "DTEND;TZID=W. Europe:20240516T103000\r\n"
                   "STATUS:TENTATIVE\r\nTRANSP:OPAQUE\r\nEND:VEVENT\r\n"));
}

TEST(WriteIcalendarTest, WritesRecurrencesInUtcWithoutAZone) {
  Calendar calendar("IPM.Appointment");
  AtNine(calendar);
  PatternBytes pattern;
  pattern.end = 0x2021;
  pattern.lastDay = Minutes(2024, 5, 9);
  pattern.deleted = {Minutes(2024, 5, 2)};
  calendar.description.properties.binary(calendar.appointment(0x8216),
                                         AppointmentBytes(pattern, 540, {}));
  EXPECT_EQ(calendar.text(),
            Object("BEGIN:VEVENT\r\n" + std::string(kCommon) +
                   "DTSTART:20240501T070000Z\r\nDTEND:20240501T080000Z\r\n" + kConfirmed +
                   "RRULE:FREQ=DAILY;UNTIL=20240509T070000Z\r\n"
                   "EXDATE:20240502T070000Z\r\nEND:VEVENT\r\n"));
}

TEST(WriteIcalendarTest, WritesRecurringWholeDays) {
  Calendar calendar("IPM.Appointment");
  calendar.description.properties.boolean(calendar.appointment(0x8215), true);
  PatternBytes pattern{.end = 0x2021};
  pattern.lastDay = Minutes(2024, 5, 9);
  calendar.description.properties.binary(calendar.appointment(0x8216),
                                         AppointmentBytes(pattern, 0, {}));
  EXPECT_NE(calendar.text().find("DTSTART;VALUE=DATE:20240501\r\n"), std::string::npos);
  EXPECT_NE(calendar.text().find("RRULE:FREQ=DAILY;UNTIL=20240509\r\n"), std::string::npos);
}

TEST(WriteIcalendarTest, TellsRecurrencesThatCannotBeRead) {
  Calendar calendar("IPM.Appointment");
  const uint16_t id = calendar.appointment(0x8216);
  calendar.description.properties.binary(id, "x");
  calendar.lost = 1;
  EXPECT_EQ(calendar.text(),
            Object("BEGIN:VEVENT\r\n" + std::string(kCommon) + kConfirmed + "END:VEVENT\r\n"));
  calendar.description.properties.binary(id, PatternBytes{}.bytes());
  EXPECT_NE(calendar.text().find("RRULE:FREQ=DAILY\r\n"), std::string::npos);
}

TEST(WriteIcalendarTest, WritesTasks) {
  Calendar calendar("IPM.Task");
  const auto task = [&](uint32_t number) { return calendar.named(kTaskProperties, number); };
  calendar.description.properties.integer(task(0x8101), 1)
      .put(task(0x8102), mapi::kTypeFloat64, LittleEndian(0x3FD0000000000000, 8))
      .time(task(0x8104), 1714521600)
      .time(task(0x8105), 1714608000)
      .time(task(0x810F), kMoment)
      .binary(task(0x8116), PatternBytes{.end = 0x2022, .count = 3}.bytes())
      .integer(0x0017, 0)
      .integer(0x0036, 3);
  EXPECT_EQ(calendar.text(),
            Object("BEGIN:VTODO\r\n" + std::string(kCommon) +
                   "PRIORITY:9\r\nCLASS:CONFIDENTIAL\r\n"
                   "DTSTART;VALUE=DATE:20240501\r\nDUE;VALUE=DATE:20240502\r\n"
                   "COMPLETED:20240501T103456Z\r\nSTATUS:IN-PROCESS\r\nPERCENT-COMPLETE:25\r\n"
                   "RRULE:FREQ=DAILY;COUNT=3\r\nEND:VTODO\r\n"));
}

TEST(WriteIcalendarTest, WritesTheReminderOfATask) {
  Calendar calendar("IPM.Task");
  const uint16_t isSet = calendar.named(kCommonProperties, 0x8503);
  calendar.description.properties.boolean(isSet, true)
      .time(calendar.named(kCommonProperties, 0x8502), kNine);
  EXPECT_EQ(calendar.text(),
            Object("BEGIN:VTODO\r\n" + std::string(kCommon) +
                   "BEGIN:VALARM\r\nACTION:DISPLAY\r\nDESCRIPTION:Talk\r\n"
                   "TRIGGER;VALUE=DATE-TIME:20240501T070000Z\r\nEND:VALARM\r\nEND:VTODO\r\n"));
  Calendar without("IPM.Task");
  without.description.properties.time(without.named(kCommonProperties, 0x8502), kNine);
  EXPECT_EQ(without.text(), Object("BEGIN:VTODO\r\n" + std::string(kCommon) + "END:VTODO\r\n"));
}

TEST(WriteIcalendarTest, WritesTasksThatTellLittle) {
  Calendar calendar("IPM.Task");
  const auto task = [&](uint32_t number) { return calendar.named(kTaskProperties, number); };
  PatternBytes pattern{.end = 0x2021};
  pattern.lastDay = Minutes(2024, 5, 9);
  calendar.description.properties.integer(task(0x8101), 2).binary(task(0x8116), pattern.bytes());
  EXPECT_EQ(calendar.text(), Object("BEGIN:VTODO\r\n" + std::string(kCommon) +
                                    "DTSTART;VALUE=DATE:20240501\r\nSTATUS:COMPLETED\r\n"
                                    "RRULE:FREQ=DAILY;UNTIL=20240509\r\nEND:VTODO\r\n"));
  Calendar damaged("IPM.TaskRequest");
  damaged.description.properties.binary(damaged.named(kTaskProperties, 0x8116), "x");
  damaged.lost = 1;
  EXPECT_EQ(damaged.text(), Object("BEGIN:VTODO\r\n" + std::string(kCommon) + "END:VTODO\r\n"));
}

TEST(WriteIcalendarTest, GivesTheCalendarThatAMailCarries) {
  FakeContent content;
  content.attach("a.txt", "text/plain", "no");
  content.attach("invite.ics", "text/calendar", "BEGIN:VCALENDAR\r\n...");
  content.troubles = {{TroubleKind::Damaged, "x"}};
  FakeItem item(content);
  TextSink sink;
  EXPECT_EQ(WriteIcalendar(item, sink).lost.size(), 1u);
  EXPECT_EQ(sink.text, "BEGIN:VCALENDAR\r\n...");
  content.broken = {1};
  TextSink broken;
  EXPECT_EQ(WriteIcalendar(item, broken).lost.size(), 2u);
}

TEST(WriteIcalendarTest, GivesTheCalendarOfAMailInUtf8) {
  FakeContent content;
  content.attach("", "text/calendar", "SUMMARY:Caf\xE9").charset = "ISO-8859-1";
  FakeItem item(content);
  TextSink sink;
  EXPECT_TRUE(WriteIcalendar(item, sink).lost.empty());
  EXPECT_EQ(sink.text, "SUMMARY:Café");
  content.broken = {0};
  TextSink broken;
  EXPECT_EQ(WriteIcalendar(item, broken).lost.size(), 1u);
  EXPECT_EQ(broken.text, "SUMMARY:Café");
}

TEST(WriteIcalendarTest, WritesItemsWithoutProperties) {
  FakeContent content;
  content.fields.sent = Moment{kMoment, 120};
  FakeItem item(content);
  TextSink sink;
  WriteIcalendar(item, sink);
  EXPECT_EQ(sink.text, Object("BEGIN:VEVENT\r\nUID:item-2097188\r\nDTSTAMP:20240501T103456Z\r\n" +
                              std::string(kConfirmed) + "END:VEVENT\r\n"));
  SmallSink small(5);
  EXPECT_TRUE(WriteIcalendar(item, small).full.has_value());
}

}  // namespace
}  // namespace tarn::archive
