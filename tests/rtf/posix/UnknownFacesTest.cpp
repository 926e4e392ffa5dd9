// Faces and code pages that this system does not have; win32/ has the counterpart.
#include <gtest/gtest.h>

#include "rtf/CodePageForText.h"
#include "rtf/FontSearch.h"
#include "rtf/RtfTextWriter.h"
#include "support/TestFonts.h"

namespace tarn::test {
namespace {

[[maybe_unused]] const bool kFonts = UseTestFonts(StandardTestFonts());

TEST(UnknownFaces, CoverNothing) {
  EXPECT_FALSE(Covers("No Face Has This", u"a"));
  EXPECT_FALSE(Covers("No Face Has This", u""));
  EXPECT_FALSE(Covers("Helvetica", u"a"));
  EXPECT_FALSE(Covers("", u"a"));
}

TEST(UnknownFaces, ArePassedOver) {
  Document document("{\\f3 No Face Has This;}{\\f4 Sylfaen;}");
  EXPECT_EQ(Find(document.fonts, u"A"), (Found{StatusOk, 4}));
  EXPECT_EQ(Find(document.fonts, u""), (Found{StatusOk, 4}));
}

// The Macintosh's Japanese has a charset and no converter.
TEST(MacintoshJapanese, CarriesNothing) {
  char16_t wide = 0;
  char bytes[2] = {};
  EXPECT_EQ(RoundTripsInCodePage(u"A", 10001, &wide, bytes), false);
  Document document("{\\f0\\fcharset0 Courier;}");
  TrackedBuffer<char> output;
  RtfFontsInForce inForce;
  EXPECT_EQ(WriteRtfCodePageText(output, document.fonts, inForce, 10001, u"\u65E5"),
            StatusBadArgument);
}

}  // namespace
}  // namespace tarn::test
