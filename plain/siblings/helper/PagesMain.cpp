// tarnmail-pages: lays out HTML and text. Each engine is made for its first document; the fonts of
// this machine are listed before, by a thread of the library's own.
#include <cstdlib>
#include <memory>

#include "HelperMain.h"
#include "siblings/layout/FontContext.h"
#include "siblings/layout/HtmlEngine.h"
#include "siblings/layout/TextEngine.h"

namespace {

using namespace tarn::pages;

class Engines {
 public:
  Engine& forKind(DocumentKind kind) {
    if (kind == DocumentKind::Html) return made(html_, MakeHtmlEngine);
    if (kind == DocumentKind::Text) return made(text_, MakeTextEngine);
    throw PageFailure(Trouble::BadDocument, "RTF is not laid out here");
  }

 private:
  static Engine& made(std::unique_ptr<Engine>& engine, std::unique_ptr<Engine> (*make)()) {
    if (engine == nullptr) engine = make();
    return *engine;
  }

  std::unique_ptr<Engine> html_;
  std::unique_ptr<Engine> text_;
};

}  // namespace

int main(int argc, char** argv) {
  Engines engines;
  const HelperTrade trade = {Files::ReadOnly, [&engines](const std::filesystem::path&) {
                               (void)MakeFontContext();
                               return [&engines](DocumentKind kind) -> Engine& {
                                 return engines.forKind(kind);
                               };
                             }};
  std::_Exit(RunHelper(argc, argv, trade));
}
