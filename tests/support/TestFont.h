// TestFont.h - TrueType fonts made for tests: small, valid, with exactly the characters asked for.
//
// The file holds the tables of the OpenType specification that every reader wants: OS/2, cmap (one
// subtable of format 4), glyf, head, hhea, hmtx, loca, maxp, name and post (format 3). Glyph 0 is
// the missing glyph, and the characters follow in ascending order; all look like the same box.
#ifndef TARN_TESTS_SUPPORT_TESTFONT_H
#define TARN_TESTS_SUPPORT_TESTFONT_H

#include <cstdint>
#include <string>

namespace tarn::test {

struct TestFont {
  std::u16string family;      // name 1
  std::u16string characters;  // units with a glyph, in any order
  std::u16string style = u"Regular";
  uint16_t weight = 400;  // usWeightClass of OS/2
  uint16_t width = 5;     // usWidthClass: 1 to 9, from the narrowest to the widest
  bool italic = false;
  bool symbol = false;               // the character map is of the symbol encoding (3, 0)
  std::u16string otherFamily = u"";  // name 1 in Japanese; empty: none
};

// The bytes of the file. At most 8,000 runs of characters.
std::string MakeTestFont(const TestFont& font);

// All units from first to last.
std::u16string UnitRange(char16_t first, char16_t last);

}  // namespace tarn::test

#endif
