// Plain text decoded, laid out, and its last page drawn. Besides what the sanitizers see, a run
// aborts when the decoded text is not UTF-8 or has control characters, when it has not the same
// pages again, and when anything but a PageFailure comes out.
#include <memory>
#include <string>

#include "host/Expect.h"
#include "siblings/layout/PlainDocument.h"
#include "siblings/layout/TextEngine.h"
#include "siblings/layout/Utf8.h"

namespace {

using namespace tarn::pages;
using tarn::fuzz::Expect;

class NoFolder : public DocumentFolder {
 public:
  std::optional<std::string> read(std::string_view /*name*/) override {
    Expect(false, "a file for plain text");
    return std::nullopt;
  }
};

class Onwards : public Progress {
 public:
  bool at(int /*percent*/) override { return true; }
};

void CheckText(const std::string& text) {
  Expect(IsUtf8(text), "a text that is not UTF-8");
  for (const char c : text) {
    Expect(static_cast<unsigned char>(c) >= 0x20 || c == '\t' || c == '\n', "a control character");
    Expect(c != 0x7F, "a control character");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const std::unique_ptr<Engine> engine = MakeTextEngine();
  const std::string document(reinterpret_cast<const char*>(data), size);
  CheckText(DecodePlainDocument(document));
  NoFolder folder;
  Onwards progress;
  try {
    const auto layout = engine->layOut(DocumentKind::Text, document, Paper::Letter, folder);
    const int32_t count = layout->pageCount();
    Expect(count >= 1, "a document without pages");
    const Bitmap page = layout->draw(count, 12, progress);
    Expect(page.width == 102 && page.height == 132, "a page of another paper");
    const auto again = engine->layOut(DocumentKind::Text, document, Paper::Letter, folder);
    Expect(again->pageCount() == count, "another number of pages");
    Expect(again->draw(count, 12, progress).pixels == page.pixels, "another page");
  } catch (const PageFailure&) {
    // It says why.
  }
  return 0;
}
