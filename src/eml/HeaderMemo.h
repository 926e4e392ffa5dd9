// HeaderMemo.h - the header searches of a walk through nested multiparts, each byte read once.
//
// A walk asks at each level where the header block of a part ends and whether a Content-Type line
// is in the part. A search that finds nothing reads the whole part, and a part holds all parts
// nested in it: five hundred levels would read the file five hundred times. But a walk only ever
// asks from places further on, so that the last hit of each search, looked for up to the end of the
// file, answers all questions up to that hit.
//
// Answers are those of FindHeaderEnd and FindHeaderLine for any stretch of the file. Stretches that
// start in front of earlier ones are searched again. Nothing is owned, allocated or changed.
#ifndef TARN_EML_HEADERMEMO_H
#define TARN_EML_HEADERMEMO_H

#include <string_view>

namespace tarn {

// The next hit of one search from the last place asked about.
class NextHit {
 public:
  // Does the remembered hit answer a search from `start`?
  bool covers(const char* start) const {
    return from_ != nullptr && from_ <= start && start <= hit_;
  }
  // `hit` may be null for "none up to fileEnd".
  void remember(const char* start, const char* hit, const char* fileEnd) {
    from_ = start;
    hit_ = hit != nullptr ? hit : fileEnd;
  }
  // The hit if it lies in front of `end` with all its `length` bytes, else null.
  const char* within(const char* end, size_t length) const;

 private:
  const char* from_ = nullptr;
  const char* hit_ = nullptr;
};

class HeaderMemo {
 public:
  explicit HeaderMemo(const char* fileEnd) : fileEnd_(fileEnd) {}

  // As FindHeaderEnd.
  const char* headerEnd(const char* start, const char* end);
  // As FindHeaderLine for "Content-Type:".
  const char* contentTypeLine(const char* start, const char* end);

 private:
  const char* find(NextHit& memo, std::string_view needle, const char* start, const char* end);

  const char* fileEnd_;
  NextHit crLfCrLf_;
  NextHit lfLf_;
  NextHit crLf_;
  NextHit contentType_;
};

}  // namespace tarn

#endif
