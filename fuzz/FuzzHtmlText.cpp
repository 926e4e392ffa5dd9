// HTML as text. The last byte of the input chooses the width. Besides what the sanitizers see, a
// run aborts when the text is longer than tags can make it, is no UTF-8, has blank lines where
// there are none to be, or is another one the second time.
#include <string>
#include <string_view>

#include "ArchiveItem.h"
#include "Platform/Utf8.h"
#include "archive/text/BodyText.h"

namespace {

bool IsUtf8(std::string_view text) {
  while (!text.empty()) {
    const auto character = tarn::platform::FirstCharacter(text);
    if (!character.isWellFormed) return false;
    text.remove_prefix(character.size);
  }
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using tarn::fuzz::Expect;
  if (size == 0) return 0;
  const tarn::archive::HtmlBody html{{reinterpret_cast<const char*>(data), size - 1}, ""};
  const size_t width = data[size - 1];
  const std::string text = TextOfHtml(html, width);
  Expect(text.size() <= 64 * size + 256, "a text longer than it can be");
  Expect(IsUtf8(text), "a text that is no UTF-8");
  Expect(text.empty() || (text.front() != '\n' && text.back() == '\n'), "a text that begins blank");
  Expect(TextOfHtml(html, width) == text, "another text the second time");
  return 0;
}
