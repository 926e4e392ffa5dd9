#include "rtf/RtfTextWriter.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "Common/ApiUtils.h"
#include "Platform/CodePages.h"
#include "rtf/CodePageForText.h"

namespace tarn {
namespace {

// Bytes that RTF does not take as themselves: controls and its own signs.
constexpr bool IsSpecial(uint32_t unit) {
  return unit < 32 || unit == '\\' || unit == '{' || unit == '}';
}

constexpr bool EndsAsciiRun(char16_t unit) { return unit == 0 || unit >= 128; }

// A control word with its number.
class Word {
 public:
  Word(std::string_view name, int32_t number, std::string_view ending) {
    char* at = text_.data() + name.copy(text_.data(), name.size());
    at = std::to_chars(at, text_.data() + text_.size(), number).ptr;
    at += ending.copy(at, ending.size());
    size_ = std::string_view(text_.data(), at).size();
  }

  operator std::string_view() const { return {text_.data(), size_}; }

 private:
  std::array<char, 24> text_;  // a word of two bytes, eleven digits, an ending of two
  size_t size_;
};

Word FontWord(uint32_t number) { return {"\\f", static_cast<int32_t>(number), " "}; }

// The question mark is for readers without Unicode.
Word UnitWord(char16_t unit) { return {"\\u", static_cast<int16_t>(unit), " ?"}; }

// "\'hh" with lower-case digits.
class Escape {
 public:
  explicit Escape(uint32_t byte) : text_{'\\', '\'', kDigits[byte >> 4], kDigits[byte & 15]} {}
  operator std::string_view() const { return {text_.data(), text_.size()}; }

