// TextFlow.h - paragraphs as they are put together: spaces collapse, blank lines are asked for.
#ifndef TARN_ARCHIVE_TEXTFLOW_H
#define TARN_ARCHIVE_TEXTFLOW_H

#include <string>
#include <string_view>
#include <vector>

#include "archive/text/TextLines.h"

namespace tarn::archive {

// Before the lines of a paragraph: quotes, indents, marks. They nest to any depth, and show to one
// that a line has room for.
class LinePrefix {
 public:
  // How long it was, for the time when the element ends.
  size_t push(std::string_view shown) { return push(shown, shown); }
  // `first` is before the next paragraph's first line alone; it is as long as `others`.
  size_t push(std::string_view first, std::string_view others);
  void cutTo(size_t length);

  const std::string& first() const { return first_; }
  const std::string& others() const { return others_; }
  void takeFirst() { first_ = others_; }

 private:
  std::string first_;
  std::string others_;
};

// Of a whole body, or of one cell.
class TextFlow {
 public:
  // Text with its line ends as spaces, and one space for many; as it is where `isAsIs`.
  void addText(std::string_view text, bool isAsIs);
  void addLineEnd() { text_ += '\n'; }

  // The paragraph ends, if there is one.
  void endParagraph(LinePrefix& prefix, bool isAsIs = false);
  // There is a blank line before the next one.
  void askForBlank() { isBlankAsked_ = true; }

  void add(TextParagraph paragraph);
  void addAll(std::vector<TextParagraph> paragraphs);

  // Whether text would come after what needs a space between.
  bool isAtLineStart() const { return text_.empty() || text_.back() == '\n'; }
  std::vector<TextParagraph>& paragraphs() { return paragraphs_; }

 private:
  std::vector<TextParagraph> paragraphs_;
  std::string text_;
  bool isSpacePending_ = false;
  bool isBlankAsked_ = false;
};

}  // namespace tarn::archive

#endif
