#include "archive/text/RtfTokens.h"

#include <algorithm>
#include <limits>

#include "archive/text/AsciiText.h"
#include "rtf/FindAnyByte.h"

namespace tarn::archive {
namespace {

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

int HexDigit(char c) {
  if (IsDigit(c)) return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

}  // namespace

RtfToken RtfTokens::next() {
  while (!rest_.empty()) {
    const char first = rest_.front();
    if (first == '\r' || first == '\n' || first == '\0') {
      rest_.remove_prefix(1);
      continue;
    }
    if (first == '\\') {
      rest_.remove_prefix(1);
      return nextAfterBackslash();
    }
    if (first == '{' || first == '}') {
      rest_.remove_prefix(1);
      return {first == '{' ? RtfTokenKind::GroupStart : RtfTokenKind::GroupEnd, {}, {}, first};
    }
    const size_t size = FindAnyByte<'\\', '{', '}', '\r', '\n', '\0'>(rest_);
    const RtfToken token{RtfTokenKind::Text, rest_.substr(0, size), {}, '\0'};
    rest_.remove_prefix(size);
    return token;
  }
  return {};
}

RtfToken RtfTokens::nextAfterBackslash() {
  if (rest_.empty()) return {};
  const char first = rest_.front();
  if (IsLetter(first)) return takeWord();
  rest_.remove_prefix(1);
  if (first != '\'') return {RtfTokenKind::Symbol, {}, {}, first};
  // Without two digits it is a symbol of no meaning, and what follows is text.
  if (rest_.size() < 2) return {RtfTokenKind::Symbol, {}, {}, first};
  const int high = HexDigit(rest_[0]);
  const int low = HexDigit(rest_[1]);
  if (high < 0 || low < 0) return {RtfTokenKind::Symbol, {}, {}, first};
  rest_.remove_prefix(2);
  return {RtfTokenKind::Byte, {}, {}, static_cast<char>(high * 16 + low)};
}

RtfToken RtfTokens::takeWord() {
  size_t size = 1;
  while (size < rest_.size() && IsLetter(rest_[size])) ++size;
  RtfToken token{RtfTokenKind::Word, rest_.substr(0, size), {}, '\0'};
  rest_.remove_prefix(size);
  token.number = takeNumber();
  if (rest_.starts_with(' ')) rest_.remove_prefix(1);
  if (token.text == "bin" && token.number.value_or(0) > 0) {
    rest_.remove_prefix(std::min(rest_.size(), static_cast<size_t>(*token.number)));
  }
  return token;
}

// Numbers that are too large are the largest.
std::optional<int32_t> RtfTokens::takeNumber() {
  const bool isNegative = rest_.size() > 1 && rest_[0] == '-' && IsDigit(rest_[1]);
  size_t at = isNegative ? 1 : 0;
  if (at >= rest_.size() || !IsDigit(rest_[at])) return std::nullopt;
  constexpr int64_t kMost = std::numeric_limits<int32_t>::max();
  int64_t number = 0;
  for (; at < rest_.size() && IsDigit(rest_[at]); ++at) {
    number = std::min(kMost, number * 10 + (rest_[at] - '0'));
  }
  rest_.remove_prefix(at);
  return static_cast<int32_t>(isNegative ? -number : number);
}

}  // namespace tarn::archive
