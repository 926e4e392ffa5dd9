// JsonLine.h - writes JSON, one value after the other.
#ifndef TARN_TESTS_ARCHIVE_JSONLINE_H
#define TARN_TESTS_ARCHIVE_JSONLINE_H

#include <cstdint>
#include <string>
#include <string_view>

namespace tarn::test {

class JsonLine {
 public:
  void open(char bracket);
  void close(char bracket);
  // The name of the next value, in an object.
  void name(std::string_view name);
  void text(std::string_view utf8);
  void number(int64_t value);
  void boolean(bool value);
  void null();

  const std::string& line() const { return line_; }

 private:
  void separate();
  void quote(std::string_view text);

  std::string line_;
  bool isFirst_ = true;  // in its object or array
};

}  // namespace tarn::test

#endif
