// RtfFonts.h - font tables for tests: parsed from a text, prepared from a document, shown as text.
#ifndef TARN_TESTS_RTF_RTFFONTS_H
#define TARN_TESTS_RTF_RTFFONTS_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "rtf/RtfFontTable.h"

namespace tarn::test {

// "number:codePage:charset:name" of each entry, "-" for a null name, with "|" between them.
inline std::string Show(const RtfFontTable& table) {
  std::string shown;
  for (int32_t i = 0; i < table.count; ++i) {
    const RtfFontEntry& entry = table.entries[i];
    if (i != 0) shown += "|";
    shown += std::to_string(static_cast<int32_t>(entry.number)) + ":" +
             std::to_string(entry.codePage) + ":" + std::to_string(entry.charset) + ":" +
             (entry.name == nullptr ? "-" : entry.name);
  }
  return shown;
}

inline std::string TableText(const RtfFontTable& table) {
  return table.tableText.data() == nullptr
             ? std::string()
             : std::string(table.tableText.data(), table.tableText.length());
}

// Parses a text that ends where its heap block does, so that a step outside is noticed.
struct Parsed {
  explicit Parsed(std::string_view text) : bytes(text.begin(), text.end()) {
    const char* const start = bytes.data();
    const char* cursor = start;
    status = ParseRtfFontTable(table, cursor, start + bytes.size());
    taken = cursor - start;
  }

  std::vector<char> bytes;
  RtfFontTable table;
  int32_t status = 0;
  int64_t taken = 0;  // bytes that the cursor moved
};

inline int32_t Prepare(RtfFontTable& table, std::string_view document) {
  const std::vector<char> bytes(document.begin(), document.end());
  return PrepareRtfFontTable(table, bytes.data(), bytes.size());
}

}  // namespace tarn::test

#endif
