#include "eml/PartCharset.h"

#include <string_view>

#include "Common/ByteSearch.h"
#include "eml/Charsets.h"
#include "eml/HeaderParameter.h"
#include "eml/HeaderValue.h"

namespace tarn {
namespace {

CharsetRef FindCharset(const char* start, const char* end) {
  const char* nameEnd = nullptr;
  const char* const name = FindHeaderParameter(start, end, "charset=", &nameEnd);
  return name == nullptr ? CharsetRef{} : ClassifyCharset(name, nameEnd);
}

bool IsUtf8Already(CharsetKind kind) {
  return kind == CharsetNone || kind == CharsetUtf8 || kind == CharsetAscii;
}

// Does the text's own meta element name the charset of the part's header?
bool MetaAgrees(const EmlPart& part) {
  constexpr std::string_view kMeta = "<meta http-equiv=Content-Type content=\"text/html; charset=";
  const char* const text = part.decoded.get();
  const char* const end = text + part.decodedLength;
  const char* const meta = FindIgnoringCase(text, end, kMeta);
  if (meta == nullptr) return false;

  const CharsetRef own = FindCharset(meta, end);
  if (own.kind != part.charset.kind) return false;
  return own.kind != CharsetWindows || own.codePage == part.charset.codePage;
}

void RepairFields(EmlMessage& message, CharsetRef charset) {
  for (SizedBytes* const field :
       {&message.from, &message.to, &message.subject, &message.date, &message.cc, &message.bcc}) {
    RepairFieldToUtf8(*field, charset);
  }
}

int32_t ConvertDecoded(EmlPart& part, bool force) {
  SizedBytes text(std::move(part.decoded), part.decodedLength);
  const int32_t status = ConvertBodyToUtf8(&text, &part.charset, force);
  part.decodedLength = text.length();
  part.decoded = text.take();
  return status;
}

}  // namespace

void ParsePartCharset(EmlPart& part, const char* value, const char* headerEnd,
                      const char* readableEnd) {
  const char* const lineEnd = FindValueEnd(value, headerEnd, readableEnd);
  part.charset = FindCharset(value, lineEnd != nullptr ? lineEnd : headerEnd);
}

bool LooksAtTextForCharset(const EmlPart& part, const EmlMessage& message) {
  return message.convertToUtf8 == 0 && !IsUtf8Already(part.charset.kind) &&
         message.documentKind == DocumentHtml;
}

int32_t ConvertPartCharset(EmlPart& part, EmlMessage& message) {
  if (message.convertToUtf8 == 0 && !IsUtf8Already(part.charset.kind)) {
    // The kind of the body so far, not of this part: at the first text part it is still that of
    // HTML, so that a plain part is searched for the element, too.
    if (message.documentKind != DocumentHtml || !MetaAgrees(part)) {
      message.convertToUtf8 = 1;
      RepairFields(message, part.charset);
    }
  }
  return ConvertDecoded(part, message.convertToUtf8 != 0);
}

}  // namespace tarn
