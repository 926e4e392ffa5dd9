// Glyph coverage: what the kept answers save. The first question of a process and the first one for
// a family against asking FreeType anew; later questions against asking an open face; and a search
// of a font table.

#include <benchmark/benchmark.h>
#include <ft2build.h>
#include FT_FREETYPE_H

#include <cstdlib>
#include <string>
#include <vector>

#include "Platform/GlyphCoverage.h"
#include "rtf/RtfFonts.h"
#include "support/TestFonts.h"

namespace {

using namespace tarn;

constexpr int kFamilies = 64;
constexpr std::u16string_view kText = u"Hello world";  // 11 units

std::u16string FamilyName(int number) {
  const std::string digits = std::to_string(number);
  return u"Bench " + std::u16string(digits.begin(), digits.end());
}

const test::TestFonts& Fonts() {
  static const test::TestFonts fonts = [] {
    std::vector<test::TestFont> all(kFamilies);
    for (int n = 0; n < kFamilies; ++n) {
      all[static_cast<size_t>(n)].family = FamilyName(n);
      all[static_cast<size_t>(n)].characters = test::UnitRange(0x20, 0x7FF);
    }
    return test::TestFonts(all);
  }();
  return fonts;
}

bool Has(std::u16string_view faceName) {
  uint16_t glyphs[kText.size()];
  return platform::FontHasGlyphs({.faceName = faceName, .text = kText, .glyphs = glyphs});
}

bool OpenFaceHasText(FT_Face face) {
  for (const char16_t unit : kText) {
    if (FT_Get_Char_Index(face, unit) == 0) return false;
  }
  return true;
}

FT_Face OpenFace(FT_Library library, int number) {
  FT_Face face = nullptr;
  const std::string file = Fonts().file(FamilyName(number)).string();
  if (FT_New_Face(library, file.c_str(), 0, &face) != 0) return nullptr;
  FT_Select_Charmap(face, FT_ENCODING_UNICODE);
  return face;
}

// Lists the families; fontconfig has no cache of these fonts yet and reads them all.
void BM_FirstOfTheProcess(benchmark::State& state) {
  Fonts();
  for (auto _ : state) {
    if (Has(u"Unknown")) state.SkipWithError("an unknown face has glyphs");
  }
}
BENCHMARK(BM_FirstOfTheProcess)->Iterations(1)->Unit(benchmark::kMicrosecond);

void BM_FirstOfTheFamily(benchmark::State& state) {
  int family = 0;
  for (auto _ : state) {
    if (!Has(FamilyName(family++))) state.SkipWithError("glyphs are missing");
  }
}
BENCHMARK(BM_FirstOfTheFamily)->Iterations(kFamilies)->Unit(benchmark::kMicrosecond);

// What every question would cost if nothing were kept of the face.
void BM_OpenTheFaceEachTime(benchmark::State& state) {
  FT_Library library = nullptr;
  FT_Init_FreeType(&library);
  for (auto _ : state) {
    FT_Face face = OpenFace(library, 0);
    if (face == nullptr || !OpenFaceHasText(face)) state.SkipWithError("glyphs are missing");
    FT_Done_Face(face);
  }
  FT_Done_FreeType(library);
}
BENCHMARK(BM_OpenTheFaceEachTime)->Unit(benchmark::kMicrosecond);

void BM_Later(benchmark::State& state) {
  const std::u16string family = FamilyName(7);
  for (auto _ : state) {
    if (!Has(family)) state.SkipWithError("glyphs are missing");
  }
}
BENCHMARK(BM_Later);

// A kept face without any look-up of its name.
void BM_AskAnOpenFace(benchmark::State& state) {
  FT_Library library = nullptr;
  FT_Init_FreeType(&library);
  FT_Face face = OpenFace(library, 7);
  for (auto _ : state) {
    if (face == nullptr || !OpenFaceHasText(face)) state.SkipWithError("glyphs are missing");
  }
  FT_Done_Face(face);
  FT_Done_FreeType(library);
}
BENCHMARK(BM_AskAnOpenFace);

void BM_UnknownFace(benchmark::State& state) {
  for (auto _ : state) {
    if (Has(u"Bench Of Nobody")) state.SkipWithError("an unknown face has glyphs");
  }
}
BENCHMARK(BM_UnknownFace);

// Two units that none of 50 fonts has: new ones each time, or some that are remembered.
void BM_SearchATable(benchmark::State& state) {
  const bool isNew = state.range(0) != 0;
  std::string document = "{\\fonttbl";
  for (int n = 0; n < 50; ++n) {
    document += "{\\f" + std::to_string(n) + " Bench " + std::to_string(n) + ";}";
  }
  document += "}";
  RtfFonts fonts;
  if (fonts.prepare(document) != StatusOk) std::abort();
  std::u16string text = u"\u1000\u1000";
  for (auto _ : state) {
    uint32_t number = 0;
    if (isNew && ++text[1] == 0xD800) text = {static_cast<char16_t>(text[0] + 1), u'\u1000'};
    fonts.setCoverageWork(0);
    if (fonts.forGlyphs(text, number) != StatusFailed) state.SkipWithError("there is a glyph");
  }
}
BENCHMARK(BM_SearchATable)->Arg(1)->Arg(0);

}  // namespace
