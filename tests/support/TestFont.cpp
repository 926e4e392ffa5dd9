#include "support/TestFont.h"

#include <algorithm>
#include <map>
#include <string_view>
#include <vector>

namespace tarn::test {
namespace {

constexpr uint16_t kUnitsPerEm = 1000;
constexpr uint16_t kAdvance = 600;

// Big-endian bytes.
class Writer {
 public:
  Writer& u16(uint32_t value) {
    bytes_ += static_cast<char>(value >> 8 & 0xFF);
    bytes_ += static_cast<char>(value & 0xFF);
    return *this;
  }
  Writer& u32(uint32_t value) { return u16(value >> 16).u16(value & 0xFFFF); }
  Writer& u64(uint64_t value) {
    return u32(static_cast<uint32_t>(value >> 32)).u32(static_cast<uint32_t>(value));
  }
  Writer& raw(std::string_view bytes) {
    bytes_ += bytes;
    return *this;
  }
  Writer& padded(std::string_view bytes) {
    raw(bytes);
    while (bytes_.size() % 4 != 0) bytes_ += '\0';
    return *this;
  }
  uint32_t size() const { return static_cast<uint32_t>(bytes_.size()); }
  const std::string& bytes() const { return bytes_; }

 private:
  std::string bytes_;
};

std::string BigEndian(std::u16string_view text) {
  Writer w;
  for (const char16_t unit : text) w.u16(unit);
  return w.bytes();
}

struct Run {
  uint32_t first = 0;
  uint32_t last = 0;
  uint32_t glyph = 0;  // of the first
};

std::vector<Run> RunsOf(const std::u16string& sorted) {
  std::vector<Run> runs;
  for (size_t at = 0; at < sorted.size(); ++at) {
    if (!runs.empty() && runs.back().last + 1 == sorted[at]) {
      runs.back().last = sorted[at];
    } else {
      runs.push_back({sorted[at], sorted[at], static_cast<uint32_t>(at + 1)});
    }
  }
  // The map ends with a run of U+FFFF, which has no glyph unless the font says so.
  if (runs.empty() || runs.back().last != 0xFFFF) runs.push_back({0xFFFF, 0xFFFF, 0});
  return runs;
}

// Values that the format derives from a count, for binary searches of old readers.
void PutSearchValues(Writer& w, uint32_t count, uint32_t size) {
  uint32_t power = 1;
  uint32_t log = 0;
  for (; power * 2 <= count; power *= 2) ++log;
  w.u16(power * size).u16(log).u16((count - power) * size);
}

std::string CmapTable(const std::vector<Run>& runs, bool symbol) {
  const auto count = static_cast<uint32_t>(runs.size());
  Writer w;
  w.u16(0).u16(1).u16(3).u16(symbol ? 0 : 1).u32(12);
  w.u16(4).u16(16 + 8 * count).u16(0).u16(2 * count);
  PutSearchValues(w, count, 2);
  for (const Run& run : runs) w.u16(run.last);
  w.u16(0);
  for (const Run& run : runs) w.u16(run.first);
  for (const Run& run : runs) w.u16(run.glyph - run.first);
  for (uint32_t at = 0; at < count; ++at) w.u16(0);
  return w.bytes();
}

std::string NameTable(const TestFont& font) {
  struct Record {
    uint16_t language;
    uint16_t id;
    std::u16string text;
  };
  const std::u16string full = font.family + u" " + font.style;
  std::u16string postScript = font.family + u"-" + font.style;
  std::erase(postScript, u' ');
  std::vector<Record> records = {{0x409, 1, font.family},    {0x409, 2, font.style},
                                 {0x409, 3, full + u" 1.0"}, {0x409, 4, full},
                                 {0x409, 5, u"Version 1.0"}, {0x409, 6, postScript}};
  if (!font.otherFamily.empty()) records.push_back({0x411, 1, font.otherFamily});

  const auto count = static_cast<uint32_t>(records.size());
  Writer w;
  w.u16(0).u16(count).u16(6 + 12 * count);
  std::string texts;
  for (const Record& record : records) {
    const std::string text = BigEndian(record.text);
    w.u16(3).u16(font.symbol ? 0 : 1).u16(record.language).u16(record.id);
    w.u16(static_cast<uint32_t>(text.size())).u16(static_cast<uint32_t>(texts.size()));
    texts += text;
  }
  return w.raw(texts).bytes();
}

std::string Os2Table(const TestFont& font, const std::u16string& sorted) {
  const bool bold = font.weight >= 700;
  const uint32_t selection =
      font.italic || bold ? (font.italic ? 0x01u : 0u) | (bold ? 0x20u : 0u) : 0x40u;
  Writer w;
  w.u16(3).u16(kAdvance).u16(font.weight).u16(font.width).u16(0);  // may be embedded
  for (int metric = 0; metric < 10; ++metric) w.u16(100);  // sub- and superscripts, strikeout
  w.u16(0).raw(std::string(10, '\0'));                     // class and PANOSE: any
  w.u32(0).u32(0).u32(0).u32(0).raw("TEST").u16(selection);
  w.u16(sorted.empty() ? 0 : sorted.front()).u16(sorted.empty() ? 0 : sorted.back());
  w.u16(800).u16(0xFFFF & -200).u16(0).u16(800).u16(200);
  w.u32(font.symbol ? 0x80000000u : 1u).u32(0);  // code page range
  w.u16(500).u16(700).u16(0).u16(0x20).u16(0);
  return w.bytes();
}

std::string HeadTable(const TestFont& font) {
  const uint32_t macStyle = (font.weight >= 700 ? 1u : 0u) | (font.italic ? 2u : 0u);
  Writer w;
  w.u32(0x00010000).u32(0x00010000).u32(0).u32(0x5F0F3CF5).u16(0).u16(kUnitsPerEm);
  w.u64(0xB0000000).u64(0xB0000000);  // made and changed, in seconds since 1904
  w.u16(0).u16(0).u16(500).u16(700).u16(macStyle).u16(8).u16(2);
  return w.u16(1).u16(0).bytes();  // offsets of 32 bits
}

// A box as one contour of four points.
std::string BoxGlyph() {
  Writer w;
  w.u16(1).u16(0).u16(0).u16(500).u16(700).u16(3).u16(0).raw(std::string(4, '\1'));
  w.u16(0).u16(500).u16(0).u16(0xFFFF & -500);
  w.u16(0).u16(0).u16(700).u16(0);
  return Writer().padded(w.bytes()).bytes();
}

using Tables = std::map<std::string, std::string>;

void AddGlyphTables(Tables& tables, uint32_t glyphs) {
  const std::string box = BoxGlyph();
  Writer outlines;
  Writer places;
  Writer metrics;
  for (uint32_t glyph = 0; glyph < glyphs; ++glyph) {
    places.u32(outlines.size());
    outlines.raw(box);
    metrics.u16(kAdvance).u16(0);
  }
  tables["glyf"] = outlines.bytes();
  tables["loca"] = places.u32(outlines.size()).bytes();
  tables["hmtx"] = metrics.bytes();
  tables["hhea"] = Writer()
                       .u32(0x00010000)
                       .u16(800)
                       .u16(0xFFFF & -200)
                       .u16(0)
                       .u16(kAdvance)
                       .u64(0x0000000001F40001)  // bearings, extent 500, caret upright
                       .raw(std::string(14, '\0'))
                       .u16(glyphs)
                       .bytes();
  tables["maxp"] = Writer().u32(0x00010000).u16(glyphs).u16(4).u16(1).u16(0).u16(0).u16(2).bytes() +
                   std::string(16, '\0');
  tables["post"] = Writer().u32(0x00030000).raw(std::string(28, '\0')).bytes();
}

uint32_t Checksum(std::string_view bytes) {
  uint32_t sum = 0;
  for (size_t at = 0; at < bytes.size(); ++at) {
    sum += static_cast<uint32_t>(static_cast<uint8_t>(bytes[at])) << (24 - 8 * (at % 4));
  }
  return sum;
}

std::string Assemble(const Tables& tables) {
  const auto count = static_cast<uint32_t>(tables.size());
  Writer directory;
  directory.u32(0x00010000).u16(count);
  PutSearchValues(directory, count, 16);
  Writer body;
  size_t headAt = 0;
  const uint32_t bodyAt = 12 + 16 * count;
  for (const auto& [tag, bytes] : tables) {
    if (tag == "head") headAt = bodyAt + body.size();
    directory.raw(tag).u32(Checksum(bytes)).u32(bodyAt + body.size());
    directory.u32(static_cast<uint32_t>(bytes.size()));
    body.padded(bytes);
  }
  std::string file = directory.bytes() + body.bytes();
  file.replace(headAt + 8, 4, Writer().u32(0xB1B0AFBA - Checksum(file)).bytes());
  return file;
}

}  // namespace

std::string MakeTestFont(const TestFont& font) {
  std::u16string sorted = font.characters;
  std::sort(sorted.begin(), sorted.end());
  sorted.erase(std::unique(sorted.begin(), sorted.end()), sorted.end());
  Tables tables;
  tables["OS/2"] = Os2Table(font, sorted);
  tables["cmap"] = CmapTable(RunsOf(sorted), font.symbol);
  tables["head"] = HeadTable(font);
  tables["name"] = NameTable(font);
  AddGlyphTables(tables, static_cast<uint32_t>(sorted.size() + 1));
  return Assemble(tables);
}

std::u16string UnitRange(char16_t first, char16_t last) {
  std::u16string units;
  for (uint32_t unit = first; unit <= last; ++unit) units += static_cast<char16_t>(unit);
  return units;
}

}  // namespace tarn::test
