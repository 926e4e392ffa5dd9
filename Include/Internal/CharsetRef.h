// CharsetRef.h - a charset as the filter tells them apart: a kind and, for CharsetWindows, the
// number of a code page.
#ifndef TARN_INTERNAL_CHARSETREF_H
#define TARN_INTERNAL_CHARSETREF_H

#include <cstdint>

namespace tarn {

enum CharsetKind : uint32_t {
  CharsetNone = 0,
  CharsetIso2022Jp = 1,
  CharsetLatin1 = 2,
  CharsetUtf8 = 3,
  CharsetAscii = 4,
  CharsetWindows = 5,
  CharsetGb2312 = 6,
  CharsetBig5 = 7,
  CharsetOther = 8
};

struct CharsetRef {
  CharsetKind kind = CharsetNone;
  uint32_t codePage = 0;  // used by CharsetWindows alone
};

}  // namespace tarn

#endif
