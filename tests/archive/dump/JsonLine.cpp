#include "JsonLine.h"

#include <array>
#include <cstdio>

namespace tarn::test {

void JsonLine::separate() {
  if (!isFirst_) line_ += ',';
  isFirst_ = false;
}

void JsonLine::open(char bracket) {
  separate();
  line_ += bracket;
  isFirst_ = true;
}

void JsonLine::close(char bracket) {
  line_ += bracket;
  isFirst_ = false;
}

void JsonLine::name(std::string_view name) {
  separate();
  quote(name);
  line_ += ':';
  isFirst_ = true;
}

void JsonLine::text(std::string_view utf8) {
  separate();
  quote(utf8);
}

void JsonLine::number(int64_t value) {
  separate();
  line_ += std::to_string(value);
}

void JsonLine::boolean(bool value) {
  separate();
  line_ += value ? "true" : "false";
}

void JsonLine::null() {
  separate();
  line_ += "null";
}

void JsonLine::quote(std::string_view text) {
  line_ += '"';
  for (const char c : text) {
    if (c == '"' || c == '\\') {
      line_ += '\\';
      line_ += c;
    } else if (static_cast<unsigned char>(c) < ' ') {
      std::array<char, 8> escape;
      std::snprintf(escape.data(), escape.size(), "\\u%04x", static_cast<unsigned>(c));
      line_ += escape.data();
    } else {
      line_ += c;
    }
  }
  line_ += '"';
}

}  // namespace tarn::test
