// ImageReferences.h - finds the references that an HTML body makes to one image, and replaces them.
//
// A reference is the quoted value around an occurrence of the needle, found by bytes, not by HTML's
// rules. With `at` as the place where the search goes on, `n` as the needle's length and `p` as the
// needle's next occurrence at or after `at`:
//
//   <img src="  x cid:needle y  ">      q  after the nearest double quote before p, or `at`
//        ^at  ^q  ^p           ^close   close  the first double quote at or after p + n
//
//   - The bytes [q, close) are replaced, and `at` moves to the quote after the replacement.
//   - Without a closing quote the search is over.
//   - Where the nearest "<" at or before p begins "<v:imagedata" (in this case), the occurrence
//     stays. `at` then moves by n, not to the end of the occurrence: it may meet the same one
//     again, and may come to lie inside it.
//   - The nearest "<" is looked for in the text as it is by then, replacements included: a file
//     name that holds a "<" decides on what comes after it.
//   - The first NUL at or after the first `at` ends the text for the forward searches.
//
// The text as it is by then is never put together for this: before `at` it is known by its last "<"
// alone, after that it is as it was. So each byte is looked at a bounded number of times, and the
// result is written once.
#ifndef TARN_COMMON_IMAGEREFERENCES_H
#define TARN_COMMON_IMAGEREFERENCES_H

#include <optional>

#include "Internal/Tarnclasses_.h"

namespace tarn {

// The occurrences inside of such a tag stay.
inline constexpr std::string_view kImageDataTag = "<v:imagedata";

// Follows a text that comes in pieces and knows whether its last tag is a v:imagedata tag.
class LastTag {
 public:
  // The next piece; `tag` is the place of its last "<", or npos.
  void feed(std::string_view piece, size_t tag);
  // Would the last tag be a v:imagedata tag if this came next?
  bool isImageData(std::string_view following) const;

 private:
  static constexpr size_t kMismatch = SIZE_MAX;

  size_t matched_ = kMismatch;  // bytes of "<v:imagedata" seen since the last "<"
};

// Where the reference around an occurrence at `place` begins: after the nearest quote before it, if
// that is at or after `at`, else at `at`.
inline uint64_t ReferenceStart(std::string_view text, uint64_t at, uint64_t place) {
  while (place > at && text[place - 1] != '"') --place;
  return place;
}

class ImageReferences {
 public:
  // The texts belong to the caller and live as long as the object. The needle is not empty.
  ImageReferences(std::string_view body, uint64_t searchOffset, std::string_view needle,
                  std::string_view replacement);

  // A stretch [start, end) of the body that is to be replaced.
  struct Stretch {
    uint64_t start = 0;
    uint64_t end = 0;
  };

  // The next one, before which everything is settled; none when there is no more.
  std::optional<Stretch> next();

 private:
  bool isInImageData(uint64_t place);

  std::string_view body_;
  std::string_view searched_;  // the body up to the NUL that ends the searches
  std::string_view needle_;
  std::string_view replacement_;
  size_t replacementTag_;  // its last "<"
  uint64_t at_;            // all places are in the body as it was
  uint64_t fed_ = 0;       // how far the body has gone into lastTag_
  LastTag lastTag_;
};

// What is replaced by what.
struct ImageReplacement {
  uint64_t searchOffset = 0;
  std::string_view needle;  // one that is empty has no references
  std::string_view replacement;
  uint64_t limit = UINT64_MAX;  // how long the body may become
};

// Replaces all references of the body, in its own block. `count` receives their number.
//   StatusOk
//   StatusOutOfMemory  without memory, or when the body would become longer than the limit: it is
//                      as it was, and the count 0
Status ReplaceImageReferences(SizedBytes& body, const ImageReplacement& image, uint64_t& count);

}  // namespace tarn

#endif
