// PlatformDump FILE: writes all answers of the platform that texts depend on: what every byte and
// pair of every code page decodes to, what every unit encodes to, and which units a font has.
//
//   file      sections, each a line "<kind> <name> <count>\n" and count answers
//   singles   page, 256 answers: one byte decoded
//   pairs     double-byte pages and UTF-8, 65,536 answers: two bytes decoded
//   units     page, 65,536 answers: one unit encoded
//   glyphs    face, 65,536 answers: 1 when the face has the unit
//   answer    8 bytes, little-endian: size, 1 for a used default, up to 6 bytes of the result with
//             units as 2 bytes
#include <array>
#include <cstdint>
#include <fstream>
#include <iostream>
#include <span>
#include <string>
#include <vector>

#include "GlyphQuestion.h"
#include "Platform/CodePages.h"
#include "support/TestFonts.h"

namespace tarn::test {
namespace {

constexpr uint32_t kPages[] = {42,    437,   737,   775,   850,   852,   855,   857,   860,   861,
                               862,   863,   865,   866,   874,   932,   936,   949,   950,   1250,
                               1251,  1252,  1253,  1254,  1255,  1256,  1257,  1258,  1361,  10000,
                               10006, 10007, 10029, 10081, 20127, 20866, 21866, 28591, 28592, 28593,
                               28594, 28595, 28596, 28597, 28598, 28599, 28603, 28605, 65001};
constexpr uint32_t kPagesWithPairs[] = {932, 936, 949, 950, 1361, 65001};

using Answer = std::array<char, 8>;
using Answers = std::vector<Answer>;

Answer DecodingOf(uint32_t page, std::string_view bytes) {
  std::array<char16_t, 3> units{};
  const size_t size = platform::BytesToUtf16(page, bytes, units);
  Answer answer{static_cast<char>(2 * size)};
  for (size_t at = 0; at < size; ++at) {
    answer[2 + 2 * at] = static_cast<char>(units[at] >> 8);
    answer[3 + 2 * at] = static_cast<char>(units[at] & 0xFF);
  }
  return answer;
}

Answer EncodingOf(uint32_t page, char16_t unit) {
  Answer answer{};
  const platform::EncodedBytes encoded =
      platform::Utf16ToBytes(page, {&unit, 1}, std::span(answer).subspan<2>());
  answer[0] = static_cast<char>(encoded.size);
  answer[1] = encoded.usedDefault ? 1 : 0;
  return answer;
}

class Dump {
 public:
  explicit Dump(const char* file) : stream_(file, std::ios::binary) {}

  void page(uint32_t page) {
    Answers singles;
    Answers units;
    for (uint32_t byte = 0; byte <= 0xFF; ++byte) {
      const char source = static_cast<char>(byte);
      singles.push_back(DecodingOf(page, {&source, 1}));
    }
    for (uint32_t unit = 0; unit <= 0xFFFF; ++unit) {
      units.push_back(EncodingOf(page, static_cast<char16_t>(unit)));
    }
    section("singles", std::to_string(page), singles);
    section("units", std::to_string(page), units);
  }

  void pairs(uint32_t page) {
    Answers pairs;
    for (uint32_t pair = 0; pair <= 0xFFFF; ++pair) {
      const std::array<char, 2> bytes = {static_cast<char>(pair >> 8),
                                         static_cast<char>(pair & 0xFF)};
      pairs.push_back(DecodingOf(page, {bytes.data(), bytes.size()}));
    }
    section("pairs", std::to_string(page), pairs);
  }

  void glyphs(const std::string& face) {
    const GlyphQuestion question(std::u16string(face.begin(), face.end()));
    Answers units;
    for (uint32_t unit = 0; unit <= 0xFFFF; ++unit) {
      const auto text = static_cast<char16_t>(unit);
      const bool has = question.has({&text, 1});
      units.push_back({1, 0, has ? '\1' : '\0'});
    }
    section("glyphs", face, units);
  }

  bool isWritten() { return stream_.flush().good(); }

 private:
  void section(const char* kind, const std::string& name, const Answers& answers) {
    stream_ << kind << ' ' << name << ' ' << answers.size() << '\n';
    for (const Answer& answer : answers) {
      stream_.write(answer.data(), static_cast<std::streamsize>(answer.size()));
    }
  }

  std::ofstream stream_;
};

// Names that no machine has.
std::vector<TestFont> Fonts() {
  return {{.family = u"TarnLetters",
           .characters = UnitRange(0x20, 0x17F) + UnitRange(0x391, 0x3CE) + u"\u10D0\u20AC" +
                         UnitRange(0x3041, 0x30FE) + UnitRange(0xAC00, 0xAC10) +
                         UnitRange(0xF000, 0xF0FF) + u"\uFB13\uFFFD\uFFFF"},
          {.family = u"TarnHalves", .characters = UnitRange(0xD7F0, 0xE010)}};
}

int Run(const char* file) {
  const TestFonts fonts(Fonts());
  Dump dump(file);
  for (const uint32_t page : kPages) dump.page(page);
  for (const uint32_t page : kPagesWithPairs) dump.pairs(page);
  dump.glyphs("TarnLetters");
  dump.glyphs("TarnHalves");
  return dump.isWritten() ? 0 : 1;
}

}  // namespace
}  // namespace tarn::test

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: PlatformDump FILE\n";
    return 2;
  }
  return tarn::test::Run(argv[1]);
}
