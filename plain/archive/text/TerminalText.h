// TerminalText.h - text of mails on a terminal: nothing in it can move the cursor, change colours,
// or turn the direction in which the rest of the screen is written.
#ifndef TARN_ARCHIVE_TERMINALTEXT_H
#define TARN_ARCHIVE_TERMINALTEXT_H

#include <cstddef>
#include <string>
#include <string_view>

namespace tarn::archive {

// Text of several lines. CRLF, CR, form feeds, vertical tabs and the separators U+0085, U+2028 and
// U+2029 become LF; LF and tabs stay. Other control characters (C0, DEL, C1) become U+FFFD, as does
// what is no UTF-8. Marks that turn the direction of writing (U+202A to U+202E, U+2066 to U+2069),
// and byte order marks, are left out.
std::string HarmlessText(std::string_view text);

// The same for one line: what would be an LF, and a tab, is a space there.
std::string HarmlessLine(std::string_view text);

// The columns that a terminal takes for a harmless line: 2 for East Asian wide characters, 0 for
// marks without room of their own. What is no UTF-8 counts as the U+FFFD that it is shown as.
size_t Columns(std::string_view text);

// The text when it fits, else as many whole characters as fit before an ellipsis (U+2026). A base
// keeps its marks. Of 0 columns nothing is left.
std::string CutToColumns(std::string_view text, size_t columns);

}  // namespace tarn::archive

#endif
