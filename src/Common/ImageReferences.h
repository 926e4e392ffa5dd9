// ImageReferences.h - finds the references that an HTML body makes to one image, and replaces them.
//
// A reference is the quoted value around an occurrence of the needle, found by bytes, not by HTML's
// rules. With `at` as the place where the search goes on, `n` as the needle's length and `p` as the
// needle's next occurrence at or after `at`:
//
//   <img src="  x cid:needle y  ">      q  behind the nearest double quote in front of p, or `at`
//        ^at  ^q  ^p           ^close   close  the first double quote at or after p + n
//
//   - The bytes [q, close) are replaced, and `at` moves behind the replacement, to the quote.
//   - Without a closing quote the search is over.
//   - Where the nearest "<" at or in front of p begins "<v:imagedata" (in this case), the
//   occurrence
//     stays. `at` then moves by n, not to behind p: it may meet the same occurrence again, and may
//     come to lie inside it.
//   - The nearest "<" is looked for in the text as it is by then, replacements included: a file
//     name that holds a "<" decides on what stands behind it.
//   - The first NUL at or after the first `at` ends the text for the forward searches.
//
// The text as it is by then is never put together for this: in front of `at` it is known by its
// last
// "<" alone, behind it is as it was. So each byte is looked at a bounded number of times, and the
// result is written once.
#ifndef TARN_COMMON_IMAGEREFERENCES_H
#define TARN_COMMON_IMAGEREFERENCES_H

#include "Internal/Tarnclasses_.h"

namespace tarn {

// The occurrences inside of such a tag stay.
inline constexpr std::string_view kImageDataTag = "<v:imagedata";

// Follows a text that comes in pieces and knows whether its last tag is a v:imagedata tag.
class LastTag {
 public:
  // The next piece; `tag` is where its last "<" stands, or npos.
  void feed(std::string_view piece, size_t tag);
  // Would the last tag be a v:imagedata tag if this came next?
  bool isImageData(std::string_view following) const;

 private:
  static constexpr size_t kMismatch = SIZE_MAX;

  size_t matched_ = kMismatch;  // bytes of "<v:imagedata" seen since the last "<"
};

class ImageReferences {
 public:
  // The texts belong to the caller and live as long as the object. The needle is not empty.
  ImageReferences(std::string_view body, uint64_t searchOffset, std::string_view needle,
                  std::string_view replacement);

  // The next stretch [start, end) of the body to be replaced, in front of which everything is
  // settled; false when there is no more.
  bool next(uint64_t& start, uint64_t& end);

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

// Replaces all references of the body from `searchOffset` on, in the body's own block. `count`
// receives their number. 1; -1 without memory or when the body would become longer than `limit`,
// and then it is as it was and the count 0. An empty needle has no references.
int32_t ReplaceImageReferences(SizedBytes& body, uint64_t searchOffset, std::string_view needle,
                               std::string_view replacement, uint64_t limit, uint64_t& count);

}  // namespace tarn

#endif
