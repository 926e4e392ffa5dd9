// How fast the transfer decoders are on 32 MB of text as mail programs write it. The counter
// "ratio" of a quoted-printable text is its time divided by that of base64 of the same length,
// taken in the same run: the aim is a ratio of at most 1. "MB/s" counts encoded bytes.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <string_view>

#include "eml/TransferDecoding.h"

namespace {

constexpr size_t kBytes = 32 << 20;

std::string Repeat(std::string_view block) {
  std::string text;
  text.reserve(kBytes + block.size());
  while (text.size() < kBytes) text += block;
  text.resize(kBytes);
  return text;
}

// Pseudo-random base64 in lines of so many columns.
std::string Base64Lines(int columns) {
  static constexpr char kAlphabet[] =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  text.reserve(kBytes + static_cast<size_t>(columns) + 2);
  uint32_t state = 1;
  while (text.size() < kBytes) {
    for (int i = 0; i < columns; ++i) {
      state = state * 1664525 + 1013904223;
      text += kAlphabet[state >> 26];
    }
    text += "\r\n";
  }
  text.resize(kBytes);
  return text;
}

const std::string& Base64Text() {
  static const std::string text = Base64Lines(76);
  return text;
}

// Lines that cut groups in two.
const std::string& OddBase64Text() {
  static const std::string text = Base64Lines(75);
  return text;
}

const std::string& EnglishText() {
  static const std::string text = Repeat(
      "The meeting has been moved to Thursday, and the content of the report will=\r\n"
      " be discussed there. Please send your remarks to the office by Wednesday; t=\r\n"
      "he agenda (a draft) is at http://www.example.org/?id=3D17 as before.\r\n\r\n");
  return text;
}

const std::string& HtmlText() {
  static const std::string text = Repeat(
      "<tr><td style=3D\"padding:0 12px 4px 0;font-family:Arial,sans-serif\" valign=\r\n"
      "=3D\"top\"><p class=3D\"MsoNormal\"><span lang=3D\"DE\">F=C3=BCr die R=C3=BCckmel=\r\n"
      "dung danken wir.<o:p></o:p></span></p></td></tr>\r\n");
  return text;
}

const std::string& CyrillicText() {
  static const std::string text =
      Repeat("=D0=94=D0=BE=D0=B1=D1=80=D1=8B=D0=B9 =D0=B4=D0=B5=D0=BD=D1=8C, =D1=83=D0=\r\n");
  return text;
}

double DecodeBase64Text(const std::string& text) {
  static std::string output(kBytes + 2, '\0');
  uint64_t capacity = output.size();
  const auto before = std::chrono::steady_clock::now();
  tarn::DecodeBase64(text, output.data(), capacity).ignore();
  const std::chrono::duration<double> time = std::chrono::steady_clock::now() - before;
  benchmark::DoNotOptimize(output.data());
  return time.count();
}

double DecodeQuotedText(const std::string& text) {
  static std::string output(kBytes, '\0');
  const auto before = std::chrono::steady_clock::now();
  benchmark::DoNotOptimize(tarn::DecodeQuotedPrintable(text, output.data(), false, {}));
  const std::chrono::duration<double> time = std::chrono::steady_clock::now() - before;
  return time.count();
}

using Text = const std::string& (*)();

void BM_Base64(benchmark::State& state, Text text) {
  double best = 1e9;
  for (auto _ : state) {
    const double seconds = DecodeBase64Text(text());
    best = std::min(best, seconds);
    state.SetIterationTime(seconds);
  }
  state.counters["MB/s"] = static_cast<double>(kBytes) / best / 1e6;
}

void BM_QuotedPrintable(benchmark::State& state, Text text) {
  double best = 1e9;
  double bestOfBase64 = 1e9;
  for (auto _ : state) {
    const double seconds = DecodeQuotedText(text());
    best = std::min(best, seconds);
    bestOfBase64 = std::min(bestOfBase64, DecodeBase64Text(Base64Text()));
    state.SetIterationTime(seconds);
  }
  state.counters["MB/s"] = static_cast<double>(kBytes) / best / 1e6;
  state.counters["ratio"] = best / bestOfBase64;
}

BENCHMARK_CAPTURE(BM_Base64, Lines, &Base64Text)->UseManualTime();
BENCHMARK_CAPTURE(BM_Base64, OddLines, &OddBase64Text)->UseManualTime();
BENCHMARK_CAPTURE(BM_QuotedPrintable, English, &EnglishText)->UseManualTime();
BENCHMARK_CAPTURE(BM_QuotedPrintable, Html, &HtmlText)->UseManualTime();
BENCHMARK_CAPTURE(BM_QuotedPrintable, Cyrillic, &CyrillicText)->UseManualTime();

}  // namespace
