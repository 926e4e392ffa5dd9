// The meaning of each of the filter's results.

#include "tarnmail/StatusText.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "TarnPst.h"

namespace tarn::host {
namespace {

TEST(StatusText, NamesMeaningAndNumber) {
  EXPECT_EQ(StatusText(StatusNotSupported),
            "not a mail file the filter takes, or one without a body it can show (-9)");
  EXPECT_EQ(StatusText(StatusReadFailed), "shorter than 12 bytes, or a read came short (-7)");
  EXPECT_EQ(StatusText(StatusFailed),
            "an attachment's name or property is not valid UTF-8, or an inline image is too small "
            "for a data: URL (0)");
  EXPECT_EQ(StatusText(StatusDone), "the message ended early (2)");
}

TEST(StatusText, HasAMeaningOfItsOwnForEachResult) {
  std::set<std::string> meanings;
  for (int32_t status : {StatusDone,
                         StatusFailed,
                         StatusOutOfMemory,
                         StatusSeekFailed,
                         StatusWriteFailed,
                         StatusReadFailed,
                         StatusNotSupported,
                         StatusOpenFailed,
                         StatusBadArgument,
                         StatusMsgOpenFailed,
                         StatusTimeFailed,
                         StatusPathOverflow,
                         StatusNullArgument,
                         StatusPathFromUtf8Failed,
                         StatusCreateFailed,
                         StatusPathTooLong,
                         StatusPathToUtf8Failed,
                         StatusListIndex,
                         StatusSiblingRefused,
                         StatusSlotConflict}) {
    const std::string text = StatusText(status);
    const std::string number = " (" + std::to_string(status) + ")";
    ASSERT_GT(text.size(), number.size());
    EXPECT_EQ(text.substr(text.size() - number.size()), number);
    const std::string meaning = text.substr(0, text.size() - number.size());
    EXPECT_NE(meaning, "failed with a code that means nothing here") << status;
    EXPECT_TRUE(meanings.insert(meaning).second) << status;
  }
}

TEST(StatusText, SaysSoWhenANumberMeansNothing) {
  EXPECT_EQ(StatusText(-99999), "failed with a code that means nothing here (-99999)");
  EXPECT_EQ(StatusText(INT32_MIN), "failed with a code that means nothing here (-2147483648)");
}

TEST(SiblingRefusalText, NamesBothCodes) {
  EXPECT_EQ(SiblingRefusalText(StatusReadFailed),
            "the document could not be taken over: shorter than 12 bytes, or a read came short "
            "(-1863, -7)");
}

}  // namespace
}  // namespace tarn::host
