#include "archive/mapi/MapiBodies.h"

#include <utility>
#include <vector>

#include "archive/mapi/CodePageNames.h"
#include "archive/mapi/PropertyValues.h"
#include "archive/mapi/Tags.h"
#include "archive/text/UnpackRtf.h"
#include "archive/text/UnwrapRtf.h"

namespace tarn::archive::mapi {
namespace {

// The charset that PidTagInternetCodepage names; empty where it names none.
std::string InternetCharset(PropertyValues& values) {
  const std::optional<int64_t> told = values.integer(kTagInternetCodepage);
  if (!told || *told <= 0 || *told > UINT16_MAX) return {};
  return std::string(CharsetOfCodePage(static_cast<uint32_t>(*told)));
}

// HTML is bytes in the charset of the internet; of type text it is like every other text.
std::optional<HtmlBody> ReadHtml(PropertyValues& values) {
  std::optional<std::string> bytes = values.binary(kTagHtml, kLargestBody);
  std::string charset;
  if (bytes) {
    while (!bytes->empty() && bytes->back() == '\0') bytes->pop_back();
    charset = InternetCharset(values);
  } else {
    bytes = values.text(kTagHtml, kLargestBody);
    charset = "utf-8";
  }
  if (!bytes || bytes->empty()) return std::nullopt;
  return HtmlBody{std::move(*bytes), std::move(charset)};
}

void ReadRtf(PropertyValues& values, Bodies& bodies) {
  const std::optional<std::string> packed = values.binary(kTagRtfCompressed, kLargestBody);
  if (!packed || packed->empty()) return;
  Outcome<std::string> rtf = UnpackRtf(*packed);
  if (!rtf) {
    bodies.troubles.push_back(
        {rtf.trouble().kind, "the RTF body cannot be unpacked: " + rtf.trouble().reason});
    return;
  }
  if (rtf->empty()) return;
  bodies.rtf = std::move(*rtf);
  if (bodies.html && bodies.text) return;
  UnwrappedRtf unwrapped = UnwrapRtf(*bodies.rtf);
  if (unwrapped.content.empty()) return;
  if (unwrapped.kind == Wrapped::Html && !bodies.html) {
    bodies.html = HtmlBody{std::move(unwrapped.content), "utf-8"};
  } else if (unwrapped.kind == Wrapped::Text && !bodies.text) {
    bodies.text = std::move(unwrapped.content);
  }
}

}  // namespace

Bodies ReadBodies(MapiMessage& message, std::optional<uint32_t> codePage) {
  Bodies bodies;
  PropertyValues values(message.properties(), codePage, &bodies.troubles);
  bodies.text = values.text(kTagBody, kLargestBody);
  if (bodies.text && bodies.text->empty()) bodies.text.reset();
  bodies.html = ReadHtml(values);
  ReadRtf(values, bodies);
  return bodies;
}

Outcome<std::string> ReadTransportHeaders(MapiMessage& message) {
  PropertySet& set = message.properties();
  const std::optional<uint16_t> type = set.typeOf(kTagTransportMessageHeaders);
  const bool isWide = type == kTypeString;
  if (!isWide && type != kTypeString8) return std::string();
  Outcome<std::string> headers = set.bytes(kTagTransportMessageHeaders, kLargestBody);
  if (!headers) return headers;
  if (isWide) return Utf8OfText16(*headers);
  while (!headers->empty() && headers->back() == '\0') headers->pop_back();
  return headers;
}

}  // namespace tarn::archive::mapi
