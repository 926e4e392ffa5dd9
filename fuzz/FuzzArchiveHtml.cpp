// A mail, read by the archive and written as HTML. Besides what the sanitizers see, a run aborts
// when the page does not begin with its policy, or has an element or an attribute that may do
// something.
#include <string>
#include <string_view>

#include "WrittenMail.h"
#include "archive/text/HtmlReferences.h"
#include "archive/text/HtmlTokens.h"
#include "archive/writers/HtmlRules.h"
#include "archive/writers/Writers.h"
#include "host/Expect.h"
#include "mutators/CallScript.h"
#include "mutators/LibFuzzer.h"
#include "mutators/MailMutator.h"

using namespace tarn;
using namespace tarn::archive;
using fuzz::Expect;

namespace {

constexpr std::string_view kPolicy =
    "<!DOCTYPE html>\n<html>\n<head>\n<meta http-equiv=\"Content-Security-Policy\" "
    "content=\"default-src 'none'; img-src data:; style-src 'unsafe-inline'\">\n";

// Of the page itself, besides those that mails may have.
bool IsOfThePage(std::string_view name) {
  constexpr std::string_view kNames[] = {"body", "head", "header", "html",      "img",
                                         "main", "meta", "style",  "tarn-body", "title"};
  return IsAmong(name, kNames);
}

void ExpectHarmless(std::string_view page) {
  size_t metas = 0;
  HtmlTokens tokens(page);
  for (;;) {
    const HtmlToken& token = tokens.next();
    if (token.kind == HtmlTokenKind::End) break;
    if (token.kind != HtmlTokenKind::StartTag) continue;
    Expect(IsAmong(token.name, kKeptElements) || IsOfThePage(token.name), "an odd element");
    metas += token.name == "meta" ? 1 : 0;
    for (const HtmlAttribute& attribute : token.attributes) {
      Expect(!attribute.name.starts_with("on"), "an attribute that runs");
      if (attribute.name == "src" || attribute.name == "background") {
        Expect(DecodedHtmlValue(attribute.value).substr(0, 11).find(':') == 4,
               "an image elsewhere");
      }
    }
  }
  Expect(metas == 3, "another number of metas");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const auto item = fuzz::ItemOfMail({reinterpret_cast<const char*>(data), size});
  if (item == nullptr) return 0;
  fuzz::TextSink page;
  WriteHtml(*item, {"files/a b.pdf", "files/c"}, page);
  Expect(page.text.starts_with(kPolicy), "no policy");
  Expect(page.text.ends_with("\n</main>\n</body>\n</html>\n"), "no end");
  ExpectHarmless(page.text);
  return 0;
}

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t most, unsigned seed) {
  return fuzz::MutateInput(data, size, most, seed, fuzz::MutateMail, fuzz::MutateAsLibFuzzer);
}
