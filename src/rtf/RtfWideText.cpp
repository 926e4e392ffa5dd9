// A text that one code page carries is one call. Any other is worked through once: ASCII runs, then
// pieces that begin with a character beyond ASCII and reach as far as the code page of that
// character does, or single characters that no code page carries.
#include <algorithm>
#include <array>

#include "rtf/CodePageForText.h"
#include "rtf/FontCoverage.h"
#include "rtf/RtfTextWriter.h"
#include "rtf/RtfWords.h"

namespace tarn {
namespace {

// Behind the user-visible character at `from`; at least one unit on.
const char16_t* NextChar(const char16_t* from, const char16_t* end) {
  return std::clamp(KernelNextChar(from, end - from), from + 1, end);
}

class PieceWriter {
 public:
  PieceWriter(TrackedBuffer<char>& output, RtfFontTable& table)
      : output_(output),
        table_(table),
        asciiFont_(table.defaultFont),
        currentFont_(table.defaultFont) {}

  int32_t writeInCodePage(uint32_t codePage, const char16_t* text, uint64_t length) {
    return WriteRtfCodePageText(output_, table_, asciiFont_, currentFont_, codePage, text, length);
  }

  int32_t writePieces(const char16_t* text, uint64_t length) {
    const char16_t* const end = text + length;
    for (const char16_t* at = text; at < end;) {
      uint64_t taken = 0;
      int32_t status = WriteRtfAsciiRun(output_, currentFont_, asciiFont_, at,
                                        static_cast<uint64_t>(end - at), &taken);
      if (status != StatusOk) return status;
      at += taken;
      if (at == end) break;
      status = writePiece(at, end);
      if (status != StatusOk) return status;
    }
    return StatusOk;
  }

  // What comes behind the text is in the document's own font again.
  void restoreFont() { selectFont(asciiFont_); }

 private:
  void selectFont(uint32_t font) {
    if (currentFont_ == font) return;
    AppendRtfFont(output_, font);
    currentFont_ = font;
  }

  // Writes the character at the cursor, with what goes in the same code page; the cursor comes to
  // stand behind that.
  int32_t writePiece(const char16_t*& at, const char16_t* end) {
    const char16_t* const start = at;
    at = NextChar(start, end);
    const uint32_t codePage = FindCodePageForText(start, static_cast<uint64_t>(at - start));
    if (codePage == kNoCodePage) return writeUncarried(start, at);
    at = extend(at, end, codePage);
    return writeInCodePage(codePage, start, static_cast<uint64_t>(at - start));
  }

  // Without a font that has the character, it stands in the current one.
  int32_t writeUncarried(const char16_t* from, const char16_t* to) {
    uint32_t font = kNoRtfFont;
    const int32_t found = FindFontForText(table_, from, static_cast<uint64_t>(to - from), font);
    if (found < StatusFailed) return found;
    if (found == StatusOk) selectFont(font);
    for (; from < to; ++from) AppendRtfUnit(output_, *from);
    return StatusOk;
  }

  static const char16_t* extend(const char16_t* at, const char16_t* end, uint32_t codePage) {
    while (at < end) {
      const char16_t* next = at + 1;
      if (*at >= 128) {
        next = NextChar(at, end);
        if (!carries(codePage, at, static_cast<uint64_t>(next - at))) break;
      }
      at = next;
    }
    return at;
  }

  // Characters of more than five bytes never join a piece.
  static bool carries(uint32_t codePage, const char16_t* text, uint64_t length) {
    std::array<char, 5> bytes;
    std::array<char16_t, 5> wide;
    return length <= wide.size() && RoundTripsInCodePage(text, length, codePage, wide.data(),
                                                         bytes.data(), bytes.size()) == 1;
  }

  TrackedBuffer<char>& output_;
  RtfFontTable& table_;
  const uint32_t asciiFont_;
  uint32_t currentFont_;
};

}  // namespace

int32_t WriteRtfWideText(TrackedBuffer<char>& output, RtfFontTable& table, const char16_t* text,
                         uint64_t length) {
  if (text == nullptr) return StatusNullArgument;
  const uint32_t codePage = FindCodePageForText(text, length);
  if (table.defaultFont == kNoRtfFont) {
    const int32_t status = FontForCodePage(table, table.ansiCodePage, table.defaultFont);
    if (status != StatusOk) return status;
  }
  PieceWriter writer(output, table);
  const int32_t status = codePage != kNoCodePage ? writer.writeInCodePage(codePage, text, length)
                                                 : writer.writePieces(text, length);
  if (status == StatusOk) writer.restoreFont();
  return status;
}

}  // namespace tarn
