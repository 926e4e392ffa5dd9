#include "archive/text/TextFlow.h"

#include <algorithm>
#include <utility>

#include "archive/text/AsciiText.h"

namespace tarn::archive {
namespace {

constexpr size_t kLongestPrefix = 40;

size_t CountOfWord(std::string_view text) {
  const auto end = std::find_if(text.begin(), text.end(), IsHtmlSpace);
  return static_cast<size_t>(end - text.begin());
}

}  // namespace

size_t LinePrefix::push(std::string_view first, std::string_view others) {
  const size_t length = others_.size();
  if (length + others.size() > kLongestPrefix) return length;
  first_ += first;
  others_ += others;
  return length;
}

void LinePrefix::cutTo(size_t length) {
  others_.resize(std::min(length, others_.size()));
  first_.resize(std::min(length, first_.size()));
}

void TextFlow::addText(std::string_view text, bool isAsIs) {
  if (isAsIs) {
    if (std::exchange(isSpacePending_, false) && !isAtLineStart()) text_ += ' ';
    for (const char c : text) {
      if (c != '\r') text_ += c;
    }
    return;
  }
  while (!text.empty()) {
    while (!text.empty() && IsHtmlSpace(text.front())) {
      isSpacePending_ = true;
      text.remove_prefix(1);
    }
    if (text.empty()) return;
    if (std::exchange(isSpacePending_, false) && !isAtLineStart()) text_ += ' ';
    const size_t end = CountOfWord(text);
    text_ += text.substr(0, end);
    text.remove_prefix(end);
  }
}

void TextFlow::endParagraph(LinePrefix& prefix, bool isAsIs) {
  isSpacePending_ = false;
  std::string text = std::exchange(text_, {});
  if (WithoutBlanks(text).empty()) {
    // Lines with nothing in them.
    if (text.find('\n') != text.npos || !text.empty()) isBlankAsked_ = true;
    return;
  }
  const size_t start = text.find_first_not_of('\n');
  const size_t end = text.find_last_not_of('\n') + 1;
  if (start != 0) isBlankAsked_ = true;
  // The last line end ends the paragraph's last line, which ends anyway.
  const bool hasBlankAfter = text.size() - end > 1;
  text.resize(end);
  text.erase(0, start);
  add({std::move(text), prefix.first(), prefix.others(), isAsIs, false});
  prefix.takeFirst();
  isBlankAsked_ = hasBlankAfter;
}

void TextFlow::add(TextParagraph paragraph) {
  paragraph.hasBlankBefore = paragraph.hasBlankBefore || isBlankAsked_;
  isBlankAsked_ = false;
  paragraphs_.push_back(std::move(paragraph));
}

void TextFlow::addAll(std::vector<TextParagraph> paragraphs) {
  for (TextParagraph& paragraph : paragraphs) add(std::move(paragraph));
}

}  // namespace tarn::archive
