#include "Platform/posix/FaceUnits.h"

namespace tarn::platform {
namespace {

constexpr FT_ULong kSymbolUnits = 0xF000;

void AddUnitsOfMap(FT_Face face, UnitSet& units) noexcept {
  FT_UInt glyph = 0;
  FT_ULong code = FT_Get_First_Char(face, &glyph);
  for (; glyph != 0 && code < units.size(); code = FT_Get_Next_Char(face, code, &glyph)) {
    units.set(code);
  }
}

}  // namespace

void AddUnitsOfFace(FT_Library library, const char* file, FT_Long faceIndex,
                    UnitSet& units) noexcept {
  FT_Face face = nullptr;
  if (FT_New_Face(library, file, faceIndex, &face) != 0) return;
  if (FT_Select_Charmap(face, FT_ENCODING_UNICODE) == 0) {
    AddUnitsOfMap(face, units);
  } else if (FT_Select_Charmap(face, FT_ENCODING_MS_SYMBOL) == 0) {
    AddUnitsOfMap(face, units);
    for (FT_ULong byte = 0; byte <= 0xFF; ++byte) {
      if (units.test(kSymbolUnits + byte)) units.set(byte);
    }
  }
  FT_Done_Face(face);
  for (FT_ULong unit = 0xD800; unit <= 0xDFFF; ++unit) units.reset(unit);
}

}  // namespace tarn::platform
