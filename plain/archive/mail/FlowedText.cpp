#include "archive/mail/FlowedText.h"

#include <algorithm>

namespace tarn::archive::mail {
namespace {

std::string Marks(size_t depth) { return std::string(depth, '>') + (depth == 0 ? "" : " "); }

}  // namespace

std::string UnflowText(std::string_view text, bool deletesSpace) {
  std::string unflowed;
  bool isOpen = false;  // a paragraph goes on, at this depth
  size_t openDepth = 0;
  while (!text.empty()) {
    const size_t length = std::min(text.find('\n'), text.size());
    std::string_view line = text.substr(0, length);
    text.remove_prefix(std::min(length + 1, text.size()));
    const size_t depth = std::min(line.find_first_not_of('>'), line.size());
    line.remove_prefix(depth);
    if (line.starts_with(' ')) line.remove_prefix(1);
    const bool isSignatureMark = line == "-- ";
    if (isOpen && (depth != openDepth || isSignatureMark)) {
      unflowed += '\n';
      isOpen = false;
    }
    if (!isOpen) unflowed += Marks(depth);
    const bool flows = line.ends_with(' ') && !isSignatureMark;
    if (flows && deletesSpace) line.remove_suffix(1);
    unflowed += line;
    if (!flows) unflowed += '\n';
    isOpen = flows;
    openDepth = depth;
  }
  if (isOpen) unflowed += '\n';
  return unflowed;
}

}  // namespace tarn::archive::mail
