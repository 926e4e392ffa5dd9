#include "archive/text/BodyText.h"
#include "archive/text/HtmlReader.h"
#include "archive/text/TextLines.h"

namespace tarn::archive {

std::string TextOfHtml(const HtmlBody& html, size_t width) {
  const std::string text = Utf8OfHtml(html);
  return HtmlReader(text, width).read();
}

std::string BestText(const Bodies& bodies, size_t width) {
  const bool hasText = bodies.text && !WithoutBlanks(*bodies.text).empty();
  if (hasText) return *bodies.text;
  if (bodies.html) return TextOfHtml(*bodies.html, width);
  if (bodies.rtf) return TextOfRtf(*bodies.rtf);
  return bodies.text.value_or("");
}

}  // namespace tarn::archive