 private:
  static constexpr std::string_view kDigits = "0123456789abcdef";
  std::array<char, 4> text_;
};

// The units beyond ASCII at the front.
std::u16string_view RunBeyondAscii(std::u16string_view text) {
  const auto end = std::find_if(text.begin(), text.end(), [](char16_t u) { return u < 128; });
  return {text.begin(), end};
}

// The user-visible character at the front; one unit at least.
std::u16string_view FirstChar(std::u16string_view text) {
  const char16_t* const from = text.data();
  const char16_t* const after = KernelNextChar(from, static_cast<int64_t>(text.size()));
  return {from, std::clamp(after, from + 1, from + text.size())};
}

// Whether a character may join a piece; those of more than five bytes never do.
bool Carries(uint32_t codePage, std::u16string_view character) {
  std::array<char, 5> bytes;
  std::array<char16_t, 5> wide;
  return character.size() <= wide.size() &&
         RoundTripsInCodePage(character, codePage, wide.data(), bytes);
}

// The piece that begins with the first `size` units: as far as the code page goes.
std::u16string_view Extend(std::u16string_view text, size_t size, uint32_t codePage) {
  while (size < text.size()) {
    if (text[size] < 128) {
      ++size;
      continue;
    }
    const std::u16string_view next = FirstChar(text.substr(size));
    if (!Carries(codePage, next)) break;
    size += next.size();
  }
  return text.substr(0, size);
}

}  // namespace

void RtfTextWriter::check(Status status) {
  if (isOk()) status_ = status;
}

// The font counts as selected even where the output has no room for the word.
void RtfTextWriter::selectFont(uint32_t font) {
  if (inForce_.current == font) return;
  appendOrLeaveOut(FontWord(font));
  inForce_.current = font;
}

void RtfTextWriter::writeUtf8(std::string_view text) {
  size_t collected = 0;  // where the collected bytes begin
  size_t at = 0;
  for (; isOk() && at < text.size(); ++at) {
    const auto byte = static_cast<uint8_t>(text[at]);
    if (byte >= 128) break;
    if (!IsSpecial(byte)) continue;
    append(text.substr(collected, at - collected));
    append(Escape(byte));
    collected = at + 1;
  }
  append(text.substr(collected, at - collected));
  if (isOk() && at < text.size()) writeBeyondAscii(text.substr(at));
}

void RtfTextWriter::writeBeyondAscii(std::string_view text) {
  if (text.size() > INT32_MAX) return check(StatusBadArgument);  // beyond what a conversion takes
  TrackedBuffer<char16_t> wide;
  if (wide.reserve(text.size()) == nullptr) return check(wide.lastError());
  const size_t units =
      platform::BytesToUtf16(platform::kCodePageUtf8, text, {wide.data(), text.size()});
  if (units == 0) return check(StatusBadArgument);
  writeWide({wide.data(), units});
}

void RtfTextWriter::writeWide(std::u16string_view text) {
  if (!isOk()) return;
  const uint32_t codePage = FindCodePageForText(text);
  check(fonts_.defaultFont(inForce_.ascii));
  inForce_.current = inForce_.ascii;
  if (codePage != kNoCodePage) {
    writeInCodePage(codePage, text);
  } else {
    writePieces(text);
  }
  // What comes after the text is in the document's own font again.
  if (isOk()) selectFont(inForce_.ascii);
}

// ASCII runs, and between them pieces that begin with a character beyond ASCII and reach as far as
// the code page of that character does, or single characters that no code page carries.
void RtfTextWriter::writePieces(std::u16string_view text) {
  while (true) {
    text.remove_prefix(writeAsciiRun(text));
    if (!isOk() || text.empty()) return;
    text.remove_prefix(writePiece(text));
  }
}

// Writes the piece at the front, and returns its size.
size_t RtfTextWriter::writePiece(std::u16string_view text) {
  const std::u16string_view first = FirstChar(text);
  const uint32_t codePage = FindCodePageForText(first);
  if (codePage == kNoCodePage) {
    writeUncarried(first);
    return first.size();
  }
  const std::u16string_view piece = Extend(text, first.size(), codePage);
  writeInCodePage(codePage, piece);
  return piece.size();
}

// Without a font that has the character, it is written in the current one.
void RtfTextWriter::writeUncarried(std::u16string_view character) {
  uint32_t font = kNoRtfFont;
  const Status found = fonts_.forGlyphs(character, font);
  if (found == StatusOutOfMemory) return check(found);
  if (found.ok()) selectFont(font);
  for (const char16_t unit : character) appendOrLeaveOut(UnitWord(unit));
}

void RtfTextWriter::writeInCodePage(uint32_t codePage, std::u16string_view text) {
  if (!isOk()) return;
  uint32_t font = kNoRtfFont;
  check(fonts_.forCodePage(codePage, font));
  while (isOk() && !text.empty()) {
    const std::u16string_view run = RunBeyondAscii(text);
    if (!run.empty()) {
      selectFont(font);
      writeRun(codePage, run);
      text.remove_prefix(run.size());
    }
    const size_t taken = writeAsciiRun(text);
    if (run.empty() && taken == 0) check(StatusBadArgument);  // a NUL belongs to neither run
    text.remove_prefix(taken);
  }
}

// Writes a run in the current font. Trail bytes of pairs that are ASCII are written as they are,
// even where RTF reads more into them; documents made so far look that way, and comparisons rely on
// it.
void RtfTextWriter::writeRun(uint32_t codePage, std::u16string_view text) {
  const size_t room = 2 * text.size();
  const auto scratch = AllocateBlock<char>(room, TARN_HERE);
  if (!scratch) return check(StatusOutOfMemory);
  const size_t size = platform::Utf16ToBytes(codePage, text, {scratch.get(), room}).size;
  if (size == 0) return check(StatusBadArgument);
  for (const char& byte : std::string_view(scratch.get(), size)) {
    const auto value = static_cast<uint8_t>(byte);
    if (value >= 128) {
      appendOrLeaveOut(Escape(value));
    } else {
      appendOrLeaveOut({&byte, 1});
    }
  }
}

size_t RtfTextWriter::writeAsciiRun(std::u16string_view text) {
  if (text.empty()) return 0;
  size_t collected = 0;  // where the collected units begin
  size_t at = 0;
  for (; isOk() && at < text.size() && !EndsAsciiRun(text[at]); ++at) {
    if (!IsSpecial(text[at])) continue;
    flush(text.substr(collected, at - collected));
    append(Escape(text[at]));
    collected = at + 1;
  }
  // Before a unit that ends the run early, the collected units are taken all the same.
  if (at == text.size()) flush(text.substr(collected));
  return isOk() ? at : 0;
}

// Sees that the ASCII font is the current one, and writes what was collected for it.
void RtfTextWriter::flush(std::u16string_view text) {
  if (inForce_.current != inForce_.ascii) {
    append(FontWord(inForce_.ascii));
    if (!isOk()) return;
    inForce_.current = inForce_.ascii;
  }
  if (isOk() && !text.empty()) writeCollected(text);
}

void RtfTextWriter::writeCollected(std::u16string_view text) {
  if (text.size() > (UINT32_MAX - 1) / 3) return check(StatusPathTooLong);
  const size_t room = text.size() * 3 + 1;
  const auto scratch = AllocateBlock<char>(room, TARN_HERE);
  if (!scratch) return check(StatusOutOfMemory);
  const uint64_t size = ConvertToUtf8(text, {scratch.get(), room});
  if (size == 0) return check(StatusPathToUtf8Failed);
  append({scratch.get(), size});
}

Status WriteRtfUtf8Text(RtfRender& render, const char* text, uint64_t length) {
  if (text == nullptr) return StatusNullArgument;
  RtfTextWriter writer(render);
  writer.writeUtf8({text, length});
  return writer.status();
}

Status WriteRtfWideText(TrackedBuffer<char>& output, RtfFonts& fonts, const char16_t* text,
                        uint64_t length) {
  if (text == nullptr) return StatusNullArgument;
  RtfTextWriter writer(output, fonts);
  writer.writeWide({text, length});
  return writer.status();
}

Status WriteRtfCodePageText(TrackedBuffer<char>& output, RtfFonts& fonts, RtfFontsInForce& inForce,
                            uint32_t codePage, std::u16string_view text) {
  if (text.data() == nullptr) return StatusNullArgument;
  RtfTextWriter writer(output, fonts, inForce);
  writer.writeInCodePage(codePage, text);
  inForce = writer.inForce();
  return writer.status();
}

Status WriteRtfAsciiRun(TrackedBuffer<char>& output, RtfFontsInForce& inForce,
                        std::u16string_view text, uint64_t* taken) {
  if (taken != nullptr) *taken = 0;
  if (text.empty()) return StatusOk;
  if (taken == nullptr || text.data() == nullptr) return StatusNullArgument;
  RtfFonts noneAsked;
  RtfTextWriter writer(output, noneAsked, inForce);
  *taken = writer.writeAsciiRun(text);
  inForce = writer.inForce();
  return writer.status();
}

}  // namespace tarn
