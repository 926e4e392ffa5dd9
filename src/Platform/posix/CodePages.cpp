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

bool IsConvertible(size_t size) noexcept { return size != 0 && size <= INT32_MAX; }

std::span<const uint8_t> BytesOf(std::string_view text) noexcept {
  return {reinterpret_cast<const uint8_t*>(text.data()), text.size()};
}

size_t DecodeSymbol(std::span<const uint8_t> source, Output<char16_t> output) noexcept {
  for (const uint8_t byte : source) {
    const char16_t base = byte < 0x20 ? 0 : kSymbolBase;
    if (!output.Put(base | byte)) return 0;
  }
  return output.Size();
}

size_t EncodeSymbol(std::u16string_view source, Output<char> output) noexcept {
  for (const char16_t unit : source) {
    const bool isSymbol = unit >= kSymbolBase + 0x20 && unit <= kSymbolBase + 0xFF;
    if (unit >= 0x20 && !isSymbol) return 0;
    if (!output.Put(static_cast<char>(unit & 0xFF))) return 0;
  }
  return output.Size();
}

size_t DecodeSingleBytes(const CodePageRow& row, std::span<const uint8_t> source,
                         Output<char16_t> output) noexcept {
  for (const uint8_t byte : source) {
    if (!output.Put(row.cells[byte])) return 0;
  }
  return output.Size();
}

size_t DecodePairs(size_t page, const CodePageRow& singles, std::span<const uint8_t> source,
                   Output<char16_t> output) noexcept {
  const CodePageSpec& spec = AllCodePageSpecs()[page];
  for (size_t at = 0; at < source.size(); ++at) {
    const uint8_t byte = source[at];
    char16_t unit = singles.cells[byte];
    const bool hasTrail = at + 1 < source.size() && source[at + 1] != 0;
    if (byte >= 0x80 && hasTrail && IsLeadByte(spec, byte)) {
      const CodePageRow* row = DecodingRow(page, byte);
      if (row == nullptr) return 0;
      unit = row->cells[source[++at]];
    }
    if (!output.Put(unit)) return 0;
  }
  return output.Size();
}

EncodedBytes EncodeUnits(size_t page, std::u16string_view source, Output<char> output) noexcept {
  bool usedDefault = false;
  for (const char16_t unit : source) {
    const CodePageRow* row = EncodingRow(page, HighByte(unit));
    if (row == nullptr) return {};
    const uint16_t code = row->cells[LowByte(unit)];
    // An approximation by "?" cannot be told from the default, and counts as it.
    if (code == '?' && unit != u'?') usedDefault = true;
    if (code > 0xFF && !output.Put(static_cast<char>(code >> 8))) return {};
    if (!output.Put(static_cast<char>(code & 0xFF))) return {};
  }
  const size_t size = output.Size();
  return {size, usedDefault && size != 0};
}

}  // namespace

size_t BytesToUtf16(uint32_t codePage, std::string_view source,
                    std::span<char16_t> destination) noexcept {
  if (!IsConvertible(source.size())) return 0;
  if (codePage == kCodePageUtf8) return Utf8ToUtf16(source, destination);
  const std::span<const uint8_t> bytes = BytesOf(source);
  const Output output(destination);
  if (codePage == kCodePageSymbol) return DecodeSymbol(bytes, output);
  const size_t page = FindCodePageSpec(codePage);
  if (page == kCodePageCount) return 0;
  const CodePageRow* singles = DecodingRow(page, 0);
  if (singles == nullptr) return 0;
  if (AllCodePageSpecs()[page].leads.empty()) return DecodeSingleBytes(*singles, bytes, output);
  return DecodePairs(page, *singles, bytes, output);
}

EncodedBytes Utf16ToBytes(uint32_t codePage, std::u16string_view source,
                          std::span<char> destination) noexcept {
  if (!IsConvertible(source.size())) return {};
  if (codePage == kCodePageUtf8) return Utf16ToUtf8(source, destination);
  const Output output(destination);
  if (codePage == kCodePageSymbol) return {EncodeSymbol(source, output)};
  const size_t page = FindCodePageSpec(codePage);
  return page == kCodePageCount ? EncodedBytes{} : EncodeUnits(page, source, output);
}

uint32_t AnsiCodePage() noexcept { return kWesternAnsi; }

bool IsCodePageSupported(uint32_t codePage) noexcept {
  return codePage == kCodePageUtf8 || codePage == kCodePageSymbol ||
         FindCodePageSpec(codePage) != kCodePageCount;
}

}  // namespace tarn::platform
