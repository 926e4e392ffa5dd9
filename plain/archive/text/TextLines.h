// TextLines.h - paragraphs as lines of a width.
#ifndef TARN_ARCHIVE_TEXTLINES_H
#define TARN_ARCHIVE_TEXTLINES_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tarn::archive {

struct TextParagraph {
  std::string text;         // LF where a line ends by itself
  std::string firstPrefix;  // before its first line: quotes, indents, the mark of a list's item
  std::string prefix;       // before its other lines
  bool isAsIs = false;      // no line is broken
  bool hasBlankBefore = false;
};

// Spaces, and characters that nothing is seen of: they are no text on their own.
std::string_view WithoutBlanks(std::string_view text);

// The paragraphs' lines, LF at the end of each, of at most `width` columns where spaces or East
// Asian characters allow; 0 is no limit. No-break spaces keep lines together and become spaces.
// Several blank lines are one; there is none at the front and at the end.
std::string LinesOf(const std::vector<TextParagraph>& paragraphs, size_t width);

}  // namespace tarn::archive

#endif
