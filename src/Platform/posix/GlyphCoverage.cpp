// GlyphCoverage.cpp - asks fontconfig for the families, once in a process, and FreeType for the
// units of a family's face when the family is first asked for. Both answers are kept, the font
// files are not: a unit is looked up in a set of 8 KiB. So memory is bounded by what is installed,
// whatever names documents bring, and a face counts as it was when it was read.
#include "Platform/GlyphCoverage.h"

#include <algorithm>
#include <mutex>
#include <optional>
#include <vector>

#include "Platform/posix/FaceUnits.h"
#include "Platform/posix/FontFamilies.h"

namespace tarn::platform {
namespace {

// Lives as long as the process. All members are guarded by the mutex.
class FontCache {
 public:
  // Throws std::bad_alloc only; what was not read then is read by a later call.
  bool HasGlyphs(std::u16string_view faceName, std::u16string_view text) {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (!families_) families_ = ReadFontFamilies();
    FontFamily* const family = FindFontFamily(*families_, faceName);
    if (family == nullptr || !ReadUnits(*family)) return false;
    return std::all_of(text.begin(), text.end(),
                       [family](char16_t unit) { return family->units->test(unit); });
  }

 private:
  bool ReadUnits(FontFamily& family) {
    if (family.units) return true;
    if (library_ == nullptr && FT_Init_FreeType(&library_) != 0) return false;
    auto units = std::make_unique<UnitSet>();
    AddUnitsOfFace(library_, family.file.c_str(), family.faceIndex, *units);
    family.units = std::move(units);
    return true;
  }

  std::mutex mutex_;
  std::optional<std::vector<FontFamily>> families_;
  FT_Library library_ = nullptr;
};

}  // namespace

bool FontHasGlyphs(const GlyphQuery& query) noexcept {
  try {
    static FontCache* const cache = new FontCache;
    return cache->HasGlyphs(query.faceName, query.text);
  } catch (...) {
    return false;
  }
}

}  // namespace tarn::platform
