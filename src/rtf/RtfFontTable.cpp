#include "rtf/RtfFontTable.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "Common/ByteSearch.h"
#include "rtf/CharsetCodePages.h"
#include "rtf/RtfFontEntries.h"
#include "rtf/RtfNumbers.h"

namespace tarn {
namespace {

// What a document without a font table gets, in front of its first font: a form feed stands where
// "\f" would. Documents made so far look that way, and comparisons rely on it.
constexpr std::string_view kEmptyTable = "\x0Conttbl}";

// The number behind the first occurrence of a word; false without one.
bool FindNumber(const char* text, const char* end, std::string_view word, uint32_t& number) {
  const char* at = FindBytes(text, end, word);
  if (at == nullptr) return false;
  at += word.size();
  number = TakeRtfNumber(at, end);
  return true;
}

int32_t ReadFontTable(RtfFontTable& table, const char* text, const char* start, const char* end) {
  table.tableStart = static_cast<uint64_t>(start - text);
  const char* cursor = start;
  if (const int32_t status = ParseRtfFontTable(table, cursor, end); status != StatusOk) {
    return status;
  }
  table.tableText.setLength(0);
  const auto size = static_cast<uint64_t>(cursor - start);
  if (const int32_t status = table.tableText.append(start, size); status != StatusOk) {
    return status;
  }
  table.tableEnd = static_cast<uint64_t>(cursor - text);
  table.nextNumber = table.count == 0 ? 0 : table.entries[table.count - 1].number + 1;
  table.parsed = 1;
  return StatusOk;
}

struct NewFont {
  const char* faceName;
  const char* familyWord;
};

NewFont FontForCharset(uint32_t charset) {
  switch (charset) {
    case 0:
    case 178:
    case 204:
    case 238:
      return {"Arial", "swiss"};
    case 2:
      return {"Symbol", "nil"};
    case 128:
      return {"MS Gothic", "swiss"};
    default:
      return {"Batang", "swiss"};
  }
}

bool Carries(const RtfFontTable& table, const RtfFontEntry& entry, uint32_t codePage) {
  return entry.codePage == codePage || (codePage == table.ansiCodePage && entry.codePage == 0);
}

// The index of the first entry that carries the code page, or -1. What was found is kept: entries
// only ever come behind it, so it stays the first.
int32_t FindEntryFor(RtfFontTable& table, uint32_t codePage) {
  const bool ofDocument = codePage == table.ansiCodePage;
  for (const RtfFontMemo& memo : table.found) {
    if (memo.entry >= 0 && memo.codePage == codePage && memo.ofDocument == ofDocument) {
      return memo.entry;
    }
  }
  for (int32_t i = 0; i < table.count; ++i) {
    ++table.fontSteps;
    if (!Carries(table, table.entries[i], codePage)) continue;
    table.found[table.nextFound] = {codePage, ofDocument, i};
    table.nextFound = (table.nextFound + 1) % table.found.size();
    return i;
  }
  return -1;
}

// As TrackedBuffer::reserve, but a host that refuses its budget leaves the contents alone, too.
bool ReserveKeeping(TrackedBuffer<char>& buffer, uint64_t count) {
  if (buffer.data() != nullptr && buffer.capacity() >= count) return true;
  const uint64_t held = buffer.meter().current;
  if (!buffer.count(buffer.increment() + count).ok()) return false;
  if (buffer.reserve(count) != nullptr) return true;
  buffer.count(held).ignore();
  return false;
}

}  // namespace

RtfFontTable::~RtfFontTable() { ReleaseRtfFontTable(*this); }

KernelBlock<char> CopyRtfFontName(std::string_view name) {
  auto copy = AllocateBlock<char>(name.size() + 1, TARN_HERE);
  if (!copy) return copy;
  std::copy(name.begin(), name.end(), copy.get());
  copy[name.size()] = '\0';
  return copy;
}

bool ReserveRtfFontEntry(RtfFontTable& table) {
  const uint64_t bytes = (static_cast<uint64_t>(table.count) + 1) * sizeof(RtfFontEntry);
  void* const block = KernelRealloc(table.entries, bytes, TARN_HERE);
  if (block == nullptr) return false;
  table.entries = static_cast<RtfFontEntry*>(block);
  return true;
}

int32_t PrepareRtfFontTable(RtfFontTable& table, const char* text, uint64_t length) {
  if (table.parsed == 1) return StatusOk;
  if (text == nullptr) return StatusNotSupported;
  const char* const end = text + length;
  FindNumber(text, end, "\\ansicpg", table.ansiCodePage);
  FindNumber(text, end, "\\deff", table.defaultFont);
  if (const char* const start = FindBytes(text, end, "\\fonttbl"); start != nullptr) {
    return ReadFontTable(table, text, start, end);
  }
  const char* const from = FindBytes(text, end, "\\from");
  if (from == nullptr) return StatusNotSupported;
  table.nextNumber = 0;
  table.tableStart = table.tableEnd = static_cast<uint64_t>(from - text);
  return StatusOk;
}

int32_t FontForCodePage(RtfFontTable& table, uint32_t codePage, uint32_t& fontNumber) {
  if (const int32_t entry = FindEntryFor(table, codePage); entry >= 0) {
    fontNumber = table.entries[entry].number;
    return StatusOk;
  }
  for (const CharsetCodePage& row : CharsetCodePageTable) {
    if (row.codePage != codePage) continue;
    const NewFont font = FontForCharset(row.charset);
    return AddRtfFont(table, font.faceName, font.familyWord, codePage, row.charset, fontNumber);
  }
  return StatusBadArgument;
}

int32_t AddRtfFont(RtfFontTable& table, const char* faceName, const char* familyWord,
                   uint32_t codePage, uint32_t charset, uint32_t& fontNumber) {
  std::array<char, 100> group;
  const int needed = std::snprintf(group.data(), group.size(), "{\\f%d \\%s \\fcharset%d %s}",
                                   static_cast<int32_t>(table.nextNumber), familyWord,
                                   static_cast<int32_t>(charset), faceName);
  if (needed < 0) return StatusOutOfMemory;
  const size_t size = std::min(static_cast<size_t>(needed), group.size() - 1);
  group[size - 1] = '}';  // a name that is cut off leaves no group open

  TrackedBuffer<char>& text = table.tableText;
  const uint64_t held = text.data() == nullptr ? 0 : text.length();
  const uint64_t before = held == 0 ? kEmptyTable.size() : held;
  KernelBlock<char> name = CopyRtfFontName(faceName);
  if (!name || !ReserveRtfFontEntry(table) || !ReserveKeeping(text, before + size)) {
    return StatusOutOfMemory;
  }
  if (held == 0) std::copy(kEmptyTable.begin(), kEmptyTable.end(), text.data());
  text.data()[before + size - 1] = text.data()[before - 1];
  std::memcpy(text.data() + before - 1, group.data(), size);
  text.setLength(before + size);

  fontNumber = table.nextNumber;
  table.entries[table.count++] = {table.nextNumber, codePage, charset, name.take()};
  ++table.nextNumber;
  table.changed = 1;
  return StatusOk;
}

void ReleaseRtfFontTable(RtfFontTable& table) {
  for (int32_t i = 0; i < table.count; ++i) {
    if (table.entries[i].name != nullptr) KernelFree(table.entries[i].name, TARN_HERE);
  }
  if (table.entries != nullptr) KernelFree(table.entries, TARN_HERE);
  table.entries = nullptr;
  table.count = 0;
  table.found = {};
  table.coverage.clear();
  table.coverageWork = 0;
}

}  // namespace tarn
