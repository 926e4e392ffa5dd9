// What Uniscribe is asked for, and what GDI makes of a name.
#include "Platform/GlyphCoverage.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <array>
#include <string>

#include "GlyphQuestion.h"
#include "support/TestFonts.h"

namespace tarn::test {
namespace {

[[maybe_unused]] const bool kFonts = UseTestFonts(StandardTestFonts());

class GlyphCoverageOfWindows : public testing::Test {
 protected:
  GlyphCoverageOfWindows() {
    LOGFONTW record = {};
    std::u16string_view(u"Sylfaen").copy(reinterpret_cast<char16_t*>(record.lfFaceName), 31);
    font_ = CreateFontIndirectW(&record);
  }
  ~GlyphCoverageOfWindows() override {
    DeleteObject(font_);
    DeleteDC(context_);
  }

  bool Ask(void* context, void* font, std::u16string_view text) {
    return platform::FontHasGlyphs({.context = context,
                                    .font = font,
                                    .faceName = u"Sylfaen",
                                    .text = text,
                                    .glyphs = glyphs_.data()});
  }

  HDC context_ = CreateCompatibleDC(nullptr);
  HFONT font_ = nullptr;
  std::array<uint16_t, 8> glyphs_{};
};

TEST_F(GlyphCoverageOfWindows, SelectsTheFontAndThenTheOldOne) {
  const HGDIOBJ before = GetCurrentObject(context_, OBJ_FONT);
  EXPECT_TRUE(Ask(context_, font_, u"a\u10D0"));
  EXPECT_EQ(GetCurrentObject(context_, OBJ_FONT), before);
  EXPECT_NE(glyphs_[0], 0);
  EXPECT_NE(glyphs_[1], 0);
  EXPECT_FALSE(Ask(context_, font_, u"a\u0100"));
  EXPECT_EQ(GetCurrentObject(context_, OBJ_FONT), before);
  // Not selected any more: it can be deleted.
  EXPECT_TRUE(DeleteObject(font_));
  font_ = nullptr;
}

TEST_F(GlyphCoverageOfWindows, LooksAtTheFontAlone) {
  uint16_t glyph = 0;
  EXPECT_TRUE(platform::FontHasGlyphs({.context = context_,
                                       .font = font_,
                                       .faceName = u"Arial",
                                       .text = u"\u10D0",
                                       .glyphs = &glyph}));
}

TEST_F(GlyphCoverageOfWindows, HasNoAnswerWithoutAContextAFontOrRoom) {
  EXPECT_FALSE(Ask(nullptr, font_, u"a"));
  EXPECT_FALSE(Ask(context_, nullptr, u"a"));
  EXPECT_FALSE(platform::FontHasGlyphs(
      {.context = context_, .font = font_, .faceName = u"Sylfaen", .text = u"a"}));
  EXPECT_TRUE(Ask(context_, font_, u"a"));
}

TEST_F(GlyphCoverageOfWindows, HasNoAnswerForAFontThatCannotBeSelected) {
  const HGDIOBJ before = GetCurrentObject(context_, OBJ_FONT);
  LOGFONTW record = {};
  const HFONT deleted = CreateFontIndirectW(&record);
  DeleteObject(deleted);
  EXPECT_FALSE(Ask(context_, deleted, u"a"));
  EXPECT_FALSE(Ask(context_, context_, u"a"));
  EXPECT_EQ(GetCurrentObject(context_, OBJ_FONT), before);
}

TEST_F(GlyphCoverageOfWindows, HasNoAnswerInAContextThatIsGone) {
  const HDC gone = CreateCompatibleDC(nullptr);
  DeleteDC(gone);
  EXPECT_FALSE(Ask(gone, font_, u"a"));
}

// GDI always finds a font: where a name is not installed, another one answers, and some font has
// plain letters.
TEST(SubstitutionOfWindows, LetsAnotherFontAnswerForANameThatIsNotInstalled) {
  EXPECT_TRUE(Has(u"No Such Face", u"a"));
  EXPECT_TRUE(Has(u"Helvetica", u"a"));
  EXPECT_TRUE(Has(u"", u"a"));
  EXPECT_FALSE(Has(u"No Such Face", u"\uFFFE"));
}

}  // namespace
}  // namespace tarn::test
