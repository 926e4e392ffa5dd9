#include "Platform/posix/FontFamilies.h"

#include <fontconfig/fontconfig.h>
#include <unicode/uchar.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <tuple>

#include "Platform/CodePages.h"

namespace tarn::platform {
namespace {

template <auto Release>
struct Releaser {
  template <typename T>
  void operator()(T* object) const noexcept {
    Release(object);
  }
};
using Config = std::unique_ptr<FcConfig, Releaser<FcConfigDestroy>>;
using Pattern = std::unique_ptr<FcPattern, Releaser<FcPatternDestroy>>;
using ObjectSet = std::unique_ptr<FcObjectSet, Releaser<FcObjectSetDestroy>>;
using FontSet = std::unique_ptr<FcFontSet, Releaser<FcFontSetDestroy>>;

// Unit by unit, so that a name and its folded form have one length.
char16_t FoldUnit(char16_t unit) noexcept {
  return static_cast<char16_t>(u_foldCase(unit, U_FOLD_CASE_DEFAULT));
}

std::u16string FoldedName(std::string_view utf8) {
  std::u16string name(utf8.size(), u'\0');
  name.resize(BytesToUtf16(kCodePageUtf8, utf8, name));
  std::transform(name.begin(), name.end(), name.begin(), FoldUnit);
  return name;
}

FontSet ListFaces() noexcept {
  const Config config(FcConfigCreate());
  if (!config || !FcConfigParseAndLoad(config.get(), nullptr, FcFalse)) return nullptr;
  if (!FcConfigBuildFonts(config.get())) return nullptr;
  const Pattern anyFace(FcPatternCreate());
  const ObjectSet wanted(FcObjectSetBuild(FC_FAMILY, FC_FILE, FC_INDEX, FC_SLANT, FC_WEIGHT,
                                          FC_WIDTH, static_cast<char*>(nullptr)));
  if (!anyFace || !wanted) return nullptr;
  return FontSet(FcFontList(config.get(), anyFace.get(), wanted.get()));
}

// A property that a face lacks, or that is a range as in variable fonts, is near enough.
int DistanceOf(const FcPattern* face, const char* property, int regular) noexcept {
  int value = regular;
  if (FcPatternGetInteger(face, property, 0, &value) != FcResultMatch) return 0;
  return std::abs(value - regular);
}

void AddFamiliesOf(const FcPattern* face, std::vector<FontFamily>& families) {
  FcChar8* file = nullptr;
  int faceIndex = 0;
  if (FcPatternGetString(face, FC_FILE, 0, &file) != FcResultMatch) return;
  if (FcPatternGetInteger(face, FC_INDEX, 0, &faceIndex) != FcResultMatch) return;
  const FaceDistance distance = {DistanceOf(face, FC_SLANT, FC_SLANT_ROMAN),
                                 DistanceOf(face, FC_WEIGHT, FC_WEIGHT_REGULAR),
                                 DistanceOf(face, FC_WIDTH, FC_WIDTH_NORMAL)};
  FcChar8* name = nullptr;
  for (int n = 0; FcPatternGetString(face, FC_FAMILY, n, &name) == FcResultMatch; ++n) {
    FontFamily family;
    family.foldedName = FoldedName(reinterpret_cast<const char*>(name));
    family.distance = distance;
    family.file = reinterpret_cast<const char*>(file);
    family.faceIndex = faceIndex;
    if (!family.foldedName.empty()) families.push_back(std::move(family));
  }
}

// Equally near faces are ordered by their place, so that every process chooses the same.
bool ComesBefore(const FontFamily& a, const FontFamily& b) noexcept {
  return std::tie(a.foldedName, a.distance, a.file, a.faceIndex) <
         std::tie(b.foldedName, b.distance, b.file, b.faceIndex);
}

bool IsFolded(char16_t known, char16_t asked) noexcept { return known == FoldUnit(asked); }

bool IsBefore(std::u16string_view known, std::u16string_view asked) noexcept {
  const auto [k, a] =
      std::mismatch(known.begin(), known.end(), asked.begin(), asked.end(), IsFolded);
  if (a == asked.end()) return false;
  return k == known.end() || *k < FoldUnit(*a);
}

}  // namespace

std::vector<FontFamily> ReadFontFamilies() {
  std::vector<FontFamily> families;
  const FontSet faces = ListFaces();
  if (!faces) return families;
  for (int at = 0; at < faces->nfont; ++at) AddFamiliesOf(faces->fonts[at], families);
  std::sort(families.begin(), families.end(), ComesBefore);
  const auto sameName = [](const FontFamily& a, const FontFamily& b) {
    return a.foldedName == b.foldedName;
  };
  families.erase(std::unique(families.begin(), families.end(), sameName), families.end());
  families.shrink_to_fit();
  return families;
}

FontFamily* FindFontFamily(std::vector<FontFamily>& families, std::u16string_view name) noexcept {
  const auto found = std::partition_point(
      families.begin(), families.end(),
      [name](const FontFamily& family) { return IsBefore(family.foldedName, name); });
  if (found == families.end()) return nullptr;
  const std::u16string_view known = found->foldedName;
  return std::equal(known.begin(), known.end(), name.begin(), name.end(), IsFolded) ? &*found
                                                                                    : nullptr;
}

}  // namespace tarn::platform
