#include "eml/HeaderMemo.h"

#include "Common/ByteSearch.h"
#include "eml/HeaderSearch.h"

namespace tarn {

size_t HeaderMemo::NextHit::within(size_t end, size_t length) const {
  return hit < end && end - hit >= length ? hit : npos;
}

size_t HeaderMemo::find(NextHit& memo, std::string_view needle, size_t start, size_t end) {
  if (!memo.covers(start)) memo = {start, FindBytes(file_, needle, start)};
  return memo.within(end, needle.size());
}

size_t HeaderMemo::headerEnd(size_t start, size_t end) {
  if (const size_t hit = find(crLfCrLf_, "\r\n\r\n", start, end); hit != npos) return hit + 4;
  if (const size_t hit = find(lfLf_, "\n\n", start, end); hit != npos) return hit + 2;
  if (const size_t hit = find(crLf_, "\r\n", start, end); hit != npos) return hit + 2;
  return end;
}

size_t HeaderMemo::contentTypeLine(size_t start, size_t end) {
  constexpr std::string_view kName = "Content-Type:";
  // The start of a stretch counts as the start of a line, wherever it is; so it is no hit for
  // stretches that start before it.
  if (StartsWithIgnoringCase(file_.substr(start, end - start), kName)) return start;
  if (!contentType_.covers(start)) {
    const size_t line = FindHeaderLine(file_.substr(start), kName);
    contentType_ = {start, line != npos ? start + line : npos};
  }
  return contentType_.within(end, kName.size());
}

}  // namespace tarn
