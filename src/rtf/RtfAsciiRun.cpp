#include "rtf/RtfTextWriter.h"
#include "rtf/RtfWords.h"

namespace tarn {
namespace {

bool EndsRun(char16_t unit) { return unit == 0 || unit >= 128; }

int32_t WriteCollected(TrackedBuffer<char>& output, const char16_t* text, uint64_t length) {
  if (length == 0) return StatusOk;
  if (length > (UINT32_MAX - 1) / 3) return StatusPathTooLong;
  const uint64_t room = length * 3 + 1;
  const auto scratch = AllocateBlock<char>(room, TARN_HERE);
  if (!scratch) return StatusOutOfMemory;
  const int64_t size = KernelWideToUtf8(text, static_cast<int64_t>(length), scratch.get(),
                                        static_cast<int64_t>(room));
  if (size <= 0) return StatusPathToUtf8Failed;
  return output.append(scratch.get(), static_cast<uint64_t>(size));
}

// Sees that the ASCII font is the current one, and writes what was collected for it.
int32_t Flush(TrackedBuffer<char>& output, uint32_t& currentFont, uint32_t asciiFont,
              const char16_t* text, uint64_t length) {
  if (currentFont != asciiFont) {
    const int32_t status = AppendRtfFont(output, asciiFont);
    if (status != StatusOk) return status;
    currentFont = asciiFont;
  }
  return WriteCollected(output, text, length);
}

}  // namespace

int32_t WriteRtfAsciiRun(TrackedBuffer<char>& output, uint32_t& currentFont, uint32_t asciiFont,
                         const char16_t* text, uint64_t length, uint64_t* taken) {
  if (taken != nullptr) *taken = 0;
  if (length == 0) return StatusOk;
  if (taken == nullptr || text == nullptr) return StatusNullArgument;

  uint64_t collected = 0;  // where the collected units begin
  uint64_t at = 0;
  for (; at < length && !EndsRun(text[at]); ++at) {
    if (!IsRtfSpecial(text[at])) continue;
    int32_t status = Flush(output, currentFont, asciiFont, text + collected, at - collected);
    if (status == StatusOk) status = AppendRtfByte(output, static_cast<uint8_t>(text[at]));
    if (status != StatusOk) return status;
    collected = at + 1;
  }
  if (at == length) {
    const int32_t status = Flush(output, currentFont, asciiFont, text + collected, at - collected);
    if (status != StatusOk) return status;
  }
  // In front of a unit that ends the run early, the collected units are taken all the same.
  *taken = at;
  return StatusOk;
}

}  // namespace tarn
