// The text is taken as runs between escapes, and each run by the character set that the escape in
// front of it chose. Looking for the end of a run reads the run and nothing more, but for a run of
// JIS X 0208 that its line's end cuts: the run behind it looks for the same escape once again.
#include "eml/Iso2022Jp.h"

#include <algorithm>
#include <array>

#include "Common/ByteSearch.h"
#include "Platform/CodePages.h"
#include "eml/CharsetRename.h"
#include "eml/HeaderSearch.h"
#include "eml/Jis0208Rows.h"

namespace tarn {
namespace {

constexpr char kEscape = 0x1B;
constexpr char16_t kReplacement = 0xFFFD;

enum class State { Ascii, JisRoman, Jis0208 };

// The end of a run and what comes behind it.
struct Stop {
  const char* runEnd;
  const char* next;  // behind the escape, if the run ends at one
  State state;
};

// The set that the escape at p chooses; false if it is none of the four that are known.
bool RecogniseEscape(const char* p, const char* end, State& state) {
  struct Escape {
    std::string_view text;
    State state;
  };
  static constexpr Escape kEscapes[] = {{"\x1B(B", State::Ascii},
                                        {"\x1B(J", State::JisRoman},
                                        {"\x1B$@", State::Jis0208},
                                        {"\x1B$B", State::Jis0208}};
  for (const Escape& escape : kEscapes) {
    if (!StartsWith(p, end, escape.text)) continue;
    state = escape.state;
    return true;
  }
  return false;
}

// Escapes that are not known are text of the run.
Stop FindStop(const char* start, const char* end) {
  constexpr int kEscapeLength = 3;
  State state = State::Ascii;
  const char* escape = FindByte(start, end, kEscape);
  while (escape != nullptr && !RecogniseEscape(escape, end, state)) {
    escape = FindByte(escape + 1, end, kEscape);
  }
  if (escape == nullptr) return {end, end, State::Ascii};
  return {escape, escape + kEscapeLength, state};
}

constexpr bool IsSingle(unsigned char byte) {
  return byte < 0x20 || byte > 0x80 || (byte >= 0x29 && byte <= 0x2F) ||
         (byte >= 0x75 && byte <= 0x7E);
}

// The character of a pair. 0x80 passes for a first byte, but no row belongs to it.
char16_t LookUp(unsigned char first, unsigned char second) {
  if (second <= 0x20 || first == 0x80) return kReplacement;
  const Jis0208Row& row = Jis0208Rows[first <= 0x28 ? first - 0x21 : first - 0x27];
  const auto cell = static_cast<uint32_t>(second - 0x21);
  return cell < row.length ? row.cells[cell] : kReplacement;
}

// Takes the next character of a run. False, and nothing taken, when its second byte is missing.
bool TakeJis0208(std::string_view& run, char16_t& unit) {
  const auto first = static_cast<unsigned char>(run[0]);
  const bool isItself = first == 0x20 || first == 0x7F;
  if (isItself || IsSingle(first)) {
    unit = isItself ? first : kReplacement;
    run.remove_prefix(1);
    return true;
  }
  if (run.size() < 2) return false;
  unit = LookUp(first, static_cast<unsigned char>(run[1]));
  run.remove_prefix(2);
  return true;
}

int32_t AppendUtf8(TrackedBuffer<char>& output, std::u16string_view units) {
  constexpr uint64_t kBytesPerUnit = 4;
  const uint64_t room = kBytesPerUnit * units.size();
  if (output.reserve(output.length() + room) == nullptr) return output.lastError();
  const int32_t written =
      platform::Utf16ToBytes(platform::kCodePageUtf8, units, output.data() + output.length(),
                             static_cast<int32_t>(room), nullptr);
  output.setLength(output.length() + static_cast<uint64_t>(std::max(written, 0)));
  return StatusOk;
}

// All characters of the table are single units, so that a run can be converted in pieces.
int32_t AppendJis0208(TrackedBuffer<char>& output, std::string_view run) {
  std::array<char16_t, 512> units;
  bool complete = true;
  while (complete && !run.empty()) {
    size_t count = 0;
    while (count < units.size() && !run.empty() && (complete = TakeJis0208(run, units[count]))) {
      ++count;
    }
    const int32_t status = AppendUtf8(output, {units.data(), count});
    if (status != StatusOk) return status;
  }
  return StatusOk;
}

// "\" stands for the yen sign, and becomes the single byte 0xA5: not the two bytes that UTF-8 has
// for it, on purpose.
int32_t AppendJisRomanRun(TrackedBuffer<char>& output, std::string_view run) {
  constexpr char kYen = '\xA5';
  const uint64_t start = output.length();
  const int32_t status = AppendJisRoman(output, run);
  if (status != StatusOk) return status;
  std::replace(output.data() + start, output.data() + output.length(), '\\', kYen);
  return StatusOk;
}

int32_t AppendRun(TrackedBuffer<char>& output, std::string_view run, State state) {
  switch (state) {
    case State::JisRoman:
      return AppendJisRomanRun(output, run);
    case State::Jis0208:
      return AppendJis0208(output, run);
    case State::Ascii:
      break;
  }
  return output.append(run.data(), run.size());
}

// Everything from the first escape on.
int32_t AppendRuns(TrackedBuffer<char>& output, const char* p, const char* end) {
  State state = State::Ascii;
  State fallback = State::Ascii;  // what a line's end goes back to from JIS X 0208
  while (p < end) {
    Stop stop = FindStop(p, end);
    if (state == State::Jis0208) {
      const char* const lineEnd = FindLineEnd(p, stop.runEnd);
      if (lineEnd != stop.runEnd) stop = {lineEnd, lineEnd, fallback};
    } else {
      fallback = state;
    }
    const int32_t status = AppendRun(output, {p, static_cast<size_t>(stop.runEnd - p)}, state);
    if (status != StatusOk) return status;
    p = stop.next;
    state = stop.state;
  }
  return StatusOk;
}

// Decodes the text from `escape`, its first one, on into a block of its own.
int32_t Decode(SizedBytes& text, const char* escape) {
  const char* const end = text.data() + text.length();
  TrackedBuffer<char> output;
  if (output.reserve(text.length() + 1) == nullptr) return output.lastError();
  int32_t status = output.append(text.data(), static_cast<uint64_t>(escape - text.data()));
  if (status == StatusOk) status = AppendRuns(output, escape, end);
  if (status == StatusOk) status = output.append("", 1);
  if (status != StatusOk) return status;

  const uint64_t length = output.length() - 1;
  text.adopt(output.take(), length);
  return StatusOk;
}

}  // namespace

int32_t ConvertIso2022Jp(SizedBytes& text, uint64_t offset) {
  if (text.data() == nullptr) return StatusNullArgument;
  if (offset >= text.text().size()) return StatusOk;
  const uint64_t oldLength = text.length();
  text.truncate(text.text().size());

  CharsetRename rename;
  int32_t status = rename.apply(text, offset, "iso-2022-jp");
  if (status != StatusOk) return status;
  if (rename.found()) text.data()[text.length()] = '\0';

  const char* const escape = FindByte(text.data() + offset, text.data() + text.length(), kEscape);
  if (escape != nullptr) status = Decode(text, escape);
  if (status != StatusOk) rename.undo(text);
  const bool unchanged = status != StatusOk || (escape == nullptr && !rename.found());
  if (unchanged) text.setLength(oldLength);
  return status;
}

int32_t AppendJisRoman(TrackedBuffer<char>& output, std::string_view text) {
  constexpr std::string_view kOverline = "\xE2\x80\xBE";
  const auto overlines = static_cast<uint64_t>(std::count(text.begin(), text.end(), '~'));
  const uint64_t added = text.size() + overlines * (kOverline.size() - 1);
  if (output.reserve(output.length() + added) == nullptr) return output.lastError();
  char* out = output.data() + output.length();
  for (const char c : text) {
    if (c == '~') {
      out = std::copy(kOverline.begin(), kOverline.end(), out);
    } else {
      *out++ = c;
    }
  }
  output.setLength(output.length() + added);
  return StatusOk;
}

}  // namespace tarn
