#!/usr/bin/env python3
"""Writes src/eml/Jis0208Rows.cpp: the rows of JIS X 0208 as the ISO-2022-JP decoder has them.

Usage: tools/make_jis0208_rows.py > src/eml/Jis0208Rows.cpp

A cell holds what the Shift JIS pair of the same cell gives in code page 932 (Python's codec cp932).
Rows end after their last character, but for those that JIS X 0208 calls full or nearly so: they
have all 94 cells. One row differs from the code page; see rotated().
"""

import sys

CELLS = 94
UNKNOWN = 0xFFFD
FIRST_CELL = 0x21

# Rows by their number in the table: the first byte they are made from.
FIRST_BYTES = list(range(0x21, 0x29)) + [0x2D] + list(range(0x30, 0x75))

# Rows that end early, by their number in the table.
SHORT_ROWS = {5: 56, 6: 81, 7: 32, 40: 51, 77: 6}

# In this row three characters are at the end, and those between are moved up to make room.
ROTATED_ROW = 0x5E
ROTATED_FROM = 0x3B
ROTATED_LAST = [0x6DF9, 0x6E15, 0x6E0A]

HEAD = """\
// Made by tools/make_jis0208_rows.py; not edited by hand.
#include "eml/Jis0208Rows.h"

namespace tarn {
namespace {

// clang-format off
"""


def shift_jis(first, second):
    """The Shift JIS pair of a cell (JIS X 0208, appendix 1)."""
    row = first - 0x21
    lead = row // 2 + (0x81 if row < 62 else 0xC1)
    if row % 2 == 0:
        trail = second - 0x21 + 0x40
        trail += trail >= 0x7F
    else:
        trail = second - 0x21 + 0x9F
    return bytes([lead, trail])


def cell(first, second):
    try:
        text = shift_jis(first, second).decode("cp932")
    except UnicodeDecodeError:
        return UNKNOWN
    assert len(text) == 1 and ord(text) < 0x10000
    return ord(text)


def rotated(cells):
    """The row of ROTATED_ROW: its three characters are in the code page at ROTATED_FROM."""
    start = ROTATED_FROM - FIRST_CELL
    moved = cells[start : start + 3]
    assert sorted(moved) == sorted(ROTATED_LAST), [hex(point) for point in moved]
    return cells[:start] + cells[start + 3 :] + ROTATED_LAST


def rows():
    for number, first in enumerate(FIRST_BYTES):
        cells = [cell(first, second) for second in range(FIRST_CELL, FIRST_CELL + CELLS)]
        if first == ROTATED_ROW:
            cells = rotated(cells)
        length = SHORT_ROWS.get(number, CELLS)
        assert all(point == UNKNOWN for point in cells[length:]), hex(first)
        assert number not in SHORT_ROWS or cells[length - 1] != UNKNOWN, hex(first)
        yield first, cells[:length]


def main():
    out = sys.stdout
    out.write(HEAD)
    table = list(rows())
    assert len(table) == 78 and table[0][1][0x41 - 0x21] == 0xFF5E and table[0][1][0x1F] == 0xFF3C
    for first, cells in table:
        out.write(f"constexpr char16_t kRow{first:02X}[] = {{\n")
        for start in range(0, len(cells), 12):
            line = ", ".join(f"0x{point:04X}" for point in cells[start : start + 12])
            out.write(f"    {line},\n")
        out.write("};\n")
    out.write("// clang-format on\n\n")
    out.write("template <uint32_t N>\n")
    out.write("consteval Jis0208Row Row(const char16_t (&cells)[N]) {\n  return {cells, N};\n}\n\n")
    out.write("}  // namespace\n\n// clang-format off\n")
    out.write("const Jis0208Row Jis0208Rows[kJis0208RowCount] = {\n")
    names = [f"Row(kRow{first:02X})," for first, _ in table]
    for start in range(0, len(names), 7):
        out.write("    " + " ".join(names[start : start + 7]) + "\n")
    out.write("};\n// clang-format on\n\n}  // namespace tarn\n")


if __name__ == "__main__":
    main()
