// Windows has a face in place of each that it does not know, and all code pages; posix/ has the
// counterpart.
#include <gtest/gtest.h>

#include <string_view>

#include "rtf/CodePageForText.h"
#include "rtf/FontSearch.h"
#include "rtf/RtfTextWriter.h"
#include "support/TestFonts.h"

namespace tarn::test {
namespace {

[[maybe_unused]] const bool kFonts = UseTestFonts(StandardTestFonts());

TEST(UnknownFaces, CoverWhatTheirSubstituteCovers) {
  EXPECT_TRUE(Covers("No Face Has This", u"a"));
  EXPECT_TRUE(Covers("No Face Has This", u""));
  EXPECT_TRUE(Covers("", u"a"));
  // No plane but the first, and no half of a pair.
  EXPECT_FALSE(Covers("No Face Has This", kEmoji));
}

TEST(UnknownFaces, AreTakenLikeAnyOther) {
  Document document("{\\f3 No Face Has This;}{\\f4 Sylfaen;}");
  EXPECT_EQ(Find(document.fonts, u"A"), (Found{StatusOk, 3}));
  EXPECT_EQ(Find(document.fonts, u""), (Found{StatusOk, 3}));
  EXPECT_EQ(Show(document.fonts), "3:0:0:No Face Has This|4:0:0:Sylfaen");
}

TEST(MacintoshJapanese, CarriesItsCharacters) {
  char16_t wide[2] = {};
  char bytes[4] = {};
  EXPECT_EQ(RoundTripsInCodePage(u"\u65E5\u672C", 10001, wide, bytes), true);
  Document document("{\\f0\\fcharset0 Courier;}");
  TrackedBuffer<char> output;
  RtfFontsInForce inForce;
  EXPECT_EQ(WriteRtfCodePageText(output, document.fonts, inForce, 10001, u"\u65E5"), StatusOk);
  EXPECT_EQ(output.view(), "\\f1 \\'93\\'fa");
  EXPECT_EQ(inForce.current, 1u);
  EXPECT_EQ(Show(document.fonts), "0:1252:0:Courier|1:10001:78:Batang");
}

}  // namespace
}  // namespace tarn::test
