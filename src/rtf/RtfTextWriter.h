// RtfTextWriter.h - writes text of any script as RTF, with fonts from the document's font table or
// added to it.
//
// One code page for the whole text if there is one; otherwise piece by piece, each in the first
// code page that carries it; a character that no code page carries goes out as "\uN ?" in the first
// font that has its glyphs.
//
// Wide text is UTF-16; it may hold lone surrogates. UTF-8 text may hold NULs before its first
// character beyond ASCII; any other NUL belongs to no run and ends in StatusBadArgument.
#ifndef TARN_RTF_RTFTEXTWRITER_H
#define TARN_RTF_RTFTEXTWRITER_H

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "Internal/Tarnclasses_.h"
#include "rtf/RtfFonts.h"

namespace tarn {

// A block of RTF under construction, and the fonts of the document that it is for.
struct RtfRender {
  RtfFonts fonts;
  TrackedBuffer<char> output;
};

// By number.
struct RtfFontsInForce {
  uint32_t ascii = 0;
  uint32_t current = 0;
};

// Writes after what the output holds, until the first failure; then every write does nothing.
//
// Output that cannot grow is such a failure for ASCII runs, and for the ASCII at the front of UTF-8
// text. Everything else leaves out what did not fit and goes on, so that a text may have been
// written with a gap (see leftOut). Without memory, what was written before stays. A host that
// refuses its budget costs the output its block, and what follows begins anew.
class RtfTextWriter {
 public:
  // Output and fonts outlive the writer.
  RtfTextWriter(TrackedBuffer<char>& output, RtfFonts& fonts, RtfFontsInForce inForce = {})
      : output_(output), fonts_(fonts), inForce_(inForce) {}
  explicit RtfTextWriter(RtfRender& render) : RtfTextWriter(render.output, render.fonts) {}

  // Writes UTF-8. Malformed parts come out as U+FFFD. Fails with
  //   StatusBadArgument   for more than INT32_MAX bytes from the first one beyond ASCII on;
  //   another             of the output, or of the writes below.
  void writeUtf8(std::string_view text);

  // Writes a whole wide text, and leaves the document's default font as the current one. Fails with
  //   StatusBadArgument   also for a document of unknown default font whose code page no charset of
  //                       RTF has;
  //   another             of the writes below.
  void writeWide(std::u16string_view text);

  // Writes a text that the code page carries: runs beyond ASCII as escapes in its font, the rest in
  // the ASCII font. Fails with
  //   StatusBadArgument   when a run cannot be converted, or no charset of RTF has the code page;
  //   StatusOutOfMemory   without memory;
  //   another             of writeAsciiRun.
  void writeInCodePage(uint32_t codePage, std::u16string_view text);

  // Writes the ASCII text before the first unit that is 0 or at least 128, and returns the number
  // of its units; 0 after a failure. What is between the last special character and such a unit is
  // counted but not written; documents made so far look that way, and comparisons rely on it. Fails
  // with
  //   StatusPathToUtf8Failed   when the conversion to UTF-8 fails;
  //   StatusPathTooLong        when its result might pass 32 bits;
  //   StatusOutOfMemory        without memory;
  //   another                  of the output.
  size_t writeAsciiRun(std::u16string_view text);

  // StatusOk, or the first failure.
  Status status() const { return status_; }

  // StatusOk when the output took everything; else its answer to the last part that was left out.
  Status leftOut() const { return leftOut_; }

  RtfFontsInForce inForce() const { return inForce_; }

 private:
  bool isOk() const { return status_.ok(); }
  void check(Status status);
  void append(std::string_view rtf) {
    if (isOk()) status_ = output_.append(rtf);
  }
  void appendOrLeaveOut(std::string_view rtf) {
    const Status status = output_.append(rtf);
    if (!status.ok()) leftOut_ = status;
  }
  void selectFont(uint32_t font);
  void writeCollected(std::u16string_view text);
  void flush(std::u16string_view text);
  void writeRun(uint32_t codePage, std::u16string_view text);
  void writePieces(std::u16string_view text);
  size_t writePiece(std::u16string_view text);
  void writeUncarried(std::u16string_view text);
  void writeBeyondAscii(std::string_view text);

  TrackedBuffer<char>& output_;
  RtfFonts& fonts_;
  RtfFontsInForce inForce_;
  Status status_;
  Status leftOut_;
};

// The operations by their names. A null text is StatusNullArgument, even one of length 0; but for
// WriteRtfAsciiRun no text is written as nothing. It also wants `taken`, the number of units.
Status WriteRtfUtf8Text(RtfRender& render, const char* text, uint64_t length);
Status WriteRtfWideText(TrackedBuffer<char>& output, RtfFonts& fonts, const char16_t* text,
                        uint64_t length);
Status WriteRtfCodePageText(TrackedBuffer<char>& output, RtfFonts& fonts, RtfFontsInForce& inForce,
                            uint32_t codePage, std::u16string_view text);
Status WriteRtfAsciiRun(TrackedBuffer<char>& output, RtfFontsInForce& inForce,
                        std::u16string_view text, uint64_t* taken);

}  // namespace tarn

#endif
