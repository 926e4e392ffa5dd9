// JsonWriter.h - JSON on one line, always valid UTF-8. What controls a terminal, breaks lines or
// turns the direction of writing is escaped.
#ifndef TARN_ARCHIVE_JSONWRITER_H
#define TARN_ARCHIVE_JSONWRITER_H

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace tarn::archive {

// Writes what it is told to, in that order; commas are its own. Whoever uses it closes what it
// opens.
class JsonWriter {
 public:
  void openObject() { open('{'); }
  void closeObject() { close('}'); }
  void openArray() { open('['); }
  void closeArray() { close(']'); }

  // The name of the next value.
  void name(std::string_view text);

  // What is no UTF-8 becomes U+FFFD.
  void text(std::string_view value);
  void number(uint64_t value);
  void integer(int64_t value);
  void real(double value);  // null where it is no number
  void boolean(bool value);
  void null();

  std::string_view line() const { return line_; }

  // What has come so far, which is no longer part of line(): of objects that are too large for one
  // piece.
  std::string take() { return std::exchange(line_, {}); }

  void clear();

 private:
  void open(char bracket);
  void close(char bracket);
  void separate();
  void quote(std::string_view value);

  std::string line_;
  bool needsComma_ = false;
};

}  // namespace tarn::archive

#endif
