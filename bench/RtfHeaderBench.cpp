// The values of a header block in nine scripts, written into a document's RTF: with a font for
// each code page, without any, and against the bare conversion of the same texts to UTF-16.

#include <benchmark/benchmark.h>

#include <array>
#include <string>
#include <string_view>

#include "Growth.h"
#include "Platform/CodePages.h"
#include "rtf/RtfTextWriter.h"

namespace {

struct Script {
  const char* name;
  std::string_view text;
};

// No value needs a look-up of a font: one code page or another carries each character. (Simplified
// Chinese would have characters that none carries; this is Chinese as Japan writes it, too.)
constexpr std::array<Script, 9> kScripts = {{
    {"Latin", "R\u00e9union \u00e0 Paris \u2013 Fran\u00e7ois Lef\u00e8vre <f@example.com>"},
    {"Cyrillic",
     "\u0412\u0441\u0442\u0440\u0435\u0447\u0430 \u0432 \u041c\u043e\u0441\u043a"
     "\u0432\u0435, \u0418\u0432\u0430\u043d \u0416\u0443\u043a\u043e\u0432"},
    {"Greek",
     "\u03a3\u03c5\u03bd\u03ac\u03bd\u03c4\u03b7\u03c3\u03b7 \u03c3\u03c4\u03b7\u03bd "
     "\u0391\u03b8\u03ae\u03bd\u03b1, \u0393\u03b9\u03ce\u03c1\u03b3\u03bf\u03c2"},
    {"Hebrew",
     "\u05e4\u05d2\u05d9\u05e9\u05d4 \u05d1\u05d9\u05e8\u05d5\u05e9\u05dc\u05d9\u05dd, "
     "\u05d3\u05d5\u05d3 \u05db\u05d4\u05df"},
    {"Arabic",
     "\u0627\u062c\u062a\u0645\u0627\u0639 \u0641\u064a \u0627\u0644\u0642\u0627\u0647"
     "\u0631\u0629\u060c \u0645\u062d\u0645\u062f"},
    {"Thai",
     "\u0e1b\u0e23\u0e30\u0e0a\u0e38\u0e21\u0e17\u0e35\u0e48\u0e01\u0e23\u0e38\u0e07"
     "\u0e40\u0e17\u0e1e \u0e2a\u0e21\u0e0a\u0e32\u0e22"},
    {"Japanese",
     "\u6771\u4eac\u3067\u306e\u4f1a\u8b70 \u5c71\u7530\u592a\u90ce "
     "\u30a8\u30d3\u30b9"},
    {"Korean", "\uc11c\uc6b8 \ud68c\uc758 \uae40\ucca0\uc218 \ubc15\uc601\ud76c"},
    {"Chinese", "\u5317\u4eac\u6703\u8b70 \u738b\u5c0f\u660e \u674e\u83ef"},
}};

constexpr std::string_view kBare =
    "{\\rtf1\\ansi\\ansicpg1252\\deff0{\\fonttbl{\\f0\\fcharset0 Calibri;}}\\pard x}";
constexpr std::string_view kFitting =
    "{\\rtf1\\ansi\\ansicpg1252\\deff0{\\fonttbl{\\f0\\fcharset0 Calibri;}{\\f1\\fcharset204 A;}"
    "{\\f2\\fcharset161 A;}{\\f3\\fcharset177 A;}{\\f4\\fcharset178 A;}{\\f5\\fcharset222 A;}"
    "{\\f6\\fcharset128 A;}{\\f7\\fcharset129 A;}{\\f8\\fcharset163 A;}}\\pard x}";

// Writes the scripts from `first` to `last` into a fresh table.
void Write(benchmark::State& state, std::string_view document, size_t first, size_t last) {
  uint64_t produced = 0;
  for (auto _ : state) {
    tarn::RtfRender render;
    render.fonts.prepare(document).ignore();
    for (size_t i = first; i <= last; ++i) {
      const std::string_view text = kScripts[i].text;
      if (tarn::WriteRtfUtf8Text(render, text.data(), text.size()) != StatusOk) {
        state.SkipWithError("a text was not written");
      }
    }
    produced = render.output.length();
    benchmark::DoNotOptimize(render.output.data());
  }
  state.counters["bytes out"] = static_cast<double>(produced);
}

void BM_OneScript(benchmark::State& state) {
  const auto script = static_cast<size_t>(state.range(0));
  state.SetLabel(kScripts[script].name);
  Write(state, kBare, script, script);
}
BENCHMARK(BM_OneScript)->DenseRange(0, 8)->Unit(benchmark::kMicrosecond);

void BM_NineScriptsWithoutFonts(benchmark::State& state) { Write(state, kBare, 0, 8); }
BENCHMARK(BM_NineScriptsWithoutFonts)->Unit(benchmark::kMicrosecond);

void BM_NineScriptsWithFonts(benchmark::State& state) { Write(state, kFitting, 0, 8); }
BENCHMARK(BM_NineScriptsWithFonts)->Unit(benchmark::kMicrosecond);

void BM_NineScriptsToUtf16(benchmark::State& state) {
  std::array<char16_t, 256> wide;
  for (auto _ : state) {
    for (const Script& script : kScripts) {
      benchmark::DoNotOptimize(
          tarn::platform::BytesToUtf16(tarn::platform::kCodePageUtf8, script.text, wide));
    }
  }
}
BENCHMARK(BM_NineScriptsToUtf16)->Unit(benchmark::kMicrosecond);

// A value that changes its script with every character, each in another code page; per character.
void BM_AlternatingScripts(benchmark::State& state) {
  std::string text;
  for (int64_t i = 0; i < state.range(0); i += 2) text += "\u0386\u0402";
  for (auto _ : state) {
    tarn::RtfRender render;
    render.fonts.prepare(kBare).ignore();
    if (tarn::WriteRtfUtf8Text(render, text.data(), text.size()) != StatusOk) {
      state.SkipWithError("the text was not written");
    }
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_AlternatingScripts)->Arg(1000)->Arg(100000)->Unit(benchmark::kMicrosecond);

// A subject in nine scripts with characters that no code page carries, of 0.4, 0.8 and 1.6 million
// units.
void BM_GrowthOfAMixedSubject(benchmark::State& state) {
  std::string period;
  for (const Script& script : kScripts) period.append(script.text).append(" \u0531\u1400 ");
  std::array<std::string, 3> texts;
  for (size_t i = 0; i < texts.size(); ++i) {
    while (texts[i].size() < size_t{800000} << i) texts[i] += period;
  }
  tarn::bench::MeasureGrowth(state, [&](size_t size) {
    tarn::RtfRender render;
    render.fonts.prepare(kBare).ignore();
    const std::string& text = texts[size];
    if (tarn::WriteRtfUtf8Text(render, text.data(), text.size()) != StatusOk) {
      state.SkipWithError("the text was not written");
    }
  });
}
BENCHMARK(BM_GrowthOfAMixedSubject)->Unit(benchmark::kMillisecond);

}  // namespace
