#include "archive/mail/EncodedWords.h"

#include "archive/mail/AsciiText.h"

namespace tarn::archive::mail {
namespace {

bool IsBeyondAscii(char c) { return static_cast<unsigned char>(c) >= 128; }

// What must not be in an encoded word, and is in some (RFC 2047 5, 3).
bool IsSpecial(char c) {
  return (c >= 0 && c <= ' ') || c == '\x7F' ||
         std::string_view("()<>@,;:\\\".[]").find(c) != std::string_view::npos;
}

// Where the text of an encoded word begins that has it in quoted-printable:
// "=?iso-8859-1?Q?text?=". npos where none begins at `at`.
size_t StartOfQuotedWord(std::string_view value, size_t at) {
  constexpr std::string_view kQuoted = "?q?";
  if (!value.substr(at).starts_with("=?")) return std::string_view::npos;
  const size_t charset = value.find_first_of("? \t\r\n", at + 2);
  if (charset == std::string_view::npos) return charset;
  if (!StartsWithNoCase(value.substr(charset), kQuoted)) return std::string_view::npos;
  return charset + kQuoted.size();
}

// Whether the text of a word goes on to its own end, and not over an address or another word.
bool IsWholeWord(std::string_view text) {
  constexpr size_t kLongestWord = 1024;
  text = text.substr(0, kLongestWord);
  const size_t end = text.find("?=");
  if (end == std::string_view::npos) return false;
  text = text.substr(0, end);
  return text.find_first_of("<>\"") == std::string_view::npos &&
         text.find("=?") == std::string_view::npos;
}

std::string Encoded(char c) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  const auto byte = static_cast<unsigned char>(c);
  return {'=', kDigits[byte >> 4], kDigits[byte & 15]};
}

}  // namespace

std::string WithWordsEncoded(std::string_view value) {
  const size_t lastEnd = value.rfind("?=");
  if (lastEnd == std::string_view::npos) return std::string(value);
  std::string encoded;
  bool inWord = false;
  bool isWhole = false;
  for (size_t at = 0; at < value.size(); ++at) {
    const size_t start = inWord ? std::string_view::npos : StartOfQuotedWord(value, at);
    if (start != std::string_view::npos && start <= lastEnd) {
      encoded += value.substr(at, start - at);
      at = start - 1;
      inWord = true;
      isWhole = IsWholeWord(value.substr(start));
      continue;
    }
    if (value.substr(at).starts_with("?=")) inWord = false;
    const bool isLineEnd = value[at] == '\r' || value[at] == '\n';
    if (inWord && isWhole && isLineEnd) continue;
    if (inWord && (IsBeyondAscii(value[at]) || (isWhole && IsSpecial(value[at])))) {
      encoded += Encoded(value[at]);
    } else {
      encoded += value[at];
    }
  }
  return encoded;
}

}  // namespace tarn::archive::mail
