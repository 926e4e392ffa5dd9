// CodePageRows.h - the conversion tables, cut into rows of 256 cells.
//
// A page is up to 512 rows: 256 to decode, by the lead byte (row 0 for single bytes), and 256 to
// encode, by the high byte of the unit. A row is made at its first use and then stays, unchanged,
// to the end of the process; two threads that make the same row at once agree on one of the two.
// So the first word of a double-byte page costs the rows it touches and not the page, and a call
// later on costs table look-ups alone.
#ifndef TARN_PLATFORM_POSIX_CODE_PAGE_ROWS_H
#define TARN_PLATFORM_POSIX_CODE_PAGE_ROWS_H

#include <array>
#include <cstddef>
#include <cstdint>

namespace tarn::platform {

// Cells of a decoding row are units, by the byte or trail byte. Cells of an encoding row are a byte
// or a pair with the lead byte in the high half, by the low byte of the unit. What is not mapped
// holds the default of the page: its default unit, or "?".
struct CodePageRow {
  std::array<uint16_t, 256> cells;
};

constexpr uint8_t HighByte(uint16_t value) { return static_cast<uint8_t>(value >> 8); }
constexpr uint8_t LowByte(uint16_t value) { return static_cast<uint8_t>(value & 0xFF); }

// The page is an index of AllCodePageSpecs. Null when memory or the converter is missing; the next
// call tries again.
const CodePageRow* DecodingRow(size_t page, uint8_t lead) noexcept;
const CodePageRow* EncodingRow(size_t page, uint8_t highByte) noexcept;

}  // namespace tarn::platform

#endif  // TARN_PLATFORM_POSIX_CODE_PAGE_ROWS_H
