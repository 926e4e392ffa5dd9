#!/usr/bin/env python3
"""Writes src/Platform/CharacterRanges.h: combining marks, and the columns that terminals give.

Usage: tools/make_character_ranges.py > src/Platform/CharacterRanges.h

The data is that of Python's unicodedata module; its Unicode version goes into the header. Another
version means other combining marks, and so other answers of KernelNextChar.
"""

import sys
import unicodedata

HEAD = """\
// CharacterRanges.h - what Characters.h tells, from the data of Unicode {version}.
// Made by tools/make_character_ranges.py; not edited by hand.
//
// Ranges, both ends included, in rising order.
#ifndef TARN_PLATFORM_CHARACTER_RANGES_H
#define TARN_PLATFORM_CHARACTER_RANGES_H

namespace tarn::platform {{

struct CodePointRange {{
  char32_t first;
  char32_t last;
}};

// clang-format off
"""

TAIL = """\
// clang-format on

}  // namespace tarn::platform

#endif  // TARN_PLATFORM_CHARACTER_RANGES_H
"""

RANGES_A_LINE = 4


def is_mark(point):
    return unicodedata.category(chr(point)) in ("Mn", "Mc", "Me")


def has_no_width(point):
    # Marks that take no room of their own; zero width space, non-joiner and joiner.
    return unicodedata.category(chr(point)) in ("Mn", "Me") or 0x200B <= point <= 0x200D


def is_wide(point):
    character = chr(point)
    if unicodedata.category(character) == "Cn":  # the module knows no widths of these
        return 0x20000 <= point <= 0x2FFFD or 0x30000 <= point <= 0x3FFFD
    return unicodedata.east_asian_width(character) in ("W", "F")


TABLES = (
    ("General categories Mn, Mc and Me.", "kCombiningMarks", is_mark),
    ("No column of a terminal.", "kZeroWidth", has_no_width),
    (
        "Two columns.",
        "kDoubleWidth",
        lambda point: is_wide(point) and not has_no_width(point),
    ),
)


def ranges(belongs):
    first = None
    for point in range(sys.maxunicode + 2):
        found = point <= sys.maxunicode and belongs(point)
        if found and first is None:
            first = point
        elif not found and first is not None:
            yield first, point - 1
            first = None


def main():
    out = sys.stdout
    out.write(HEAD.format(version=unicodedata.unidata_version))
    for comment, name, belongs in TABLES:
        out.write(f"// {comment}\ninline constexpr CodePointRange {name}[] = {{\n")
        rows = [f"{{0x{first:04X}, 0x{last:04X}}}," for first, last in ranges(belongs)]
        for start in range(0, len(rows), RANGES_A_LINE):
            out.write("    " + " ".join(rows[start : start + RANGES_A_LINE]) + "\n")
        out.write("};\n\n" if name != TABLES[-1][1] else "};\n")
    out.write(TAIL)


if __name__ == "__main__":
    main()
