#include "archive/writers/CalendarZone.h"

#include <gtest/gtest.h>

#include "archive/writers/CalendarBytes.h"

namespace tarn::archive {
namespace {

constexpr int64_t kHour = 3600;
constexpr int64_t kSpring = 1711846800;  // 2024-03-31T01:00:00Z
constexpr int64_t kAutumn = 1729990800;  // 2024-10-27T01:00:00Z

TEST(CalendarZoneTest, ReadsStructs) {
  const auto zone = ReadZoneStruct(BerlinStruct(), "Berlin");
  ASSERT_TRUE(zone.has_value());
  EXPECT_EQ(zone->name, "Berlin");
  EXPECT_EQ(zone->standardOffset, 60);
  EXPECT_EQ(zone->daylightOffset, 120);
  EXPECT_TRUE(zone->changes());
  EXPECT_EQ(TimeOfChange(zone->toDaylight, 2024), kSpring + kHour);
  EXPECT_EQ(TimeOfChange(zone->toStandard, 2024), kAutumn + 2 * kHour);
}

TEST(CalendarZoneTest, TurnsTimesOver) {
  const auto zone = ReadZoneStruct(BerlinStruct(), "");
  EXPECT_EQ(zone->name, "Local time");
  for (const int64_t utc : {kSpring - 1, kSpring - kHour, kAutumn, kAutumn + kHour}) {
    EXPECT_EQ(zone->localOf(utc), utc + kHour) << utc;
  }
  for (const int64_t utc : {kSpring, kAutumn - 1, kAutumn - kHour}) {
    EXPECT_EQ(zone->localOf(utc), utc + 2 * kHour) << utc;
    EXPECT_EQ(zone->utcOf(utc + 2 * kHour), utc) << utc;
  }
  EXPECT_EQ(zone->utcOf(kSpring), kSpring - kHour);
  EXPECT_EQ(zone->utcOf(kAutumn + 3 * kHour), kAutumn + 2 * kHour);
}

TEST(CalendarZoneTest, TurnsTimesOverSouthOfTheEquator) {
  CalendarZone zone;
  zone.standardOffset = 600;
  zone.daylightOffset = 660;
  zone.toDaylight = {10, 0, 1, 120};
  zone.toStandard = {4, 0, 1, 180};
  EXPECT_EQ(zone.localOf(1704067200), 1704067200 + 11 * kHour);  // January
  EXPECT_EQ(zone.localOf(1719792000), 1719792000 + 10 * kHour);  // July
}

TEST(CalendarZoneTest, KnowsZonesThatNeverChange) {
  const auto zone = ReadZoneStruct(LittleEndian(300, 4) + std::string(44, '\0'), "East");
  ASSERT_TRUE(zone.has_value());
  EXPECT_FALSE(zone->changes());
  EXPECT_EQ(zone->localOf(kSpring), kSpring - 5 * kHour);
  EXPECT_EQ(zone->utcOf(kSpring), kSpring + 5 * kHour);
}

TEST(CalendarZoneTest, TakesNoOddStructs) {
  const std::string good = BerlinStruct();
  for (size_t size = 0; size < good.size(); ++size) {
    EXPECT_FALSE(ReadZoneStruct(good.substr(0, size), "").has_value()) << size;
  }
  const auto withByte = [&](size_t at, char byte) {
    std::string bytes = good;
    bytes[at] = byte;
    return ReadZoneStruct(bytes, "").has_value();
  };
  EXPECT_FALSE(withByte(2, 1));    // a bias of 65476 minutes
  EXPECT_FALSE(withByte(16, 13));  // a month
  EXPECT_FALSE(withByte(18, 7));   // a day of the week
  EXPECT_FALSE(withByte(20, 6));
  EXPECT_FALSE(withByte(20, 0));
  EXPECT_FALSE(withByte(22, 24));  // an hour
}

TEST(CalendarZoneTest, ReadsTheRuleInUse) {
  const std::string other = LittleEndian(0, 4) + LittleEndian(0, 4) + LittleEndian(0, 4);
  const auto zone = ReadZoneDefinition(DefinitionBytes(
      u"W. Europe", {RuleBytes(1, other), RuleBytes(2, BerlinBiases()), RuleBytes(0, other)}));
  ASSERT_TRUE(zone.has_value());
  EXPECT_EQ(zone->name, "W. Europe");
  EXPECT_EQ(zone->standardOffset, 60);
  const auto last = ReadZoneDefinition(
      DefinitionBytes(u"x", {RuleBytes(0, other), RuleBytes(0, BerlinBiases())}));
  EXPECT_EQ(last->standardOffset, 60);
}

TEST(CalendarZoneTest, TakesNoOddDefinitions) {
  const std::string good = DefinitionBytes(u"x", {RuleBytes(2, BerlinBiases())});
  for (size_t size = 0; size < good.size(); ++size) {
    EXPECT_FALSE(ReadZoneDefinition(good.substr(0, size)).has_value()) << size;
  }
  EXPECT_FALSE(ReadZoneDefinition("\x01" + good.substr(1)).has_value());
  EXPECT_FALSE(ReadZoneDefinition(DefinitionBytes(u"x", {})).has_value());
}

}  // namespace
}  // namespace tarn::archive
