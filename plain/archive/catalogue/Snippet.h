// Snippet.h - the piece of a text around what was found in it.
#ifndef TARN_ARCHIVE_SNIPPET_H
#define TARN_ARCHIVE_SNIPPET_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tarn::archive {

// Bytes from the first up to the end.
struct TextSpan {
  size_t begin = 0;
  size_t end = 0;

  friend bool operator==(const TextSpan&, const TextSpan&) = default;
};

struct FoundSpan {
  TextSpan span;
  size_t phrase = 0;  // which of those looked for
};

struct Snippet {
  std::string text;             // one line of UTF-8
  std::vector<TextSpan> marks;  // what was found, in order and apart
};

// The piece with the most different phrases, the earliest of those; about `length` bytes. Blanks
// and ends of lines become one blank; an ellipsis is where text goes on. The spans are in order.
Snippet SnippetOf(std::string_view text, const std::vector<FoundSpan>& found, size_t length);

}  // namespace tarn::archive

#endif
