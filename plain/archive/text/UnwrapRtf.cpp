#include "archive/text/UnwrapRtf.h"

#include "archive/text/RtfReader.h"
#include "archive/text/RtfTokens.h"

namespace tarn::archive {
namespace {

// MS-OXRTFEX looks at so many tokens. Words of the document's own group count after them as well:
// some writers have many before the one that tells.
constexpr int kTokensLookedAt = 10;

Wrapped KindOf(std::string_view rtf) {
  RtfTokens tokens(rtf);
  if (tokens.next().kind != RtfTokenKind::GroupStart) return Wrapped::Nothing;
  const RtfToken first = tokens.next();
  if (first.kind != RtfTokenKind::Word || first.text != "rtf") return Wrapped::Nothing;
  int depth = 1;
  for (int count = 2; depth > 0; ++count) {
    const RtfToken token = tokens.next();
    switch (token.kind) {
      case RtfTokenKind::GroupStart:
        if (count >= kTokensLookedAt) return Wrapped::Nothing;
        ++depth;
        break;
      case RtfTokenKind::GroupEnd:
        --depth;
        break;
      case RtfTokenKind::Word:
        if (depth != 1 || token.number == 0) break;
        if (token.text == "fromhtml") return Wrapped::Html;
        if (token.text == "fromtext") return Wrapped::Text;
        break;
      case RtfTokenKind::Symbol:
        break;
      case RtfTokenKind::Text:
        // Spaces between words mean nothing yet.
        if (token.text.find_first_not_of(" \t") != std::string_view::npos && depth == 1) {
          return Wrapped::Nothing;
        }
        break;
      default:
        return Wrapped::Nothing;
    }
  }
  return Wrapped::Nothing;
}

}  // namespace

UnwrappedRtf UnwrapRtf(std::string_view rtf) {
  const Wrapped kind = KindOf(rtf);
  if (kind == Wrapped::Nothing) return {};
  const RtfPurpose purpose = kind == Wrapped::Html ? RtfPurpose::Html : RtfPurpose::Text;
  return {kind, RtfReader(rtf, purpose).read()};
}

}  // namespace tarn::archive
