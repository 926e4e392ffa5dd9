// Jis0208Rows.h - the characters of JIS X 0208 in UTF-16, as code page 932 maps them.
//
// A row belongs to a first byte of a pair, a cell of it to a second byte, from 0x21 on:
//
//   first byte     row
//   0x21 to 0x28   0 to 7
//   0x2C           8: the characters that the code page has at 0x2D. No text reaches it, since the
//                  decoder refuses 0x29 to 0x2F
//   0x30 to 0x74   9 to 77
//
// A row has 94 cells or ends after its last character; cells without a character hold U+FFFD. In
// the row of 0x5E the characters from cell 0x3E on are three cells earlier than in the code page,
// and the three of 0x3B to 0x3D after them: mails are read by this table, and it stays as it is.
#ifndef TARN_EML_JIS0208ROWS_H
#define TARN_EML_JIS0208ROWS_H

#include <cstdint>

namespace tarn {

struct Jis0208Row {
  const char16_t* cells;
  uint32_t length;
};

inline constexpr uint32_t kJis0208RowCount = 78;
extern const Jis0208Row Jis0208Rows[kJis0208RowCount];

}  // namespace tarn

#endif
