#include "eml/HeaderMemo.h"

#include "Common/ByteSearch.h"
#include "eml/HeaderSearch.h"

namespace tarn {

const char* NextHit::within(const char* end, size_t length) const {
  if (hit_ >= end || static_cast<size_t>(end - hit_) < length) return nullptr;
  return hit_;
}

const char* HeaderMemo::find(NextHit& memo, std::string_view needle, const char* start,
                             const char* end) {
  if (!memo.covers(start)) {
    memo.remember(start, FindBytes(start, fileEnd_, needle), fileEnd_);
  }
  return memo.within(end, needle.size());
}

const char* HeaderMemo::headerEnd(const char* start, const char* end) {
  if (const char* const hit = find(crLfCrLf_, "\r\n\r\n", start, end)) return hit + 4;
  if (const char* const hit = find(lfLf_, "\n\n", start, end)) return hit + 2;
  if (const char* const hit = find(crLf_, "\r\n", start, end)) return hit + 2;
  return end;
}

const char* HeaderMemo::contentTypeLine(const char* start, const char* end) {
  constexpr std::string_view kName = "Content-Type:";
  // The start of a stretch counts as the start of a line, wherever it is; so it is no hit for
  // stretches that start in front of it.
  if (StartsWithIgnoringCase(start, end, kName)) return start;
  if (!contentType_.covers(start)) {
    contentType_.remember(start, FindHeaderLine(start, fileEnd_, kName), fileEnd_);
  }
  return contentType_.within(end, kName.size());
}

}  // namespace tarn
