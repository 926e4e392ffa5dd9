#include "Common/ImageReferences.h"

#include "Common/ByteSearch.h"
#include "Common/InlineImages.h"
#include "Common/TextRewriter.h"

namespace tarn {
namespace {

// How many bytes of the literal, from `matched` on, the text begins with; all bytes of the shorter
// one must agree, else the answer is `mismatch`.
size_t MatchOn(std::string_view text, size_t matched, size_t mismatch) {
  const std::string_view rest = kImageDataTag.substr(matched);
  const std::string_view front = text.substr(0, rest.size());
  return rest.starts_with(front) ? matched + front.size() : mismatch;
}

std::string_view UpToNulFrom(std::string_view body, uint64_t offset) {
  const char* const end = body.data() + body.size();
  const char* const nul =
      offset < body.size() ? FindByte(body.data() + offset, end, '\0') : nullptr;
  return nul == nullptr ? body : body.substr(0, static_cast<size_t>(nul - body.data()));
}

}  // namespace

void LastTag::feed(std::string_view piece, size_t tag) {
  if (tag != std::string_view::npos) {
    matched_ = MatchOn(piece.substr(tag), 0, kMismatch);
  } else if (matched_ != kMismatch) {
    matched_ = MatchOn(piece, matched_, kMismatch);
  }
}

bool LastTag::isImageData(std::string_view following) const {
  return matched_ != kMismatch && MatchOn(following, matched_, kMismatch) == kImageDataTag.size();
}

ImageReferences::ImageReferences(std::string_view body, uint64_t searchOffset,
                                 std::string_view needle, std::string_view replacement)
    : body_(body),
      searched_(UpToNulFrom(body, searchOffset)),
      needle_(needle),
      replacement_(replacement),
      replacementTag_(replacement.rfind('<')),
      at_(searchOffset) {}

bool ImageReferences::next(uint64_t& start, uint64_t& end) {
  const char* const base = searched_.data();
  const char* const limit = base + searched_.size();
  for (;;) {
    const char* const found = FindBytes(base + at_, limit, needle_);
    if (found == nullptr) return false;
    const auto place = static_cast<uint64_t>(found - base);
    const uint64_t n = needle_.size();
    if (isInImageData(place)) {
      // As often as it takes to leave the place behind.
      at_ += ((place - at_) / n + 1) * n;
      continue;
    }

    const char* const quote = FindByte(found + n, limit, '"');
    if (quote == nullptr) return false;
    start = place;
    while (start > at_ && base[start - 1] != '"') --start;
    end = static_cast<uint64_t>(quote - base);

    const std::string_view kept = body_.substr(fed_, start - fed_);
    lastTag_.feed(kept, kept.rfind('<'));
    lastTag_.feed(replacement_, replacementTag_);
    fed_ = end;
    at_ = end;
    return true;
  }
}

// `fed_` never passes `at_`, nor the start of a reference: a place that stays is left behind by
// `at_`.
bool ImageReferences::isInImageData(uint64_t place) {
  const std::string_view piece = body_.substr(fed_, place + 1 - fed_);
  const size_t tag = piece.rfind('<');
  LastTag here = lastTag_;
  here.feed(piece, tag);
  const bool answer = here.isImageData(body_.substr(place + 1));
  if (answer) {
    lastTag_ = here;
    fed_ = place + 1;
  }
  return answer;
}

int32_t ReplaceImageReferences(SizedBytes& body, uint64_t searchOffset, std::string_view needle,
                               std::string_view replacement, uint64_t limit, uint64_t& count) {
  count = 0;
  const std::string_view old = body.view();
  if (needle.empty() || searchOffset > old.size()) return StatusOk;

  uint64_t found = 0;
  uint64_t newLength = old.size();
  uint64_t start = 0;
  uint64_t end = 0;
  uint64_t firstStart = 0;
  uint64_t firstEnd = 0;
  TextGrowth growth;
  ImageReferences counted(old, searchOffset, needle, replacement);
  for (; counted.next(start, end); ++found) {
    if (found == 0) {
      firstStart = start;
      firstEnd = end;
    }
    newLength -= end - start;
    if (replacement.size() > UINT64_MAX - newLength) return StatusOutOfMemory;
    newLength += replacement.size();
    growth.add(end - start, replacement.size());
  }
  if (found == 0) return StatusOk;
  if (newLength > limit) return StatusOutOfMemory;
  // A single reference moves the tail alone: images that stand in the order of their references
  // leave hardly any, however large the body has become by them.
  if (found == 1) {
    const uint64_t removed = firstEnd - firstStart;
    if (SpliceBytes(body, firstStart, removed, replacement.data(), replacement.size()) != 1) {
      return StatusOutOfMemory;
    }
  } else {
    TextRewriter rewriter;
    if (!rewriter.open(body, growth)) return StatusOutOfMemory;
    ImageReferences written(rewriter.old(), searchOffset, needle, replacement);
    while (written.next(start, end)) rewriter.replace(start, end, replacement);
    rewriter.close();
  }
  count = found;
  return StatusOk;
}

}  // namespace tarn
