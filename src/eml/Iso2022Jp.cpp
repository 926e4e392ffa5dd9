// The text is taken as runs between escapes, and each run by the character set that the escape
// before it chose. Looking for the end of a run reads the run and nothing more, but for a run of
// JIS X 0208 that its line's end cuts: the run after it looks for the same escape once again.
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

// The end of a run and what comes after it.
struct Stop {
  size_t runEnd;
  size_t next;  // after the escape, if the run ends at one
  State state;
};

struct Escape {
  std::string_view text;
  State state;
};

constexpr std::array<Escape, 4> kEscapes = {{{"\x1B(B", State::Ascii},
                                             {"\x1B(J", State::JisRoman},
                                             {"\x1B$@", State::Jis0208},
                                             {"\x1B$B", State::Jis0208}}};

// The end of the run that starts at `start`. Escapes that are not known are text of the run.
Stop FindStop(std::string_view text, size_t start) {
  size_t place = FindByte(text, kEscape, start);
  for (; place != npos; place = FindByte(text, kEscape, place + 1)) {
    for (const Escape& escape : kEscapes) {
      if (!text.substr(place).starts_with(escape.text)) continue;
      return {place, place + escape.text.size(), escape.state};
    }
  }
  return {text.size(), text.size(), State::Ascii};
}

constexpr bool IsSingle(unsigned char byte) {
  return byte < 0x20 || byte > 0x80 || (byte >= 0x29 && byte <= 0x2F) ||
         (byte >= 0x75 && byte <= 0x7E);
}

// The character of a pair. 0x80 passes for a first byte, but no row belongs to it.
char16_t LookUp(unsigned char first, unsigned char second) {
  if (second <= 0x20 || first == 0x80) return kReplacement;
  const Jis0208Row& row = Jis0208Rows[first <= 0x28 ? first - 0x21 : first - 0x27];
  const unsigned cell = second - 0x21U;
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

Status AppendUtf8(TrackedBuffer<char>& output, std::u16string_view units) {
  constexpr uint64_t kBytesPerUnit = 4;
  const uint64_t room = kBytesPerUnit * units.size();
  if (output.reserve(output.length() + room) == nullptr) return output.lastError();
  const platform::EncodedBytes written = platform::Utf16ToBytes(
      platform::kCodePageUtf8, units, {output.data() + output.length(), room});
  output.setLength(output.length() + written.size);
  return StatusOk;
}

// All characters of the table are single units, so that a run can be converted in pieces.
Status AppendJis0208(TrackedBuffer<char>& output, std::string_view run) {
  std::array<char16_t, 512> units;
  bool complete = true;
  while (complete && !run.empty()) {
    size_t count = 0;
    while (count < units.size() && !run.empty() && (complete = TakeJis0208(run, units[count]))) {
      ++count;
    }
    const Status status = AppendUtf8(output, {units.data(), count});
    if (!status.ok()) return status;
  }
  return StatusOk;
}

// "\" means the yen sign, and becomes the single byte 0xA5: not the two bytes that UTF-8 has
// for it, on purpose.
Status AppendJisRomanRun(TrackedBuffer<char>& output, std::string_view run) {
  constexpr char kYen = '\xA5';
  const uint64_t start = output.length();
  if (const Status status = AppendJisRoman(output, run); !status.ok()) return status;
  std::replace(output.data() + start, output.data() + output.length(), '\\', kYen);
  return StatusOk;
}

Status AppendRun(TrackedBuffer<char>& output, std::string_view run, State state) {
  switch (state) {
    case State::JisRoman:
      return AppendJisRomanRun(output, run);
    case State::Jis0208:
      return AppendJis0208(output, run);
    case State::Ascii:
      break;
  }
  return output.append(run);
}

// Everything from the first escape on.
Status AppendRuns(TrackedBuffer<char>& output, std::string_view text, size_t place) {
  State state = State::Ascii;
  State fallback = State::Ascii;  // what a line's end goes back to from JIS X 0208
  while (place < text.size()) {
    Stop stop = FindStop(text, place);
    if (state == State::Jis0208) {
      const size_t lineEnd = FindLineEnd(text.substr(0, stop.runEnd), place);
      if (lineEnd != stop.runEnd) stop = {lineEnd, lineEnd, fallback};
    } else {
      fallback = state;
    }
    const Status status = AppendRun(output, text.substr(place, stop.runEnd - place), state);
    if (!status.ok()) return status;
    place = stop.next;
    state = stop.state;
  }
  return StatusOk;
}

// Decodes the text, a trailing NUL apart, from `escape`, its first one, on into a block of its own.
Status Decode(SizedBytes& text, size_t escape) {
  const std::string_view source = text.text();
  TrackedBuffer<char> output;
  if (output.reserve(source.size() + 1) == nullptr) return output.lastError();
  Status status = output.append(source.substr(0, escape));
  if (status.ok()) status = AppendRuns(output, source, escape);
  if (status.ok()) status = output.append("", 1);
  if (!status.ok()) return status;

  const uint64_t length = output.length() - 1;
  text.adopt(output.take(), length);
  return StatusOk;
}

}  // namespace

Status ConvertIso2022Jp(SizedBytes& text, uint64_t offset) {
  if (!text.hasBlock()) return StatusNullArgument;
  if (offset >= text.text().size()) return StatusOk;

  CharsetRename rename;
  if (const Status renamed = rename.apply(text, offset, "iso-2022-jp"); !renamed.ok()) {
    return renamed;
  }
  const size_t escape = FindByte(text.text(), kEscape, offset);
  if (escape != npos) {
    const Status decoded = Decode(text, escape);
    if (!decoded.ok()) rename.undo(text);
    return decoded;
  }
  if (rename.found()) {
    // The new name is the shorter one, and so leaves room for the NUL.
    text.truncate(text.text().size());
    text.data()[text.length()] = '\0';
  }
  return StatusOk;
}

Status AppendJisRoman(TrackedBuffer<char>& output, std::string_view text) {
  constexpr std::string_view kOverline = "\xE2\x80\xBE";
  uint64_t added = text.size();
  for (const char c : text) added += c == '~' ? kOverline.size() - 1 : 0;
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
