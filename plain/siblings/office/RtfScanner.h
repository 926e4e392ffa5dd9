// RtfScanner.h - cuts RTF into its tokens, as the RTF specification 1.9.1 has them.
//
// Bytes are taken as they are: nothing is decoded, and text that no rule cuts comes in runs. The
// tokens put together are the document.
#ifndef TARN_SIBLINGS_OFFICE_RTFSCANNER_H
#define TARN_SIBLINGS_OFFICE_RTFSCANNER_H

#include <cstdint>
#include <optional>
#include <string_view>

namespace tarn::pages {

enum class RtfTokenKind : uint8_t {
  GroupStart,  // {
  GroupEnd,    // }
  Word,        // \name, \name12, \name-12, with the blank that ends it
  Symbol,      // a backslash and one byte; \' with its two hexadecimal digits
  Binary,      // the bytes that a \bin announced
  Text
};

struct RtfToken {
  RtfTokenKind kind = RtfTokenKind::Text;
  std::string_view bytes;         // the whole token
  std::string_view name;          // of a word
  std::optional<int32_t> number;  // of a word; of \' its byte, when it has two digits
  char symbol = 0;
  bool whole = true;  // false: the document ends in it, or in the bytes that it announces
};

class RtfScanner {
 public:
  explicit RtfScanner(std::string_view document) : document_(document) {}

  // The next token; nothing at the end. What the end cuts off is a shorter token.
  std::optional<RtfToken> next();

 private:
  RtfToken word();
  RtfToken symbol();
  RtfToken text();
  RtfToken take(RtfTokenKind kind, size_t length);

  std::string_view document_;
  size_t at_ = 0;
  size_t binaryLength_ = 0;
};

}  // namespace tarn::pages

#endif
