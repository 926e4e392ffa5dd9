#include "archive/writers/RecurrencePattern.h"

#include <gtest/gtest.h>

#include "archive/writers/CalendarBytes.h"

namespace tarn::archive {
namespace {

constexpr int64_t kMay1 = 1714521600;  // 2024-05-01T00:00:00
constexpr int64_t kDay = 86400;

std::string RuleOf(const PatternBytes& pattern) {
  const auto read = ReadRecurrence(pattern.bytes(), false);
  return read ? read->rule : "none";
}

TEST(RecurrencePatternTest, ReadsRules) {
  EXPECT_EQ(RuleOf({}), "FREQ=DAILY");
  EXPECT_EQ(RuleOf({.period = 4320}), "FREQ=DAILY;INTERVAL=3");
  EXPECT_EQ(RuleOf({.frequency = 0x200B, .type = 1, .period = 1, .numbers = {0x2A}}),
            "FREQ=WEEKLY;BYDAY=MO,WE,FR");
  EXPECT_EQ(
      RuleOf({.frequency = 0x200B, .type = 1, .period = 2, .numbers = {0x41}, .firstDayOfWeek = 1}),
      "FREQ=WEEKLY;INTERVAL=2;BYDAY=SU,SA;WKST=MO");
  EXPECT_EQ(RuleOf({.frequency = 0x200A, .type = 1, .period = 1, .numbers = {0x3E}}),
            "FREQ=WEEKLY;BYDAY=MO,TU,WE,TH,FR");
  EXPECT_EQ(RuleOf({.frequency = 0x200C, .type = 2, .period = 1, .numbers = {15}}),
            "FREQ=MONTHLY;BYMONTHDAY=15");
  EXPECT_EQ(RuleOf({.frequency = 0x200C, .type = 2, .period = 2, .numbers = {30}}),
            "FREQ=MONTHLY;INTERVAL=2;BYMONTHDAY=28,29,30;BYSETPOS=-1");
  EXPECT_EQ(RuleOf({.frequency = 0x200C, .type = 4, .period = 1, .numbers = {31}}),
            "FREQ=MONTHLY;BYMONTHDAY=-1");
  EXPECT_EQ(RuleOf({.frequency = 0x200C, .type = 3, .period = 1, .numbers = {4, 2}}),
            "FREQ=MONTHLY;BYDAY=2TU");
  EXPECT_EQ(RuleOf({.frequency = 0x200C, .type = 3, .period = 3, .numbers = {0x3E, 5}}),
            "FREQ=MONTHLY;INTERVAL=3;BYDAY=MO,TU,WE,TH,FR;BYSETPOS=-1");
  EXPECT_EQ(RuleOf({.frequency = 0x200D, .type = 2, .period = 12, .numbers = {1}}),
            "FREQ=YEARLY;BYMONTH=5;BYMONTHDAY=1");
  EXPECT_EQ(RuleOf({.frequency = 0x200D, .type = 3, .period = 24, .numbers = {1, 5}}),
            "FREQ=YEARLY;INTERVAL=2;BYMONTH=5;BYDAY=-1SU");
}

TEST(RecurrencePatternTest, TakesNoOtherPatterns) {
  EXPECT_EQ(RuleOf({.frequency = 0x2009}), "none");
  EXPECT_EQ(RuleOf({.frequency = 0x200E}), "none");
  EXPECT_EQ(RuleOf({.type = 10}), "none");
  EXPECT_EQ(RuleOf({.calendar = 6}), "none");
  EXPECT_EQ(RuleOf({.period = 0}), "none");
  EXPECT_EQ(RuleOf({.period = 7}), "none");
  EXPECT_EQ(RuleOf({.frequency = 0x200B, .type = 1, .period = 1, .numbers = {0}}), "none");
  EXPECT_EQ(RuleOf({.frequency = 0x200C, .type = 2, .period = 1, .numbers = {0}}), "none");
  EXPECT_EQ(RuleOf({.frequency = 0x200C, .type = 3, .period = 1, .numbers = {0, 1}}), "none");
  EXPECT_EQ(RuleOf({.frequency = 0x200C, .type = 3, .period = 1, .numbers = {1, 0}}), "none");
  EXPECT_FALSE(ReadRecurrence("", false).has_value());
  std::string odd = PatternBytes{}.bytes();
  odd[0] = 5;
  EXPECT_FALSE(ReadRecurrence(odd, false).has_value());
}

TEST(RecurrencePatternTest, NeedsAllOfTheFirstPart) {
  const std::string bytes = PatternBytes{.deleted = {Minutes(2024, 5, 2)}}.bytes();
  for (size_t size = 0; size < bytes.size(); ++size) {
    EXPECT_FALSE(ReadRecurrence(bytes.substr(0, size), false).has_value()) << size;
  }
  EXPECT_TRUE(ReadRecurrence(bytes, false).has_value());
}

TEST(RecurrencePatternTest, ReadsTheEnd) {
  const auto never = ReadRecurrence(PatternBytes{}.bytes(), false);
  EXPECT_FALSE(never->count || never->lastDay);
  const auto counted = ReadRecurrence(PatternBytes{.end = 0x2022, .count = 7}.bytes(), false);
  EXPECT_EQ(counted->count, 7u);
  const auto dated =
      ReadRecurrence(PatternBytes{.end = 0x2021, .lastDay = Minutes(2024, 5, 9)}.bytes(), false);
  EXPECT_EQ(dated->lastDay, kMay1 + 8 * kDay);
  EXPECT_FALSE(dated->count.has_value());
}

TEST(RecurrencePatternTest, ReadsDaysAndExceptions) {
  PatternBytes pattern;
  pattern.deleted = {Minutes(2024, 5, 2), Minutes(2024, 5, 3), Minutes(2024, 5, 4)};
  pattern.modified = {Minutes(2024, 5, 5), Minutes(2024, 5, 6)};
  ExceptionBytes moved{
      Minutes(2024, 5, 5, 600), Minutes(2024, 5, 5, 630), Minutes(2024, 5, 3, 540), 0x1FF, "", ""};
  moved.fields = Text8("sub?") + LittleEndian(1, 4) + LittleEndian(2, 4) + LittleEndian(3, 4) +
                 Text8("loc?") + LittleEndian(1, 4) + LittleEndian(5, 4) + LittleEndian(1, 4) +
                 LittleEndian(6, 4);
  moved.wideTexts = Text16(u"s\u00FC") + Text16(u"l\u00F6");
  const ExceptionBytes other{
      Minutes(2024, 5, 6, 600), Minutes(2024, 5, 6, 630), Minutes(2024, 5, 4, 540), 0, "", ""};
  for (const uint32_t version : {0x3008u, 0x3009u}) {
    const auto read = ReadRecurrence(AppointmentBytes(pattern, 540, {moved, other}, version), true);
    ASSERT_TRUE(read.has_value());
    EXPECT_TRUE(read->isWhole);
    EXPECT_EQ(read->firstDay, kMay1);
    EXPECT_EQ(read->startMinute, 540);
    EXPECT_EQ(read->deletedDays,
              (std::vector<int64_t>{kMay1 + kDay, kMay1 + 2 * kDay, kMay1 + 3 * kDay}));
    EXPECT_EQ(read->modifiedDays, (std::vector<int64_t>{kMay1 + 4 * kDay, kMay1 + 5 * kDay}));
    ASSERT_EQ(read->exceptions.size(), 2u);
    const RecurrenceException& first = read->exceptions[0];
    EXPECT_EQ(first.start, kMay1 + 4 * kDay + 36000);
    EXPECT_EQ(first.end, kMay1 + 4 * kDay + 37800);
    EXPECT_EQ(first.original, kMay1 + 2 * kDay + 32400);
    EXPECT_EQ(first.subject, "sü");
    EXPECT_EQ(first.location, "lö");
    EXPECT_EQ(first.busyStatus, 1u);
    EXPECT_EQ(first.isAllDay, true);
    const RecurrenceException& second = read->exceptions[1];
    EXPECT_FALSE(second.subject || second.location || second.busyStatus || second.isAllDay);
  }
}

TEST(RecurrencePatternTest, KeepsExceptionsUpToADamage) {
  ExceptionBytes exception{Minutes(2024, 5, 5), Minutes(2024, 5, 5), Minutes(2024, 5, 3), 1,
                           Text8("eight"),      Text16(u"wide")};
  const std::string bytes = AppointmentBytes({}, 0, {exception, exception});
  size_t most = 0;
  for (size_t size = PatternBytes{}.bytes().size(); size < bytes.size(); ++size) {
    const auto read = ReadRecurrence(bytes.substr(0, size), true);
    ASSERT_TRUE(read.has_value()) << size;
    EXPECT_EQ(read->rule, "FREQ=DAILY");
    EXPECT_GE(read->exceptions.size(), most);
    most = read->exceptions.size();
    EXPECT_TRUE(!read->isWhole || read->exceptions.size() == 2) << size;
    for (const RecurrenceException& kept : read->exceptions) {
      EXPECT_TRUE(kept.subject == "eight" || kept.subject == "wide") << *kept.subject;
    }
  }
  EXPECT_EQ(most, 2u);
}

}  // namespace
}  // namespace tarn::archive
