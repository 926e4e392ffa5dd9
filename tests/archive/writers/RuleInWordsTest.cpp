#include <gtest/gtest.h>

#include <string>

#include "archive/writers/ItemDetails.h"

namespace tarn::archive {
namespace {

TEST(RuleInWordsTest, TellsEachKind) {
  const std::pair<const char*, const char*> kRules[] = {
      {"FREQ=DAILY", "every day"},
      {"FREQ=DAILY;INTERVAL=3", "every 3 days"},
      {"FREQ=WEEKLY;BYDAY=MO", "every week on Monday"},
      {"FREQ=WEEKLY;INTERVAL=2;BYDAY=MO,WE,FR;WKST=MO",
       "every 2 weeks on Monday, Wednesday and Friday"},
      {"FREQ=WEEKLY;BYDAY=MO,TU,WE,TH,FR", "every week from Monday to Friday"},
      {"FREQ=WEEKLY;BYDAY=SU,SA", "every week on Saturday and Sunday"},
      {"FREQ=WEEKLY;BYDAY=SU,MO,TU,WE,TH,FR,SA", "every week"},
      {"FREQ=MONTHLY;BYMONTHDAY=15", "every month on day 15"},
      {"FREQ=MONTHLY;BYMONTHDAY=28,29,30;BYSETPOS=-1", "every month on day 30 or the last one"},
      {"FREQ=MONTHLY;BYMONTHDAY=-1", "every month on the last day"},
      {"FREQ=MONTHLY;INTERVAL=2;BYDAY=2TU", "every 2 months on the second Tuesday"},
      {"FREQ=MONTHLY;BYDAY=MO,TU,WE,TH,FR;BYSETPOS=-1", "every month on the last weekday"},
      {"FREQ=MONTHLY;BYDAY=SU,SA;BYSETPOS=1", "every month on the first day of a weekend"},
      {"FREQ=MONTHLY;BYDAY=SU,MO,TU,WE,TH,FR,SA;BYSETPOS=3", "every month on the third day"},
      {"FREQ=YEARLY;BYMONTH=3;BYDAY=-1SU", "every year on the last Sunday of March"},
      {"FREQ=YEARLY;INTERVAL=2;BYMONTH=12;BYMONTHDAY=24", "every 2 years on day 24 of December"},
      {"", ""}};
  for (const auto& [rule, words] : kRules) EXPECT_EQ(RuleInWords(rule), words) << rule;
}

}  // namespace
}  // namespace tarn::archive
