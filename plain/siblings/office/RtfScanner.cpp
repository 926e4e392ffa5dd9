#include "siblings/office/RtfScanner.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace tarn::pages {

namespace {

bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// A number too large for its type is the largest one.
int32_t NumberOf(std::string_view digits) {
  int32_t number = 0;
  const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  if (result.ec == std::errc::result_out_of_range) {
    return digits.front() == '-' ? INT32_MIN : INT32_MAX;
  }
  return number;
}

}  // namespace

RtfToken RtfScanner::take(RtfTokenKind kind, size_t length) {
  RtfToken token;
  token.kind = kind;
  token.bytes = document_.substr(at_, length);
  at_ += token.bytes.size();
  return token;
}

std::optional<RtfToken> RtfScanner::next() {
  if (at_ == document_.size()) return std::nullopt;
  if (binaryLength_ > 0) {
    const size_t length = std::exchange(binaryLength_, 0);
    return take(RtfTokenKind::Binary, length);
  }
  const char c = document_[at_];
  if (c == '{') return take(RtfTokenKind::GroupStart, 1);
  if (c == '}') return take(RtfTokenKind::GroupEnd, 1);
  if (c != '\\') return text();
  if (at_ + 1 < document_.size() && IsLetter(document_[at_ + 1])) return word();
  return symbol();
}

RtfToken RtfScanner::word() {
  size_t end = at_ + 1;
  while (end < document_.size() && IsLetter(document_[end])) ++end;
  const size_t nameEnd = end;
  if (end + 1 < document_.size() && document_[end] == '-' && IsDigit(document_[end + 1])) ++end;
  while (end < document_.size() && IsDigit(document_[end])) ++end;
  const std::string_view name = document_.substr(at_ + 1, nameEnd - at_ - 1);
  std::optional<int32_t> number;
  if (end > nameEnd) number = NumberOf(document_.substr(nameEnd, end - nameEnd));
  if (end < document_.size() && document_[end] == ' ') ++end;

  RtfToken token = take(RtfTokenKind::Word, end - at_);
  token.name = name;
  token.number = number;
  if (name == "bin") {
    binaryLength_ = static_cast<size_t>(std::max(number.value_or(0), 0));
    token.whole = binaryLength_ <= document_.size() - at_;
  }
  return token;
}

RtfToken RtfScanner::symbol() {
  const char symbol = at_ + 1 < document_.size() ? document_[at_ + 1] : '\0';
  const size_t length = symbol == '\'' ? 4 : 2;
  RtfToken token = take(RtfTokenKind::Symbol, length);
  token.whole = token.bytes.size() == length;
  token.symbol = symbol;
  if (symbol == '\'' && token.whole) {
    uint32_t byte = 0;
    const char* digits = token.bytes.data() + 2;
    if (std::from_chars(digits, digits + 2, byte, 16).ptr == digits + 2) {
      token.number = static_cast<int32_t>(byte);
    }
  }
  return token;
}

RtfToken RtfScanner::text() {
  const size_t end = document_.find_first_of("{}\\", at_);
  return take(RtfTokenKind::Text, std::min(end, document_.size()) - at_);
}

}  // namespace tarn::pages
