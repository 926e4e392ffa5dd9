#include "eml/ContentClasses.h"

#include <array>
#include <string_view>

#include "Common/ByteSearch.h"

namespace tarn {
namespace {

struct ContentTypeRow {
  std::string_view type;
  ContentClass contentClass;
};

// Tested in this order.
constexpr std::array<ContentTypeRow, 12> kContentTypes = {
    {{"text/html", ContentHtml},
     {"text/plain", ContentPlain},
     {"image/png", ContentPng},
     {"image/jpeg", ContentJpeg},
     {"text/css", ContentCss},
     {"image/svg", ContentSvg},
     {"application/javascript", ContentJavascript},
     {"application/vnd.ms-officetheme", ContentOfficeTheme},
     {"application/pdf", ContentPdf},
     {"text/xml", ContentXml},
     {"image/gif", ContentGif},
     {"image/x-wmf", ContentWmf}}};

}  // namespace

ContentClass ClassifyContent(const char* start, const char* end) {
  for (const ContentTypeRow& row : kContentTypes) {
    if (StartsWithIgnoringCase(start, end, row.type)) return row.contentClass;
  }
  return ContentOther;
}

}  // namespace tarn
