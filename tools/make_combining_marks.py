#!/usr/bin/env python3
"""Writes plain/kernel/CombiningMarks.h: the code points of general category Mn, Mc or Me.

Usage: tools/make_combining_marks.py > plain/kernel/CombiningMarks.h

The data is that of Python's unicodedata module; its Unicode version goes into the header.
"""

import sys
import unicodedata

HEAD = """\
// CombiningMarks.h - the code points of the general categories Mn, Mc and Me of Unicode {version}.
// Made by tools/make_combining_marks.py; not edited by hand.
//
// Ranges, both ends included, in rising order.
#ifndef TARN_KERNEL_COMBININGMARKS_H
#define TARN_KERNEL_COMBININGMARKS_H

namespace tarn::kernel {{

struct CodePointRange {{
  char32_t first;
  char32_t last;
}};

// clang-format off
inline constexpr CodePointRange kCombiningMarks[] = {{
"""

TAIL = """\
};
// clang-format on

}  // namespace tarn::kernel

#endif
"""

RANGES_A_LINE = 4


def ranges():
    first = None
    for point in range(sys.maxunicode + 2):
        mark = point <= sys.maxunicode and unicodedata.category(chr(point)) in ("Mn", "Mc", "Me")
        if mark and first is None:
            first = point
        elif not mark and first is not None:
            yield first, point - 1
            first = None


def main():
    out = sys.stdout
    out.write(HEAD.format(version=unicodedata.unidata_version))
    rows = [f"{{0x{first:04X}, 0x{last:04X}}}," for first, last in ranges()]
    for start in range(0, len(rows), RANGES_A_LINE):
        out.write("    " + " ".join(rows[start : start + RANGES_A_LINE]) + "\n")
    out.write(TAIL)


if __name__ == "__main__":
    main()
