// Font tables out of any bytes: parsed, found by number, prepared, asked for fonts, extended.
//
// Besides what the sanitizers see, a run aborts when the parser reads another table than the plain
// one below does, when a table that is extended is not what its entries say, or when anything is
// left behind in the kernel.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Tarnbase/PlainKernel.h"
#include "rtf/CharsetCodePages.h"
#include "rtf/RtfFonts.h"

namespace {

using tarn::RtfFontEntry;
using tarn::RtfFonts;
using tarn::RtfFontTable;

void Expect(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "%s\n", what);
  std::abort();
}

struct PlainFont {
  uint32_t number = UINT32_MAX;
  uint32_t codePage = 0;
  std::optional<std::string> name;
};

// The same table by strings and whole-text searches.
struct PlainTable {
  explicit PlainTable(std::string bytes) : text(std::move(bytes)) { status = Read(); }

  tarn::Status Read() {
    PlainFont font;
    int64_t depth = 0;
    while (at < text.size()) {
      const char byte = text[at++];
      if (byte == '{') {
        if (++depth == 1) font.number = UINT32_MAX;
      } else if (byte == '}') {
        if (depth-- == 1) {
          fonts.push_back(font);
          font = PlainFont{0, 0, std::nullopt};
        }
        if (depth == -1) return StatusOk;
      } else if (byte == '\\') {
        if (at + 1 >= text.size()) return StatusNotSupported;
        ReadWord(font);
      } else if (byte == '"' && depth == 1) {
        font.name = Until("\"\\{}");
        Skip("\"");
      } else if (depth == 1 && std::string_view("\n\r ;").find(byte) == std::string_view::npos) {
        --at;
        font.name = Until("\";\\{}");
        Skip("\";");
      }
    }
    return StatusOk;
  }

  void ReadWord(PlainFont& font) {
    if (text[at] == 'f' && text[at + 1] >= '0' && text[at + 1] <= '9') {
      at += 1;
      font.number = Number();
    } else if (text.compare(at, 8, "fcharset") == 0) {
      at += 8;
      const uint32_t charset = Number();
      for (const auto& row : tarn::CharsetCodePageTable) {
        if (row.charset == charset) font.codePage = row.codePage;
      }
    } else if (text.compare(at, 4, "fcpg") == 0) {
      at += 4;
      font.codePage = Number();
    } else {
      at += 1;
      Until(" \\{}");
    }
  }

  uint32_t Number() {
    uint32_t number = 0;
    while (at < text.size() && text[at] >= '0' && text[at] <= '9') {
      number = number * 10 + static_cast<uint32_t>(text[at++] - '0');
    }
    Skip(" ");
    return number;
  }

  std::string Until(const char* ends) {
    const size_t start = at;
    at = std::min(text.find_first_of(ends, at), text.size());
    return text.substr(start, at - start);
  }

  void Skip(std::string_view bytes) {
    if (at < text.size() && bytes.find(text[at]) != std::string_view::npos) ++at;
  }

  std::string text;
  size_t at = 0;
  std::vector<PlainFont> fonts;
  tarn::Status status;
};

void Compare(const RtfFontEntry& entry, const PlainFont& font) {
  Expect(entry.number == font.number, "another number");
  Expect(entry.codePage == font.codePage, "another code page");
  Expect(entry.charset == 0, "a charset");
  Expect((entry.name == nullptr) == !font.name.has_value(), "a name more or less");
  if (entry.name == nullptr) return;
  Expect(std::memcmp(entry.name, font.name->c_str(), font.name->size() + 1) == 0, "another name");
}

void Parse(const std::vector<char>& bytes) {
  const PlainTable plain(std::string(bytes.begin(), bytes.end()));
  RtfFontTable table;
  std::string_view rest(bytes.data(), bytes.size());
  const tarn::Status status = tarn::ParseRtfFontTable(table, rest);
  Expect(status == plain.status, "another status");
  const size_t taken = bytes.size() - rest.size();
  Expect(taken == (status == StatusOk ? plain.at : 0), "another end");
  Expect(table.count() == plain.fonts.size(), "another number of fonts");
  for (size_t i = 0; i < plain.fonts.size(); ++i) Compare(table.entries[i], plain.fonts[i]);
}

