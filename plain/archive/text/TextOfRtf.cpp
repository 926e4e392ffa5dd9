#include "archive/text/AsciiText.h"
#include "archive/text/BodyText.h"
#include "archive/text/Charsets.h"
#include "archive/text/RtfReader.h"

namespace tarn::archive {

std::string TextOfRtf(std::string_view rtf) {
  const size_t start = rtf.find_first_not_of(" \t\r\n\xEF\xBB\xBF");
  std::string text;
  if (start != std::string_view::npos && rtf.substr(start).starts_with("{\\rtf")) {
    text = RtfReader(rtf.substr(start), RtfPurpose::Reading).read();
  } else {
    AppendUnknown(rtf, text);
  }
  text.resize(TrimmedRight(text, kHtmlSpace).size());
  if (!text.empty()) text += '\n';
  return text;
}

}  // namespace tarn::archive
