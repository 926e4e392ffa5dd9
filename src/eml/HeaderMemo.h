// HeaderMemo.h - the header searches of a walk through nested multiparts, each byte read once.
//
// A walk asks at each level where the header block of a part ends and whether a Content-Type line
// is in the part. A search that finds nothing reads the whole part, and a part holds all parts
// nested in it: five hundred levels would read the file five hundred times. But a walk only ever
// asks from places further on, so that the last hit of each search, looked for up to the end of the
// file, answers all questions up to that hit.
//
// Answers are those of FindHeaderEnd and FindHeaderLine for any stretch [start, end) of the file,
// as positions in the file. Stretches that start before earlier ones are searched again. Nothing is
// owned, allocated or changed.
#ifndef TARN_EML_HEADERMEMO_H
#define TARN_EML_HEADERMEMO_H

#include <cstddef>
#include <string_view>

namespace tarn {

class HeaderMemo {
 public:
  explicit HeaderMemo(std::string_view file) : file_(file) {}

  // As FindHeaderEnd.
  size_t headerEnd(size_t start, size_t end);
  // As FindHeaderLine for "Content-Type:".
  size_t contentTypeLine(size_t start, size_t end);

 private:
  // The next hit of one search from the last place asked about; npos for "none in the file".
  struct NextHit {
    size_t from = std::string_view::npos;
    size_t hit = 0;

    // Does the hit answer a search from `start`?
    bool covers(size_t start) const { return from <= start && start <= hit; }
    // The hit if it is before `end` with all its bytes, else npos.
    size_t within(size_t end, size_t length) const;
  };

  size_t find(NextHit& memo, std::string_view needle, size_t start, size_t end);

  std::string_view file_;
  NextHit crLfCrLf_;
  NextHit lfLf_;
  NextHit crLf_;
  NextHit contentType_;
};

}  // namespace tarn

#endif
