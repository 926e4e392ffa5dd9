// The words for errors of Windows.

#include "console/SystemErrors.h"

#include <gtest/gtest.h>
#include <windows.h>

namespace tarn::host {
namespace {

std::error_code SystemError(DWORD error) {
  return {static_cast<int>(error), std::system_category()};
}

TEST(ErrorText, HasTheWordsOfOtherSystems) {
  EXPECT_EQ(ErrorText(SystemError(ERROR_PATH_NOT_FOUND)), "No such file or directory");
  EXPECT_EQ(ErrorText(SystemError(ERROR_CANT_RESOLVE_FILENAME)),
            "Too many levels of symbolic links");
}

// The system's text for a damaged library begins or ends with the place of its name.
TEST(ErrorText, NamesTheFileWhereTheSystemLeavesAPlace) {
  const std::string named = ErrorText(SystemError(ERROR_BAD_EXE_FORMAT), "x%1.dll");
  EXPECT_NE(named.find("x%1.dll"), std::string::npos) << named;
  const std::string unnamed = ErrorText(SystemError(ERROR_BAD_EXE_FORMAT));
  EXPECT_NE(unnamed.find("the file"), std::string::npos) << unnamed;
  EXPECT_EQ(unnamed.find('%'), std::string::npos) << unnamed;
}

TEST(ErrorText, EndsWithoutAPeriodOrALineEnd) {
  const std::string text = ErrorText(SystemError(ERROR_MOD_NOT_FOUND));
  ASSERT_FALSE(text.empty());
  EXPECT_EQ(text.find_first_of("\r\n"), std::string::npos);
  EXPECT_NE(text.back(), '.');
}

TEST(ErrorText, GivesTheNumberOfAnErrorWithoutText) {
  EXPECT_EQ(ErrorText(SystemError(0x2FFFFFFF)), "error 805306367");
}

}  // namespace
}  // namespace tarn::host
