// HtmlTokens.h - HTML cut into text and tags, as browsers cut it (the tokenization of the HTML
// standard, without the states that only scripts reach).
//
// Any text is some tokens, and each byte is looked at a bounded number of times. Comments,
// declarations and processing instructions are no tokens: the next token is what follows them.
#ifndef TARN_ARCHIVE_HTMLTOKENS_H
#define TARN_ARCHIVE_HTMLTOKENS_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tarn::archive {

enum class HtmlTokenKind : uint8_t {
  End,
  Text,     // with its character references
  RawText,  // what a style, a script, a title ... holds: all up to its end tag
  StartTag,
  EndTag
};

struct HtmlAttribute {
  std::string name;        // lower case
  std::string_view value;  // as it is written, without quotes
};

struct HtmlToken {
  HtmlTokenKind kind = HtmlTokenKind::End;
  std::string name;       // of a tag, lower case; of raw text the element that holds it
  std::string_view text;  // of Text and RawText
  std::vector<HtmlAttribute> attributes;

  // The first of a name; null without one.
  const std::string_view* attribute(std::string_view wanted) const;
};

class HtmlTokens {
 public:
  // Attributes of a tag that are kept: many times what tags have.
  static constexpr size_t kMostAttributes = 1000;

  // The text outlives the tokens.
  explicit HtmlTokens(std::string_view html) : rest_(html) {}

  // The next token; of kind End at the end, from then on.
  const HtmlToken& next();

 private:
  bool takeMarkup();
  bool takeTag();
  bool takeAttribute();
  void takeRawText();
  void skipComment();
  void skipTo(char end);

  std::string_view rest_;
  HtmlToken token_;
  std::string rawElement_;  // whose content comes next
};

// Takes out the control characters that no HTML has: C0 but for tabs, form feeds and line ends,
// DEL, and C1. The text is UTF-8.
void DropControls(std::string& text);

// With "&", "<", ">", and quotes as references, and without control characters.
std::string EscapedHtml(std::string_view text);

}  // namespace tarn::archive

#endif