std::string Text(const RtfFontTable& table) { return std::string(table.tableText.view()); }

// Asks for each code page, twice, by the plain rule too.
void AskForFonts(RtfFonts& fonts) {
  const RtfFontTable& table = fonts.table();
  for (const uint32_t codePage : {table.ansiCodePage, 1252u, 932u, 1253u, 0u, 42u, 20866u, 932u}) {
    const RtfFontEntry* first = nullptr;
    for (size_t i = table.count(); i-- > 0;) {
      const uint32_t own = table.entries[i].codePage;
      if (own == codePage || (own == 0 && codePage == table.ansiCodePage)) {
        first = &table.entries[i];
      }
    }
    const size_t count = table.count();
    const std::string before = Text(table);
    const uint32_t expected = first != nullptr ? first->number : table.nextNumber;
    uint32_t number = 0;
    const tarn::Status status = tarn::FontForCodePage(fonts, codePage, number);
    Expect(status == StatusOk || (status == StatusBadArgument && first == nullptr),
           "a status that no font has");
    const bool added = status == StatusOk && first == nullptr;
    Expect(table.count() == count + (added ? 1 : 0), "another number of fonts");
    if (status == StatusOk) Expect(number == expected, "another font");
    const std::string after = Text(table);
    if (!added) {
      Expect(after == before, "a text that changed");
    } else if (!before.empty()) {
      Expect(after.back() == before.back() &&
                 after.compare(0, before.size() - 1, before, 0, before.size() - 1) == 0 &&
                 after.compare(before.size() - 1, 3, "{\\f") == 0 && after[after.size() - 2] == '}',
             "a font in another place");
    }
  }
}

// Reads the bytes for their numbers, and once more: the first font of a number counts.
void FindNumbers(const std::vector<char>& bytes) {
  RtfFonts fonts;
  for (int round = 0; round < 2; ++round) {
    std::string_view rest(bytes.data(), bytes.size());
    if (fonts.readTable(rest) != StatusOk) return;
  }
  const RtfFontTable& table = fonts.table();
  const size_t most = std::min<size_t>(table.count(), 200);
  for (size_t i = 0; i < most; ++i) {
    const uint32_t number = table.entries[i].number;
    size_t first = 0;
    while (table.entries[first].number != number) ++first;
    const uint32_t* const codePage = fonts.codePageOf(number);
    Expect((codePage == nullptr) == (number == UINT32_MAX), "a number that is not found");
    if (codePage != nullptr) {
      Expect(*codePage == table.entries[first].codePage, "the code page of another font");
    }
  }
}

void Prepare(const std::vector<char>& bytes) {
  RtfFonts fonts;
  fonts.setAnsiCodePage(1252);
  const RtfFontTable& table = fonts.table();
  const tarn::Status status = tarn::PrepareRtfFontTable(fonts, bytes.data(), bytes.size());
  Expect(status == StatusOk || status == StatusNotSupported, "a status that no document has");
  if (status != StatusOk) return;
  Expect(table.tableStart <= table.tableEnd && table.tableEnd <= bytes.size(), "a stretch outside");
  const std::string_view document(bytes.data(), bytes.size());
  Expect(Text(table) == document.substr(table.tableStart, table.tableEnd - table.tableStart),
         "another text");
  AskForFonts(fonts);
}

PlainKernelUsageRecord Usage() {
  PlainKernelUsageRecord usage = {};
  PlainKernelUsage(&usage);
  return usage;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const uint64_t before = Usage().liveBlocks;
  // Of exactly this size, so that a step outside is noticed.
  const std::vector<char> bytes(data, data + size);
  Parse(bytes);
  FindNumbers(bytes);
  Prepare(bytes);
  Expect(Usage().liveBlocks == before, "a call left something behind");
  return 0;
}
