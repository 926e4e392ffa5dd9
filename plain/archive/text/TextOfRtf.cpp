#include "archive/text/BodyText.h"
#include "archive/text/Charsets.h"
#include "archive/text/RtfReader.h"

namespace tarn::archive {

std::string TextOfRtf(std::string_view rtf) {
  constexpr std::string_view kSpace = " \t\r\n\f";
  const size_t start = rtf.find_first_not_of(" \t\r\n\xEF\xBB\xBF");
  std::string text;
  if (start != std::string_view::npos && rtf.substr(start).starts_with("{\\rtf")) {
    text = RtfReader(rtf.substr(start), RtfPurpose::Reading).read();
  } else {
    AppendUnknown(rtf, text);
  }
  text.resize(text.find_last_not_of(kSpace) + 1);
  if (!text.empty()) text += '\n';
  return text;
}

}  // namespace tarn::archive
