// TestFonts.h - the fonts of a test process, so that no test depends on the machine's.
//
// A process reads the names of the installed families once, so its fonts are chosen before main:
//
//   [[maybe_unused]] const bool kFonts = UseTestFonts(StandardTestFonts());
//
// The calls of all files of a binary add up. The folder with the fonts exists while tests run.
#ifndef TARN_TESTS_SUPPORT_TESTFONTS_H
#define TARN_TESTS_SUPPORT_TESTFONTS_H

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "support/FontInstallation.h"
#include "support/TempDirectory.h"
#include "support/TestFont.h"

namespace tarn::test {

// A temporary folder with font files, which are fonts of this process while it lives. To be made
// before the first look-up.
class TestFonts {
 public:
  explicit TestFonts(const std::vector<TestFont>& fonts);

  const std::filesystem::path& folder() const { return directory_.path(); }
  // Where a font is written: "MS Gothic", "Bold" -> ".../fonts/MSGothic-Bold.ttf".
  std::filesystem::path file(std::u16string_view family,
                             std::u16string_view style = u"Regular") const;

 private:
  TempDirectory directory_;
  std::unique_ptr<FontInstallation> installation_;
};

// Has these fonts installed before the first test of a GoogleTest binary and removed after the
// last. Of two with the same family and style, the first. True.
bool UseTestFonts(const std::vector<TestFont>& fonts);

// Those of UseTestFonts; while tests run only.
const TestFonts& InstalledTestFonts();

// Made-up coverage for the faces that documents and the filter name:
//
//   Arial      U+0020..U+017F, Greek, Cyrillic, Armenian (U+0531..U+058A), U+FB13
//   Symbol     a symbol font: U+F020..U+F0FF
//   MS Gothic  U+0020..U+007E, kana, U+3400..U+34FF, U+F0B7
//   Batang     U+0020..U+007E, kana, U+AC00..U+AC10, U+A960..U+A97C
//   Gulim      U+0020..U+007E, kana, U+AC00..U+AC10, U+1681..U+169A (Ogham)
//   Sylfaen    U+0020..U+007E, Armenian, Georgian (U+10D0..U+10FA)
//
// No Windows code page holds the Armenian, Georgian and Ogham letters, U+3400 and U+A960.
std::vector<TestFont> StandardTestFonts();

}  // namespace tarn::test

#endif
