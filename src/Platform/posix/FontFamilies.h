// FontFamilies.h - the font families that fontconfig knows, each with its face nearest to regular.
//
// The configuration is the system's (or that of FONTCONFIG_FILE), loaded once into an object of our
// own and let go again when the names are read: the process's current configuration, which the host
// may use, is neither used nor changed. Families are listed, never matched, so no rule of the
// configuration puts one in place of another. Without a configuration there are no families, and
// nothing is said; about a damaged one, fontconfig complains on standard error.
//
// Fonts that are installed later are not seen.
#ifndef TARN_PLATFORM_POSIX_FONTFAMILIES_H
#define TARN_PLATFORM_POSIX_FONTFAMILIES_H

#include <array>
#include <bitset>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tarn::platform {

// The UTF-16 units that have a glyph.
using UnitSet = std::bitset<0x10000>;

// How far a face is from regular, by slant, weight and width; the smaller, the nearer.
using FaceDistance = std::array<int, 3>;

struct FontFamily {
  std::u16string foldedName;
  FaceDistance distance{};
  std::string file;
  int faceIndex = 0;
  std::unique_ptr<UnitSet> units;  // of its face; null until somebody has read them
};

// All families, sorted by name; a face with names in several languages makes several. Throws
// std::bad_alloc only.
std::vector<FontFamily> ReadFontFamilies();

// The family of exactly that name but for case, or null.
FontFamily* FindFontFamily(std::vector<FontFamily>& families, std::u16string_view name) noexcept;

}  // namespace tarn::platform

#endif
