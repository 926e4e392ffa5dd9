// FontTables.h - font tables for tests: parsed from a text, prepared from a document, shown as
// text.
#ifndef TARN_TESTS_RTF_FONTTABLES_H
#define TARN_TESTS_RTF_FONTTABLES_H

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "rtf/RtfFonts.h"

namespace tarn::test {

// "number:codePage:charset:name" of each entry, "-" for a null name, with "|" between them.
inline std::string Show(const RtfFontTable& table) {
  std::string shown;
  for (const RtfFontEntry& entry : table.entries) {
    if (!shown.empty()) shown += "|";
    shown += std::to_string(static_cast<int32_t>(entry.number)) + ":" +
             std::to_string(entry.codePage) + ":" + std::to_string(entry.charset) + ":" +
             (entry.name == nullptr ? "-" : entry.name);
  }
  return shown;
}

inline std::string Show(const RtfFonts& fonts) { return Show(fonts.table()); }

inline std::string TableText(const RtfFontTable& table) {
  return std::string(table.tableText.view());
}

inline std::string TableText(const RtfFonts& fonts) { return TableText(fonts.table()); }

// Parses a text that ends where its heap block does, so that a step outside is noticed.
struct Parsed {
  explicit Parsed(std::string_view text) : bytes(text.begin(), text.end()) {
    std::string_view rest(bytes.data(), bytes.size());
    status = ParseRtfFontTable(table, rest);
    taken = static_cast<int64_t>(bytes.size() - rest.size());
  }

  std::vector<char> bytes;
  RtfFontTable table;
  Status status;
  int64_t taken = 0;  // bytes at the front
};

inline Status Prepare(RtfFonts& fonts, std::string_view document) {
  const std::vector<char> bytes(document.begin(), document.end());
  return PrepareRtfFontTable(fonts, bytes.data(), bytes.size());
}

// The number of a font that is added, or the failure.
inline int64_t Add(RtfFonts& fonts, const char* face, const char* family, uint32_t codePage,
                   uint32_t charset) {
  uint32_t number = 77777;
  const Status status = AddRtfFont(fonts, {face, family, codePage, charset}, number);
  return status.ok() ? int64_t{number} : int64_t{status.code()};
}

// So many entries, all of them zeros.
inline KernelArray<RtfFontEntry> ZeroEntries(size_t count) {
  KernelArray<RtfFontEntry> entries;
  EXPECT_TRUE(entries.reserve(count));
  while (entries.size() < count) entries.put({0, 0, 0, nullptr});
  return entries;
}

}  // namespace tarn::test

#endif
