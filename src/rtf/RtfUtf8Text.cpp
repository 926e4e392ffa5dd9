#include "Platform/CodePages.h"
#include "rtf/RtfTextWriter.h"
#include "rtf/RtfWords.h"

namespace tarn {
namespace {

int32_t WriteBeyondAscii(RtfRender& render, std::string_view text) {
  if (text.size() > INT32_MAX) return StatusBadArgument;  // beyond what a conversion takes
  TrackedBuffer<char16_t> wide;
  if (wide.reserve(text.size()) == nullptr) return wide.lastError();
  const int32_t units = platform::BytesToUtf16(platform::kCodePageUtf8, text, wide.data(),
                                               static_cast<int32_t>(text.size()));
  if (units <= 0) return StatusBadArgument;
  wide.setLength(static_cast<uint64_t>(units));
  return WriteRtfWideText(render.output, render.fonts, wide.data(), wide.length());
}

}  // namespace

int32_t WriteRtfUtf8Text(RtfRender& render, const char* text, uint64_t length) {
  if (text == nullptr) return StatusNullArgument;

  uint64_t collected = 0;  // where the collected bytes begin
  uint64_t at = 0;
  for (; at < length; ++at) {
    const auto byte = static_cast<uint8_t>(text[at]);
    if (byte >= 128) break;
    if (!IsRtfSpecial(byte)) continue;
    int32_t status = render.output.append(text + collected, at - collected);
    if (status == StatusOk) status = AppendRtfByte(render.output, byte);
    if (status != StatusOk) return status;
    collected = at + 1;
  }
  const int32_t status = render.output.append(text + collected, at - collected);
  if (status != StatusOk || at == length) return status;
  return WriteBeyondAscii(render, std::string_view(text + at, length - at));
}

}  // namespace tarn
