#include "Common/ImageReferences.h"

#include "Common/ByteSearch.h"
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
  return body.substr(0, FindByte(body, '\0', offset));
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

std::optional<ImageReferences::Stretch> ImageReferences::next() {
  const uint64_t n = needle_.size();
  for (;;) {
    const uint64_t place = FindBytes(searched_, needle_, at_);
    if (place == std::string_view::npos) return std::nullopt;
    if (isInImageData(place)) {
      // As often as it takes to pass the place.
      at_ += ((place - at_) / n + 1) * n;
      continue;
    }

    const uint64_t end = FindByte(searched_, '"', place + n);
    if (end == std::string_view::npos) return std::nullopt;
    const uint64_t start = ReferenceStart(searched_, at_, place);
    const std::string_view kept = body_.substr(fed_, start - fed_);
    lastTag_.feed(kept, kept.rfind('<'));
    lastTag_.feed(replacement_, replacementTag_);
    fed_ = end;
    at_ = end;
    return Stretch{start, end};
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

Status ReplaceImageReferences(SizedBytes& body, const ImageReplacement& image, uint64_t& count) {
  const auto& [searchOffset, needle, replacement, limit] = image;
  count = 0;
  const std::string_view old = body.view();
  if (needle.empty() || searchOffset > old.size()) return StatusOk;

  uint64_t found = 0;
  uint64_t newLength = old.size();
  ImageReferences::Stretch first;
  TextGrowth growth;
  ImageReferences counted(old, searchOffset, needle, replacement);
  while (const std::optional<ImageReferences::Stretch> stretch = counted.next()) {
    if (found++ == 0) first = *stretch;
    const uint64_t removed = stretch->end - stretch->start;
    newLength -= removed;
    if (replacement.size() > UINT64_MAX - newLength) return StatusOutOfMemory;
    newLength += replacement.size();
    growth.add(removed, replacement.size());
  }
  if (found == 0) return StatusOk;
  if (newLength > limit) return StatusOutOfMemory;
  // A single reference moves the tail alone: images in the order of their references leave hardly
  // any, however large the body has become by them.
  if (found == 1) {
    if (!body.splice(first.start, first.end - first.start, replacement).ok()) {
      return StatusOutOfMemory;
    }
  } else {
    TextRewriter rewriter;
    if (!rewriter.open(body, growth)) return StatusOutOfMemory;
    ImageReferences written(rewriter.old(), searchOffset, needle, replacement);
    while (const std::optional<ImageReferences::Stretch> stretch = written.next()) {
      rewriter.replace(stretch->start, stretch->end, replacement);
    }
    rewriter.close();
  }
  count = found;
  return StatusOk;
}

}  // namespace tarn
