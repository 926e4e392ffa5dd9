// RTF as text, and what it wraps. Besides what the sanitizers see, a run aborts when a text is
// longer than RTF of that length can become, or is no UTF-8.
#include <string>
#include <string_view>

#include "ArchiveItem.h"
#include "Platform/Utf8.h"
#include "archive/text/BodyText.h"
#include "archive/text/UnwrapRtf.h"

namespace {

void Check(std::string_view text, size_t sizeOfRtf) {
  using tarn::fuzz::Expect;
  Expect(text.size() <= 16 * sizeOfRtf + 16, "a text longer than it can be");
  while (!text.empty()) {
    const auto character = tarn::platform::FirstCharacter(text);
    Expect(character.isWellFormed, "a text that is no UTF-8");
    text.remove_prefix(character.size);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view rtf(reinterpret_cast<const char*>(data), size);
  const tarn::archive::UnwrappedRtf unwrapped = tarn::archive::UnwrapRtf(rtf);
  Check(unwrapped.content, size);
  tarn::fuzz::Expect(unwrapped.kind != tarn::archive::Wrapped::Nothing || unwrapped.content.empty(),
                     "content of nothing");
  Check(tarn::archive::TextOfRtf(rtf), size);
  return 0;
}
