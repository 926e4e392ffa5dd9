#include <algorithm>
#include <string_view>

#include "Platform/CodePages.h"
#include "rtf/ConversionCapacity.h"
#include "rtf/RtfTextWriter.h"
#include "rtf/RtfWords.h"

namespace tarn {
namespace {

uint64_t RunBeyondAscii(const char16_t* text, uint64_t length) {
  const char16_t* const end = std::find_if(text, text + length, [](char16_t u) { return u < 128; });
  return static_cast<uint64_t>(end - text);
}

// Writes a run in the current font. Trail bytes of pairs that are ASCII stand as they are, even
// where RTF reads more into them; documents made so far look that way, and comparisons rely on it.
// What the output does not take is left out.
int32_t WriteRun(TrackedBuffer<char>& output, uint32_t codePage, const char16_t* text,
                 uint64_t length) {
  const uint64_t room = length * 2;
  const auto scratch = AllocateBlock<char>(room, TARN_HERE);
  if (!scratch) return StatusOutOfMemory;
  const int32_t size = platform::Utf16ToBytes(codePage, std::u16string_view(text, length),
                                              scratch.get(), ConversionCapacity(room), nullptr);
  if (size <= 0) return StatusBadArgument;
  for (const char byte : std::string_view(scratch.get(), static_cast<size_t>(size))) {
    const auto value = static_cast<uint8_t>(byte);
    if (value >= 128) {
      AppendRtfByte(output, value);
    } else {
      output.append(&byte, 1).ignore();
    }
  }
  return StatusOk;
}

}  // namespace

int32_t WriteRtfCodePageText(TrackedBuffer<char>& output, RtfFontTable& table, uint32_t asciiFont,
                             uint32_t& currentFont, uint32_t codePage, const char16_t* text,
                             uint64_t length) {
  if (text == nullptr) return StatusNullArgument;
  uint32_t font = kNoRtfFont;
  int32_t status = FontForCodePage(table, codePage, font);
  for (uint64_t at = 0; status == StatusOk && at < length;) {
    const uint64_t run = RunBeyondAscii(text + at, length - at);
    if (run != 0) {
      if (currentFont != font) {
        AppendRtfFont(output, font);
        currentFont = font;
      }
      status = WriteRun(output, codePage, text + at, run);
      if (status != StatusOk) return status;
      at += run;
    }
    uint64_t taken = 0;
    status = WriteRtfAsciiRun(output, currentFont, asciiFont, text + at, length - at, &taken);
    // A NUL belongs to neither run.
    if (run == 0 && taken == 0 && status == StatusOk) status = StatusBadArgument;
    at += taken;
  }
  return status;
}

}  // namespace tarn
