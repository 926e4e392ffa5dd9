#include "eml/PartCharset.h"

#include "Common/ByteSearch.h"
#include "eml/Charsets.h"

namespace tarn {
namespace {

CharsetRef FindCharset(std::string_view text) {
  const auto name = FindHeaderParameter(text, "charset=");
  return name ? ClassifyCharset(*name) : CharsetRef{};
}

bool IsUtf8Already(CharsetKind kind) {
  return kind == CharsetNone || kind == CharsetUtf8 || kind == CharsetAscii;
}

// Does the text's own meta element name the charset of the part's header?
bool MetaAgrees(const EmlPart& part) {
  constexpr std::string_view kMeta = "<meta http-equiv=Content-Type content=\"text/html; charset=";
  const std::string_view text = part.decoded.view();
  const size_t meta = FindIgnoringCase(text, kMeta);
  if (meta == std::string_view::npos) return false;

  const CharsetRef own = FindCharset(text.substr(meta));
  if (own.kind != part.charset.kind) return false;
  return own.kind != CharsetWindows || own.codePage == part.charset.codePage;
}

void RepairFields(EmlMessage& message, CharsetRef charset) {
  for (SizedBytes* const field :
       {&message.from, &message.to, &message.subject, &message.date, &message.cc, &message.bcc}) {
    RepairFieldToUtf8(*field, charset);
  }
}

}  // namespace

void ParsePartCharset(EmlPart& part, const HeaderStretch& value) {
  part.charset = FindCharset(value.text().substr(0, FindFoldedLineEnd(value)));
}

bool LooksAtTextForCharset(const EmlPart& part, const EmlMessage& message) {
  return !message.convertToUtf8 && !IsUtf8Already(part.charset.kind) &&
         message.documentKind == DocumentHtml;
}

Status ConvertPartCharset(EmlPart& part, EmlMessage& message) {
  if (!message.convertToUtf8 && !IsUtf8Already(part.charset.kind)) {
    // The kind of the body so far, not of this part: at the first text part it is still that of
    // HTML, so that a plain part is searched for the element, too.
    if (message.documentKind != DocumentHtml || !MetaAgrees(part)) {
      message.convertToUtf8 = true;
      RepairFields(message, part.charset);
    }
  }
  return ConvertBodyToUtf8(&part.decoded, &part.charset, message.convertToUtf8);
}

}  // namespace tarn
