// FaceUnits.h - which UTF-16 units a font file has glyphs for.
//
// The Unicode character map is asked, or else the symbol map. A symbol map places its characters at
// U+F020 to U+F0FF; they count for U+0020 to U+00FF as well. A face with neither map has none.
//
// No unit of a surrogate pair has a glyph.
#ifndef TARN_PLATFORM_POSIX_FACEUNITS_H
#define TARN_PLATFORM_POSIX_FACEUNITS_H

#include <ft2build.h>
#include FT_FREETYPE_H

#include "Platform/posix/FontFamilies.h"

namespace tarn::platform {

// Adds the units of a face to a set. The file is closed again before the call returns; one that
// cannot be read, or is no font, adds none.
void AddUnitsOfFace(FT_Library library, const char* file, FT_Long faceIndex,
                    UnitSet& units) noexcept;

}  // namespace tarn::platform

#endif
