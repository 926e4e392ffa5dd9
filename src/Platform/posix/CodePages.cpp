// CodePages.cpp - the pair walker of the table pages, and the choice between those, UTF-8 and 42.
#include "Platform/CodePages.h"

#include <cstddef>

#include "Platform/Output.h"
#include "Platform/Utf8CodePage.h"
#include "Platform/posix/CodePageRows.h"
#include "Platform/posix/CodePageSpecs.h"

namespace tarn::platform {
namespace {

constexpr uint32_t kWesternAnsi = 1252;
constexpr char16_t kSymbolBase = 0xF000;

template <typename Source, typename Unit>
bool AreUsable(const Source& source, const Unit* destination, int32_t capacity) noexcept {
  return !source.empty() && source.size() <= INT32_MAX && capacity >= 0 &&
         (capacity == 0 || destination != nullptr);
}

int32_t DecodeSymbol(std::string_view source, Output<char16_t> output) noexcept {
  for (const char byte : source) {
    const auto unit = static_cast<uint8_t>(byte);
    if (!output.Put(unit < 0x20 ? unit : static_cast<char16_t>(kSymbolBase + unit))) return 0;
  }
  return output.Size();
}

int32_t EncodeSymbol(std::u16string_view source, Output<char> output) noexcept {
  for (const char16_t unit : source) {
    const bool isSymbol = unit >= kSymbolBase + 0x20 && unit <= kSymbolBase + 0xFF;
    if (unit >= 0x20 && !isSymbol) return 0;
    if (!output.Put(static_cast<char>(unit & 0xFF))) return 0;
  }
  return output.Size();
}

int32_t DecodeSingleBytes(const CodePageRow& row, std::string_view source,
                          Output<char16_t> output) noexcept {
  for (const char byte : source) {
    if (!output.Put(row.cells[static_cast<uint8_t>(byte)])) return 0;
  }
  return output.Size();
}

int32_t DecodePairs(size_t page, const CodePageRow& singles, std::string_view source,
                    Output<char16_t> output) noexcept {
  const CodePageSpec& spec = AllCodePageSpecs()[page];
  for (size_t at = 0; at < source.size(); ++at) {
    const auto byte = static_cast<uint8_t>(source[at]);
    char16_t unit = singles.cells[byte];
    const bool hasTrail = at + 1 < source.size() && source[at + 1] != '\0';
    if (byte >= 0x80 && hasTrail && IsLeadByte(spec, byte)) {
      const CodePageRow* row = DecodingRow(page, byte);
      if (row == nullptr) return 0;
      unit = row->cells[static_cast<uint8_t>(source[++at])];
    }
    if (!output.Put(unit)) return 0;
  }
  return output.Size();
}

int32_t EncodeUnits(size_t page, std::u16string_view source, Output<char> output,
                    bool& usedDefault) noexcept {
  for (const char16_t unit : source) {
    const CodePageRow* row = EncodingRow(page, static_cast<uint8_t>(unit >> 8));
    if (row == nullptr) return 0;
    const uint16_t code = row->cells[unit & 0xFF];
    // An approximation by "?" cannot be told from the default, and counts as it.
    if (code == '?' && unit != u'?') usedDefault = true;
    if (code > 0xFF && !output.Put(static_cast<char>(code >> 8))) return 0;
    if (!output.Put(static_cast<char>(code & 0xFF))) return 0;
  }
  return output.Size();
}

}  // namespace

int32_t BytesToUtf16(uint32_t codePage, std::string_view source, char16_t* destination,
                     int32_t capacity) noexcept {
  if (!AreUsable(source, destination, capacity)) return 0;
  if (codePage == kCodePageUtf8) return Utf8ToUtf16(source, destination, capacity);
  const Output<char16_t> output(destination, capacity);
  if (codePage == kCodePageSymbol) return DecodeSymbol(source, output);
  const size_t page = FindCodePageSpec(codePage);
  if (page == kCodePageCount) return 0;
  const CodePageRow* singles = DecodingRow(page, 0);
  if (singles == nullptr) return 0;
  if (AllCodePageSpecs()[page].leads.empty()) return DecodeSingleBytes(*singles, source, output);
  return DecodePairs(page, *singles, source, output);
}

int32_t Utf16ToBytes(uint32_t codePage, std::u16string_view source, char* destination,
                     int32_t capacity, bool* usedDefault) noexcept {
  bool ignored = false;
  bool& used = usedDefault != nullptr ? *usedDefault : ignored;
  used = false;
  if (!AreUsable(source, destination, capacity)) return 0;
  const Output<char> output(destination, capacity);
  int32_t size = 0;
  if (codePage == kCodePageUtf8) {
    size = Utf16ToUtf8(source, destination, capacity, used);
  } else if (codePage == kCodePageSymbol) {
    size = EncodeSymbol(source, output);
  } else if (const size_t page = FindCodePageSpec(codePage); page != kCodePageCount) {
    size = EncodeUnits(page, source, output, used);
  }
  if (size == 0) used = false;
  return size;
}

uint32_t AnsiCodePage() noexcept { return kWesternAnsi; }

bool IsCodePageSupported(uint32_t codePage) noexcept {
  return codePage == kCodePageUtf8 || codePage == kCodePageSymbol ||
         FindCodePageSpec(codePage) != kCodePageCount;
}

}  // namespace tarn::platform
