// Compressed RTF: unpacking an HTML mail in its wrapping of RTF, against zlib unpacking the same
// text. Both begin with a copy of the packed bytes, which the decoder takes over.

#include <benchmark/benchmark.h>
#include <zlib.h>

#include <random>
#include <sstream>
#include <string>
#include <string_view>

#include "Common/Crc32.h"
#include "Internal/MailMessage.h"
#include "rtf/CompressedRtf.h"
#include "support/RtfCompressor.h"

namespace {

constexpr std::string_view kWords[] = {
    "the",     "meeting", "of",     "Thursday", "please", "find",    "attached", "report", "and",
    "quarter", "figures", "which",  "we",       "agreed", "with",    "supplier", "to",     "send",
    "before",  "a",       "budget", "is",       "for",    "project", "review",   "in",     "will"};

std::string Tag(std::string_view number, std::string_view markup) {
  return "{\\*\\htmltag" + std::string(number) + " " + std::string(markup) + "}";
}

// A name or a number of which there is no other.
std::string Rare(std::mt19937& random) {
  std::string word;
  for (uint64_t i = 4 + random() % 6; i > 0; --i) word += static_cast<char>('a' + random() % 26);
  return word;
}

// A mail of so many bytes as mail programs wrap it: a tag group around each element, and the
// formatting that RTF readers see between "\htmlrtf" words. The document's class is named so that
// the decoder leaves it as RTF: what turning it into HTML costs is not measured here.
std::string MakeRtf(size_t bytes) {
  std::mt19937 random(3);
  std::string text =
      "{\\rtf1\\ansi\\ansicpg1252\\fromtext \\fbidi \\deff0{\\fonttbl\r\n"
      "{\\f0\\fswiss\\fcharset0 Arial;}\r\n{\\f1\\fmodern Courier New;}\r\n}\r\n"
      "{\\colortbl\\red0\\green0\\blue0;\\red5\\green99\\blue193;}"
      "\r\n\\uc1\\pard\\plain\\deftab360 "
      "\\f0\\fs24 ";
  text += Tag("18", "<html xmlns:o=\"urn:schemas-microsoft-com:office:office\">");
  while (text.size() < bytes) {
    text += "\r\n" + Tag("64", "<p class=MsoNormal style='margin-bottom:12.0pt'>");
    text += "\\htmlrtf {\\htmlrtf0 ";
    text += Tag("148", "<span lang=EN-US style='font-family:\"Arial\",sans-serif;color:#1F497D'>");
    for (uint64_t i = 8 + random() % 40; i > 0; --i) {
      text += random() % 4 == 0 ? Rare(random) : std::string(kWords[random() % std::size(kWords)]);
      text += random() % 9 == 0 ? ", " : " ";
    }
    text += Tag("156", "</span>") + Tag("84", "<o:p>") + Tag("92", "</o:p>");
    text += "\\htmlrtf\\par}\\htmlrtf0 " + Tag("72", "</p>");
  }
  return text + "}";
}

std::string Deflate(const std::string& text) {
  uLongf size = compressBound(text.size());
  std::string packed(size, '\0');
  compress2(reinterpret_cast<Bytef*>(packed.data()), &size,
            reinterpret_cast<const Bytef*>(text.data()), text.size(), 6);
  packed.resize(size);
  return packed;
}

void Finish(benchmark::State& state, const std::string& text, const std::string& packed) {
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(text.size()));
  state.counters["packed"] = static_cast<double>(packed.size());
}

char* KernelCopy(const std::string& bytes) {
  auto* const block = static_cast<char*>(KernelAlloc(bytes.size(), 1, TARN_HERE));
  bytes.copy(block, bytes.size());
  return block;
}

void BM_CompressedRtf(benchmark::State& state) {
  const std::string text = MakeRtf(static_cast<size_t>(state.range(0)));
  const std::string packed = tarn::test::PackRtf(text);
  for (auto _ : state) {
    tarn::MailMessage message;
    if (!tarn::DecodeCompressedRtf(KernelCopy(packed), message, packed.size()).ok()) {
      state.SkipWithError("not unpacked");
    }
    benchmark::DoNotOptimize(message.body.data());
  }
  Finish(state, text, packed);
}
BENCHMARK(BM_CompressedRtf)->Arg(10'000)->Arg(200'000);

void BM_CompressedRtfOfAStore(benchmark::State& state) {
  const std::string text = MakeRtf(static_cast<size_t>(state.range(0)));
  const std::string packed = tarn::test::PackRtf(text);
  std::istringstream stream(packed);
  for (auto _ : state) {
    tarn::MailMessage message;
    tarn::MessageList messages{1, &message};
    stream.seekg(0, std::ios::end);
    if (!tarn::DecodePstCompressedRtf(stream, messages, 0).ok()) {
      state.SkipWithError("not unpacked");
    }
    benchmark::DoNotOptimize(message.body.data());
  }
  Finish(state, text, packed);
}
BENCHMARK(BM_CompressedRtfOfAStore)->Arg(10'000)->Arg(200'000);

void BM_Inflate(benchmark::State& state) {
  const std::string text = MakeRtf(static_cast<size_t>(state.range(0)));
  const std::string packed = Deflate(text);
  for (auto _ : state) {
    const tarn::KernelBlock<char> source(KernelCopy(packed));
    const auto block = tarn::AllocateBlock<unsigned char>(text.size() + 1, TARN_HERE);
    uLongf size = text.size();
    if (uncompress(block.get(), &size, reinterpret_cast<const Bytef*>(source.get()),
                   packed.size()) != Z_OK) {
      state.SkipWithError("not unpacked");
    }
    benchmark::DoNotOptimize(block.get());
  }
  Finish(state, text, packed);
}
BENCHMARK(BM_Inflate)->Arg(10'000)->Arg(200'000);

// The part that the checksum has in unpacking.
void BM_Crc32(benchmark::State& state) {
  const std::string packed = tarn::test::PackRtf(MakeRtf(200'000));
  for (auto _ : state) benchmark::DoNotOptimize(tarn::Crc32(packed.data(), packed.size()));
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(packed.size()));
}
BENCHMARK(BM_Crc32);

}  // namespace
