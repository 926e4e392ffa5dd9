// Documents of HTML laid out, from charset to page count, and their first page drawn. Besides what
// the sanitizers see, a run aborts when anything but a PageFailure comes out, when a page is not of
// its paper, and when the engine asks its folder for what is no plain name.
#include <memory>
#include <string>

#include "host/Expect.h"
#include "siblings/layout/HtmlEngine.h"

namespace {

using namespace tarn::pages;
using tarn::fuzz::Expect;

// Each name has a picture: a white GIF of one pixel.
class Folder : public DocumentFolder {
 public:
  std::optional<std::string> read(std::string_view name) override {
    Expect(!name.empty() && name != "." && name != "..", "a name that is none");
    Expect(name.find_first_of(std::string_view("/\0", 2)) == std::string_view::npos,
           "a name with a folder in it");
    return std::string("GIF89a\1\0\1\0\x80\0\0\xFF\xFF\xFF\0\0\0,\0\0\0\0\1\0\1\0\0\2\2D\1\0;", 35);
  }
};

class Onwards : public Progress {
 public:
  bool at(int /*percent*/) override { return true; }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const std::unique_ptr<Engine> engine = MakeHtmlEngine();
  Folder folder;
  Onwards progress;
  try {
    const auto layout = engine->layOut(
        DocumentKind::Html, {reinterpret_cast<const char*>(data), size}, Paper::A4, folder);
    Expect(layout->pageCount() >= 1, "a document without pages");
    const Bitmap page = layout->draw(1, 12, progress);
    Expect(page.width == 99 && page.height == 140, "a page of another paper");
    Expect(page.pixels.size() == size_t{99} * 140 * 4, "a page that is not of its size");
  } catch (const PageFailure&) {
    // It says why.
  }
  return 0;
}
