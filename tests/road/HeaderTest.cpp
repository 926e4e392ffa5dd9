// What the public header says beside its records: the version, and the meaning of each result.
#include <gtest/gtest.h>

#include <map>
#include <regex>
#include <set>
#include <string>

#include "StatusTextInC.h"
#include "TarnPst.h"
#include "support/TempDirectory.h"

namespace tarn::test {
namespace {

TEST(Header, HasTheVersionOfTheProject) {
  EXPECT_STREQ(TARNPST_VERSION, TARN_PROJECT_VERSION);
  const std::string numbers = std::to_string(TARNPST_VERSION_MAJOR) + "." +
                              std::to_string(TARNPST_VERSION_MINOR) + "." +
                              std::to_string(TARNPST_VERSION_PATCH);
  EXPECT_EQ(numbers, TARN_PROJECT_VERSION);
}

// The results that the header declares, by name.
std::map<std::string, int32_t> DeclaredStatuses() {
  const std::string header = ReadWholeFile(TARN_SOURCE_FOLDER "/Include/TarnPst.h");
  const size_t begin = header.find("enum TarnStatus {");
  const std::string text = header.substr(begin, header.find("};", begin) - begin);
  const std::regex row("\\b(Status\\w+) = (-?[0-9]+)");
  std::map<std::string, int32_t> statuses;
  for (std::sregex_iterator match(text.begin(), text.end(), row), end; match != end; ++match) {
    statuses.emplace((*match)[1], std::stoi((*match)[2]));
  }
  return statuses;
}

TEST(StatusText, HasAMeaningOfItsOwnForEachResult) {
  const std::string unknown = TarnStatusText(-99999);
  EXPECT_EQ(unknown, "failed with a code that means nothing here");
  const std::map<std::string, int32_t> statuses = DeclaredStatuses();
  EXPECT_EQ(statuses.size(), 21U);
  EXPECT_EQ(statuses.at("StatusSlotConflict"), StatusSlotConflict);
  std::set<std::string> meanings;
  for (const auto& [name, status] : statuses) {
    const std::string meaning = TarnStatusText(status);
    EXPECT_NE(meaning, unknown) << name;
    EXPECT_TRUE(meanings.insert(meaning).second) << name;
    EXPECT_EQ(meaning, StatusTextFromC(status)) << name;
  }
  EXPECT_EQ(unknown, StatusTextFromC(-3));
}

TEST(StatusText, IsInPlainWords) {
  EXPECT_STREQ(TarnStatusText(1), "success");
  EXPECT_STREQ(TarnStatusText(-9),
               "not a mail file the filter takes, or one without a body it can show");
  EXPECT_STREQ(TarnStatusText(-1863), "the document could not be taken over");
}

}  // namespace
}  // namespace tarn::test
