#include "archive/common/JsonWriter.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>

#include "Platform/Characters.h"
#include "Platform/Utf8.h"

namespace tarn::archive {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

void AppendEscape(std::string& line, char32_t character) {
  switch (character) {
    case '"':
      line += "\\\"";
      return;
    case '\\':
      line += "\\\\";
      return;
    case '\n':
      line += "\\n";
      return;
    case '\r':
      line += "\\r";
      return;
    case '\t':
      line += "\\t";
      return;
    default:
      std::array<char, 16> text;
      std::snprintf(text.data(), text.size(), "\\u%04x", static_cast<unsigned>(character));
      line += text.data();
  }
}

// Also what JSON takes and a terminal must not get, so that a line can be shown.
bool IsEscaped(char32_t character) {
  return character == '"' || character == '\\' || platform::MisleadsTerminals(character);
}

}  // namespace

void JsonWriter::name(std::string_view text) {
  separate();
  quote(text);
  line_ += ':';
  needsComma_ = false;
}

void JsonWriter::text(std::string_view value) {
  separate();
  quote(value);
  needsComma_ = true;
}

void JsonWriter::number(uint64_t value) {
  separate();
  line_ += std::to_string(value);
  needsComma_ = true;
}

void JsonWriter::integer(int64_t value) {
  separate();
  line_ += std::to_string(value);
  needsComma_ = true;
}

void JsonWriter::real(double value) {
  if (!std::isfinite(value)) return null();
  separate();
  std::array<char, 32> digits;
  const std::to_chars_result end =
      std::to_chars(digits.data(), digits.data() + digits.size(), value);
  line_.append(digits.data(), end.ptr);
  needsComma_ = true;
}

void JsonWriter::boolean(bool value) {
  separate();
  line_ += value ? "true" : "false";
  needsComma_ = true;
}

void JsonWriter::null() {
  separate();
  line_ += "null";
  needsComma_ = true;
}

void JsonWriter::clear() {
  line_.clear();
  needsComma_ = false;
}

void JsonWriter::open(char bracket) {
  separate();
  line_ += bracket;
  needsComma_ = false;
}

void JsonWriter::close(char bracket) {
  line_ += bracket;
  needsComma_ = true;
}

void JsonWriter::separate() {
  if (needsComma_) line_ += ',';
}

void JsonWriter::quote(std::string_view value) {
  line_ += '"';
  while (!value.empty()) {
    // What is taken as it is, in one piece.
    size_t plain = 0;
    platform::Character next;
    while (plain < value.size()) {
      next = platform::FirstCharacter(value.substr(plain));
      if (!next.isWellFormed || IsEscaped(next.codePoint)) break;
      plain += next.size;
    }
    line_ += value.substr(0, plain);
    value.remove_prefix(plain);
    if (value.empty()) break;
    if (next.isWellFormed) {
      AppendEscape(line_, next.codePoint);
    } else {
      line_ += kReplacement;
    }
    value.remove_prefix(next.size);
  }
  line_ += '"';
}

}  // namespace tarn::archive
