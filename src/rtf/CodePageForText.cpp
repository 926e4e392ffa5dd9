#include "rtf/CodePageForText.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "Platform/CodePages.h"
#include "rtf/CharsetCodePages.h"
#include "rtf/ConversionCapacity.h"

namespace tarn {
namespace {

// No code page takes more for a unit.
constexpr uint64_t kBytesPerUnit = 2;
constexpr uint64_t kPieceUnits = 512;

// False when the code page cannot carry the text, going by one of its units: conversions are made
// unit by unit. Most code pages fail here, at the cost of a single look-up.
bool MayCarry(char16_t unit, uint32_t codePage) {
  std::array<char16_t, 1> wide;
  std::array<char, kBytesPerUnit> bytes;
  return RoundTripsInCodePage(&unit, 1, codePage, wide.data(), bytes.data(), bytes.size()) == 1;
}

// Piece by piece: what one unit becomes does not depend on others. A pair may be cut: no code page
// that is for text carries it, whole or in halves.
bool Carries(const char16_t* text, uint64_t length, uint32_t codePage) {
  std::array<char16_t, kPieceUnits> wide;
  std::array<char, kPieceUnits * kBytesPerUnit> bytes;
  for (uint64_t at = 0; at < length;) {
    const uint64_t piece = std::min(length - at, kPieceUnits);
    if (RoundTripsInCodePage(text + at, piece, codePage, wide.data(), bytes.data(),
                             piece * kBytesPerUnit) != 1) {
      return false;
    }
    at += piece;
  }
  return true;
}

uint32_t FirstCarrier(const char16_t* text, uint64_t length) {
  const char16_t* const end = text + length;
  const char16_t* const beyondAscii = std::find_if(text, end, [](char16_t u) { return u >= 128; });
  const char16_t probe = beyondAscii != end ? *beyondAscii : *text;
  for (const CharsetCodePage& row : CharsetCodePageTable) {
    if (row.forText == 1 && MayCarry(probe, row.codePage) && Carries(text, length, row.codePage)) {
      return row.codePage;
    }
  }
  return kNoCodePage;
}

}  // namespace

int32_t RoundTripsInCodePage(const char16_t* text, uint64_t length, uint32_t codePage,
                             char16_t* wideScratch, char* byteScratch, uint64_t byteScratchSize) {
  if (text == nullptr || length == 0 || byteScratchSize == 0) return 0;
  const std::u16string_view source(text, length);
  bool usedDefault = false;
  const int32_t bytes = platform::Utf16ToBytes(codePage, source, byteScratch,
                                               ConversionCapacity(byteScratchSize), &usedDefault);
  if (usedDefault || bytes <= 0) return 0;
  const std::string_view carried(byteScratch, static_cast<size_t>(bytes));
  const int32_t units =
      platform::BytesToUtf16(codePage, carried, wideScratch, ConversionCapacity(length));
  if (units <= 0) return 0;
  return std::u16string_view(wideScratch, static_cast<size_t>(units)) == source ? 1 : 0;
}

uint32_t FindCodePageForText(const char16_t* text, uint64_t length) {
  if (text == nullptr || length == 0) return kNoCodePage;
  if (length > INT32_MAX) return kNoCodePage;  // beyond what a conversion takes
  return FirstCarrier(text, length);
}

}  // namespace tarn
