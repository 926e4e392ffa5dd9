// Text.h - text between the filter, the command line and the terminal.
//
// Names and values in mail are written by whoever sent it. What goes to a terminal is escaped, so
// that it can neither move the cursor nor pretend to be something else.
#ifndef TARN_CONSOLE_TEXT_H
#define TARN_CONSOLE_TEXT_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tarn::host {

// Always valid UTF-8: a lone surrogate becomes U+FFFD.
std::string Utf8FromWide(std::u16string_view text);

// Nothing when the text is not UTF-8 or holds a NUL, which no path can.
std::optional<std::u16string> WideFromUtf8(std::string_view text);

// The text in one line that a terminal shows as it is. C0 controls and DEL become "\n", "\t" or
// "\x1b"; C1 controls, line and paragraph separators and the marks that turn the direction of
// writing become "\u202e"; a byte that is not part of valid UTF-8 becomes "\xff".
std::string Printable(std::string_view text);

// JSON that a terminal shows as it is: within its strings, characters that are more than text are
// escapes. What it says is the same. `json` is valid UTF-8.
std::string ShowableJson(std::string_view json);

// Whether a terminal can show the text as it is: valid UTF-8 without other control characters than
// tabs, line ends and form feeds, and without marks that change the direction of writing.
bool IsPlainText(std::string_view text);

// Columns that a terminal takes for the text; a byte that is not part of valid UTF-8 takes one.
size_t DisplayWidth(std::string_view text);

// "2026-11-21T10:00:00", by the clock of the machine's time zone and without naming it; nothing
// outside the years 1 to 9999. The filter reads a date in a mail as local time, whatever zone it
// names, so that this gives back the fields as they are in the mail.
std::optional<std::string> LocalTimeText(int64_t secondsSince1970);

// Whether the text is a number in decimal digits, with "-" before them if it is negative, of any
// size.
bool IsNumber(std::string_view text);

// The value of such a number; nothing for any other text and for numbers beyond 32 bits.
std::optional<int32_t> ParseNumber(std::string_view text);

// A Windows LANGID, decimal ("1031") or hexadecimal after "0x"; nothing for any other text and
// for numbers above 0xFFFF.
std::optional<uint32_t> ParseLangId(std::string_view text);

}  // namespace tarn::host

#endif
