// HarmlessPage.h - what the archive promises of a mail as HTML.
#ifndef TARN_FUZZ_HARMLESSPAGE_H
#define TARN_FUZZ_HARMLESSPAGE_H

#include <string_view>

#include "archive/text/HtmlReferences.h"
#include "archive/text/HtmlTokens.h"
#include "archive/writers/HtmlRules.h"
#include "host/Expect.h"

namespace tarn::fuzz {

inline constexpr std::string_view kPagePolicy =
    "<!DOCTYPE html>\n<html>\n<head>\n<meta http-equiv=\"Content-Security-Policy\" "
    "content=\"default-src 'none'; img-src data:; style-src 'unsafe-inline'\">\n";

// Of the page itself, besides those that mails may have.
inline bool IsOfThePage(std::string_view name) {
  constexpr std::string_view kNames[] = {"body", "head", "header", "html",      "img",
                                         "main", "meta", "style",  "tarn-body", "title"};
  return archive::IsAmong(name, kNames);
}

// Aborts where the page does not begin with its policy, where it has no end, or where an element or
// an attribute may do something.
inline void ExpectHarmlessPage(std::string_view page) {
  using archive::HtmlTokenKind;
  Expect(page.starts_with(kPagePolicy), "no policy");
  Expect(page.ends_with("\n</main>\n</body>\n</html>\n"), "no end");
  size_t metas = 0;
  archive::HtmlTokens tokens(page);
  for (;;) {
    const archive::HtmlToken& token = tokens.next();
    if (token.kind == HtmlTokenKind::End) break;
    if (token.kind != HtmlTokenKind::StartTag) continue;
    Expect(archive::IsAmong(token.name, archive::kKeptElements) || IsOfThePage(token.name),
           "an odd element");
    metas += token.name == "meta" ? 1 : 0;
    for (const archive::HtmlAttribute& attribute : token.attributes) {
      Expect(!attribute.name.starts_with("on"), "an attribute that runs");
      if (attribute.name == "src" || attribute.name == "background") {
        Expect(archive::DecodedHtmlValue(attribute.value).substr(0, 11).find(':') == 4,
               "an image elsewhere");
      }
    }
  }
  Expect(metas == 3, "another number of metas");
}

}  // namespace tarn::fuzz

#endif
