// Turning the RTF of an HTML mail into HTML, against unpacking that RTF, both in the same run: the
// counter "share" is the speed of the former divided by that of the latter, per byte of RTF. The
// aim is a third; for texts of nothing but escapes, a fifteenth.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <random>
#include <string>
#include <string_view>

#include "Internal/MailMessage.h"
#include "rtf/CompressedRtf.h"
#include "rtf/RtfToHtml.h"
#include "support/RtfCompressor.h"

namespace {

constexpr size_t kBytes = 100'000;

constexpr std::string_view kWords[] = {"the",    "meeting", "of",   "Thursday", "please",  "find",
                                       "report", "figures", "with", "agreed",   "quarter", "and"};

// Named a document of plain text, so that unpacking it is all that the decoder does.
constexpr std::string_view kHead =
    "{\\rtf1\\ansi\\ansicpg1252\\fromtext \\fbidi \\deff0{\\fonttbl\r\n"
    "{\\f0\\fswiss\\fcharset0 Arial;}\r\n{\\f1\\fmodern\\fcharset128 MS Gothic;}\r\n"
    "{\\f2\\fswiss\\fcharset204 Arial;}}\r\n{\\colortbl\\red0\\green0\\blue0;}\r\n"
    "\\uc1\\pard\\plain\\deftab360 \\f0\\fs24 {\\*\\htmltag18 <html>}";

// A name or a number of which there is no other.
std::string Rare(std::mt19937& random) {
  std::string word;
  for (uint64_t i = 4 + random() % 6; i > 0; --i) word += static_cast<char>('a' + random() % 26);
  return word;
}

std::string Hex(unsigned byte) {
  constexpr char kDigits[] = "0123456789abcdef";
  return {'\\', '\'', kDigits[byte >> 4], kDigits[byte & 15]};
}

// A mail as mail programs wrap it: a tag group around each element, and the formatting that RTF
// readers see between "\htmlrtf" words; some words have a letter with an accent.
std::string Mail() {
  std::mt19937 random(3);
  std::string text(kHead);
  while (text.size() < kBytes) {
    text += "\r\n{\\*\\htmltag64 <p class=MsoNormal style='margin-bottom:12.0pt'>}";
    text += "\\htmlrtf {\\htmlrtf0 {\\*\\htmltag148 <span lang=EN-US style='color:#1F497D'>}";
    for (uint64_t i = 8 + random() % 40; i > 0; --i) {
      text += random() % 4 == 0 ? Rare(random) : std::string(kWords[random() % std::size(kWords)]);
      if (random() % 12 == 0) text += Hex(0xE0 + static_cast<unsigned>(random() % 32));
      text += random() % 9 == 0 ? ", " : " ";
    }
    text += "\\line {\\*\\htmltag116 <br>}\\htmlrtf\\par\\htmlrtf0 \\tab \\u8364?\\plain\\f0 ";
    text += "{\\*\\htmltag156 </span>}\\htmlrtf\\par}\\htmlrtf0\r\n\\par {\\*\\htmltag72 </p>}";
  }
  return text + "}";
}

// Words of `letters` escapes in a font, with a blank after each.
std::string Escapes(std::string_view font, unsigned low, unsigned high, bool pairs) {
  std::mt19937 random(4);
  std::string text = std::string(kHead) + std::string(font) + " ";
  while (text.size() < kBytes) {
    for (uint64_t i = 2 + random() % 12; i > 0; --i) {
      if (pairs) text += Hex(0x82 + static_cast<unsigned>(random() % 2));
      text += Hex(low + static_cast<unsigned>(random() % (high - low)));
    }
    text += " ";
  }
  return text + "}";
}

std::string Japanese() { return Escapes("\\f1", 0x9F, 0xF2, true); }
std::string Russian() { return Escapes("\\f2", 0xC0, 0x100, false); }

// Single letters between text, each a run of its own.
std::string French() {
  std::string text(kHead);
  while (text.size() < kBytes) text += "d\\'e9j\\'e0 ";
  return text + "}";
}

char* KernelCopy(std::string_view bytes) {
  auto* const block = static_cast<char*>(KernelAlloc(bytes.size(), 1, TARN_HERE));
  std::memcpy(block, bytes.data(), bytes.size());
  return block;
}

template <typename Call>
double Timed(const Call& call) {
  const auto before = std::chrono::steady_clock::now();
  call();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - before).count();
}

void BM_RtfToHtml(benchmark::State& state, std::string (*make)()) {
  const std::string rtf = make();
  const std::string packed = tarn::test::PackRtf(rtf);
  double best = 1e9;
  double unpackingBest = 1e9;
  for (auto _ : state) {
    tarn::MailMessage message;
    char* const source = KernelCopy(packed);
    unpackingBest = std::min(unpackingBest, Timed([&] {
                               tarn::DecodeCompressedRtf(source, message, packed.size()).ignore();
                             }));
    if (message.body.text() != rtf) state.SkipWithError("not unpacked");
    tarn::Status status;
    const double seconds = Timed([&] { status = tarn::RtfToHtml(message.body); });
    if (!status.ok()) state.SkipWithError("not converted");
    best = std::min(best, seconds);
    state.SetIterationTime(seconds);
  }
  const auto bytes = static_cast<double>(rtf.size());
  state.counters["MB/s"] = bytes / best / 1e6;
  state.counters["unpacking MB/s"] = bytes / unpackingBest / 1e6;
  state.counters["share"] = unpackingBest / best;
}

BENCHMARK_CAPTURE(BM_RtfToHtml, Mail, &Mail)->UseManualTime();
BENCHMARK_CAPTURE(BM_RtfToHtml, Japanese932, &Japanese)->UseManualTime();
BENCHMARK_CAPTURE(BM_RtfToHtml, Russian1251, &Russian)->UseManualTime();
BENCHMARK_CAPTURE(BM_RtfToHtml, SingleLetters1252, &French)->UseManualTime();

}  // namespace
