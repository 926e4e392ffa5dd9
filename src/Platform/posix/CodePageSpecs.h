// CodePageSpecs.h - which code pages exist here, and where ICU's tables differ from Windows'.
//
// Constant data and the look-ups in it. Each page is an ICU converter (by the exact name of its
// table: the short aliases open others) and the byte ranges that Windows decodes differently, its
// overlays.
#ifndef TARN_PLATFORM_POSIX_CODE_PAGE_SPECS_H
#define TARN_PLATFORM_POSIX_CODE_PAGE_SPECS_H

#include <cstddef>
#include <cstdint>
#include <span>

namespace tarn::platform {

// `count` bytes from firstByte on decode to the units from firstUnit on, whatever the converter
// says.
struct Overlay {
  uint8_t firstByte;
  uint8_t count;
  char16_t firstUnit;
  // The converter's own unit for the byte still encodes to it, as an approximation.
  bool formerUnitStillFits = false;

  constexpr bool holdsByte(uint8_t byte) const {
    return byte >= firstByte && byte - firstByte < count;
  }
  constexpr bool holdsUnit(char16_t unit) const {
    return unit >= firstUnit && unit - firstUnit < count;
  }
  // Of a byte, and of a unit, that it holds.
  constexpr char16_t unitOf(uint8_t byte) const {
    return static_cast<char16_t>(firstUnit + (byte - firstByte));
  }
  constexpr uint8_t byteOf(char16_t unit) const {
    return static_cast<uint8_t>(firstByte + (unit - firstUnit));
  }
};

// Lead bytes of a double-byte page, both ends included.
struct LeadRange {
  uint8_t first;
  uint8_t last;
};

struct CodePageSpec {
  uint32_t number;
  const char* converter;  // the ICU table; for Johab that of page 949, which it is computed from
  bool bestFit;           // encode by the converter's one-way mappings, too
  std::span<const Overlay> overlays = {};
  std::span<const LeadRange> leads = {};  // none: a single-byte page
  char16_t defaultUnit = u'?';
};

inline constexpr uint32_t kCodePageJohab = 1361;
inline constexpr size_t kCodePageCount = 47;

// All table pages, by rising number.
std::span<const CodePageSpec, kCodePageCount> AllCodePageSpecs() noexcept;

// The index of the page with that number in AllCodePageSpecs(); kCodePageCount when it is not
// there, as for 42 (symbol) and 65001 (UTF-8), which need no table.
size_t FindCodePageSpec(uint32_t number) noexcept;

constexpr bool IsLeadByte(const CodePageSpec& spec, uint8_t byte) noexcept {
  for (const LeadRange& range : spec.leads) {
    if (byte >= range.first && byte <= range.last) return true;
  }
  return false;
}

// The overlay that rules the byte, or null.
constexpr const Overlay* FindOverlay(const CodePageSpec& spec, uint8_t byte) noexcept {
  for (const Overlay& overlay : spec.overlays) {
    if (overlay.holdsByte(byte)) return &overlay;
  }
  return nullptr;
}

}  // namespace tarn::platform

#endif  // TARN_PLATFORM_POSIX_CODE_PAGE_SPECS_H
