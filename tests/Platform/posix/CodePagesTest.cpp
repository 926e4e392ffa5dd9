// Code pages and approximations that only Windows has.
#include <gtest/gtest.h>

#include "CodePageText.h"

namespace tarn::platform {
namespace {

TEST(CodePagesOfPosix, AreNotThoseWithoutAnExactConverter) {
  for (const uint32_t page : {708u,   720u,   864u,   869u,   10001u, 10002u, 10003u, 10004u,
                              10005u, 10008u, 10010u, 10017u, 10021u, 10079u, 10082u, 20000u,
                              20932u, 20936u, 20949u, 50220u, 51932u, 51949u, 54936u, 65000u}) {
    EXPECT_EQ(Decode(page, "x"), u"") << page;
    EXPECT_EQ(Encode(page, u"x"), (Encoded{"", false})) << page;
    EXPECT_FALSE(IsCodePageSupported(page)) << page;
  }
}

TEST(CodePagesOfPosix, ApproximateLess) {
  EXPECT_EQ(Encode(1252, u"\u0100\u2192"), (Encoded{"??", true}));
  EXPECT_EQ(Encode(28597, u"\u2018\u2019"), (Encoded{"??", true}));
  EXPECT_EQ(Encode(1255, u"\u00A4"), (Encoded{"?", true}));
  EXPECT_EQ(Encode(936, u"\uFFE9"), (Encoded{"\x1B", false}));
}

// Not refused by its size: the first byte is converted, and the second finds the destination full.
// Only these two exist.
TEST(CodePagesOfPosix, TakeTextsOfUpToTheLargest32BitLength) {
  const std::string bytes = "xx";
  char16_t target = u'#';
  EXPECT_EQ(BytesToUtf16(1252, std::string_view(bytes.data(), INT32_MAX), {&target, 1}), 0u);
  EXPECT_EQ(target, u'x');
}

TEST(CodePagesOfPosix, TakeTheWesternForThatOfOtherPrograms) { EXPECT_EQ(AnsiCodePage(), 1252u); }

}  // namespace
}  // namespace tarn::platform
