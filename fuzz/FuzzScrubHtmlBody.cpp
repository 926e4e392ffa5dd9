// Markup that is scrubbed in place. Besides what the sanitizers see, a run aborts when a byte has
// become anything but a blank, when a text without leftovers changes, or when bytes after the
// first NUL change.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "rtf/ScrubHtmlBody.h"

namespace {

void Expect(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "%s\n", what);
  std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  auto* const block = static_cast<char*>(std::malloc(size + (size == 0 ? 1 : 0)));
  if (block == nullptr) return 0;
  std::memcpy(block, text.data(), size);
  Expect(tarn::ScrubHtmlBody(block, size) == StatusOk, "another result than StatusOk");
  const std::string scrubbed(block, size);
  std::free(block);

  for (size_t i = 0; i < size; ++i) {
    Expect(scrubbed[i] == text[i] || scrubbed[i] == ' ', "a byte became something else");
  }
  const std::string_view seen = std::string_view(text).substr(0, text.find('\0'));
  Expect(scrubbed.substr(seen.size()) == text.substr(seen.size()), "bytes after the NUL changed");
  const bool hasLeftover = seen.find("&#") != std::string_view::npos ||
                           seen.find("<div>&nbsp;value=\"/") != std::string_view::npos;
  Expect(hasLeftover || scrubbed == text, "a text without leftovers changed");
  return 0;
}
