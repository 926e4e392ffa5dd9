// RtfTokens.h - RTF cut into its tokens.
//
// Any bytes are some tokens: what is malformed is the token that it begins as, or text. Every call
// moves on, and looks at no byte twice.
#ifndef TARN_ARCHIVE_RTFTOKENS_H
#define TARN_ARCHIVE_RTFTOKENS_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace tarn::archive {

enum class RtfTokenKind : uint8_t {
  End,
  GroupStart,
  GroupEnd,
  Word,    // a control word: name, perhaps a number; the space after it is taken
  Symbol,  // a backslash and a character that is no letter: symbol
  Byte,    // "\'hh": byte
  Text     // bytes as they are
};

struct RtfToken {
  RtfTokenKind kind = RtfTokenKind::End;
  std::string_view text;  // of a Word its name; of Text its bytes, without line ends and NULs
  std::optional<int32_t> number;
  char character = '\0';  // of a Symbol or a Byte
};

class RtfTokens {
 public:
  explicit RtfTokens(std::string_view rtf) : rest_(rtf) {}

  // The bytes that "\bin" counts are passed over.
  RtfToken next();

 private:
  RtfToken nextAfterBackslash();
  RtfToken takeWord();
  std::optional<int32_t> takeNumber();

  std::string_view rest_;
};

}  // namespace tarn::archive

#endif
