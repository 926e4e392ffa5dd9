#include "rtf/CodePageForText.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "Platform/CodePages.h"
#include "rtf/CharsetCodePages.h"

namespace tarn {
namespace {

// No code page takes more for a unit.
constexpr size_t kBytesPerUnit = 2;
constexpr size_t kPieceUnits = 512;

// False when the code page cannot carry the text, going by one of its units: conversions are made
// unit by unit. Most code pages fail here, at the cost of a single look-up.
bool MayCarry(char16_t unit, uint32_t codePage) {
  std::array<char16_t, 1> wide;
  std::array<char, kBytesPerUnit> bytes;
  return RoundTripsInCodePage({&unit, 1}, codePage, wide.data(), bytes);
}

// Piece by piece: what one unit becomes does not depend on others. A pair may be cut: no code page
// that is for text carries it, whole or in halves.
bool Carries(std::u16string_view text, uint32_t codePage) {
  std::array<char16_t, kPieceUnits> wide;
  std::array<char, kPieceUnits * kBytesPerUnit> bytes;
  for (; !text.empty(); text.remove_prefix(std::min(text.size(), kPieceUnits))) {
    const std::u16string_view piece = text.substr(0, kPieceUnits);
    const auto room = std::span(bytes).first(piece.size() * kBytesPerUnit);
    if (!RoundTripsInCodePage(piece, codePage, wide.data(), room)) return false;
  }
  return true;
}

}  // namespace

bool RoundTripsInCodePage(std::u16string_view text, uint32_t codePage, char16_t* wideScratch,
                          std::span<char> byteScratch) {
  if (text.data() == nullptr || text.empty() || byteScratch.empty()) return false;
  const platform::EncodedBytes bytes = platform::Utf16ToBytes(codePage, text, byteScratch);
  if (bytes.usedDefault || bytes.size == 0) return false;
  const size_t units = platform::BytesToUtf16(codePage, {byteScratch.data(), bytes.size},
                                              {wideScratch, text.size()});
  return std::u16string_view(wideScratch, units) == text;
}

uint32_t FindCodePageForText(std::u16string_view text) {
  if (text.data() == nullptr || text.empty()) return kNoCodePage;
  if (text.size() > INT32_MAX) return kNoCodePage;  // beyond what a conversion takes
  const auto beyondAscii =
      std::find_if(text.begin(), text.end(), [](char16_t unit) { return unit >= 128; });
  const char16_t probe = beyondAscii != text.end() ? *beyondAscii : text.front();
  for (const CharsetCodePage& row : CharsetCodePageTable) {
    if (row.forText && MayCarry(probe, row.codePage) && Carries(text, row.codePage)) {
      return row.codePage;
    }
  }
  return kNoCodePage;
}

}  // namespace tarn
