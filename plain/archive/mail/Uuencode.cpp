#include "archive/mail/Uuencode.h"

#include <algorithm>

namespace tarn::archive::mail {
namespace {

// Takes the next line, with its line end, off the front.
std::string_view TakeLine(std::string_view& text) {
  const size_t newline = text.find('\n');
  const size_t length = newline == std::string_view::npos ? text.size() : newline + 1;
  const std::string_view line = text.substr(0, length);
  text.remove_prefix(length);
  return line;
}

std::string_view WithoutEnd(std::string_view line) {
  while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) line.remove_suffix(1);
  return line;
}

// The name of a line "begin 644 name"; empty for any other line.
std::string_view NameOf(std::string_view line) {
  constexpr std::string_view kBegin = "begin ";
  if (!line.starts_with(kBegin)) return {};
  line.remove_prefix(kBegin.size());
  const size_t digits = std::min(line.find_first_not_of("01234567"), line.size());
  if (digits < 3 || digits > 4 || digits == line.size() || line[digits] != ' ') return {};
  line.remove_prefix(digits + 1);
  while (!line.empty() && line.back() == ' ') line.remove_suffix(1);
  return line;
}

size_t Value(char c) { return static_cast<size_t>(c - ' ') & 0x3F; }

// Whether a line has the characters for the count that it begins with. Mail programs cut blanks at
// its end, and some add a character of their own.
bool IsEncodedLine(std::string_view line) {
  if (line.empty() || line[0] <= ' ' || line[0] > 'M') return false;
  const size_t characters = (Value(line[0]) + 2) / 3 * 4;
  if (line.size() - 1 > characters + 2) return false;
  return std::all_of(line.begin(), line.end(), [](char c) { return c >= ' ' && c <= '`'; });
}

bool IsLastLine(std::string_view line) { return line.empty() || line == "`" || line == " "; }

// The encoded lines at the front of a text that come before "end"; takes them and it. False, with
// nothing taken, where there is no such end.
bool TakeFile(std::string_view& text, std::string_view& lines) {
  std::string_view rest = text;
  for (;;) {
    if (rest.empty()) return false;
    const size_t length = text.size() - rest.size();
    const std::string_view line = WithoutEnd(TakeLine(rest));
    if (line == "end") {
      lines = text.substr(0, length);
      text = rest;
      return true;
    }
    if (!IsEncodedLine(line) && !IsLastLine(line)) return false;
  }
}

}  // namespace

UuencodedText SplitUuencode(std::string_view text) {
  UuencodedText split;
  while (!text.empty()) {
    const std::string_view line = TakeLine(text);
    UuencodedFile file{NameOf(WithoutEnd(line)), {}};
    if (!file.name.empty() && TakeFile(text, file.lines)) {
      split.files.push_back(file);
    } else {
      split.text += line;
    }
  }
  return split;
}

std::string DecodeUuencode(std::string_view lines) {
  std::string bytes;
  while (!lines.empty()) {
    const std::string_view line = WithoutEnd(TakeLine(lines));
    if (IsLastLine(line)) continue;
    const size_t end = bytes.size() + Value(line[0]);
    const auto at = [&](size_t index) { return index < line.size() ? Value(line[index]) : 0; };
    for (size_t i = 1; bytes.size() < end; i += 4) {
      const size_t bits = at(i) << 18 | at(i + 1) << 12 | at(i + 2) << 6 | at(i + 3);
      bytes += static_cast<char>(bits >> 16 & 0xFF);
      bytes += static_cast<char>(bits >> 8 & 0xFF);
      bytes += static_cast<char>(bits & 0xFF);
    }
    bytes.resize(end);
  }
  return bytes;
}

}  // namespace tarn::archive::mail
