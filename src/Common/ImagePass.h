// ImagePass.h - all images of one body, put into it together.
//
// The result is that of replacing one image's references after the other (ImageReferences.h), in
// the text that the images before have left. But that text is not written each time: it would be
// read and written as often as there are images. What is kept is the body as it was, and which
// stretches of it give way to which replacement:
//
//   body   ...src="cid:a@x" width=3...src="cid:b@x"...
//   edits          [--0---]               [--1---]        each ends at a closing quote
//
// Between two quotes there is at most one edit, and it reaches to the second: so long as neither
// needles nor replacements hold a quote, the quotes of the body are those of the text, and an
// occurrence of a needle lies in the body outside of all edits, or touches a replacement. The
// latter cannot be for most needles: no data: URL holds "cid:". Where it can be, and where a quote
// or a "<" comes in by a name, the text is written after all, becomes the body, and is searched.
//
// Searches of the body go through a TextIndex, so that thousands of images with a reference each
// take little more time for an image than a few do.
#ifndef TARN_COMMON_IMAGEPASS_H
#define TARN_COMMON_IMAGEPASS_H

#include <bitset>
#include <functional>
#include <map>
#include <optional>

#include "Common/KernelAllocator.h"
#include "Common/RunFilter.h"
#include "Common/SearchBudget.h"
#include "Common/TextIndex.h"

namespace tarn {

class ImagePass {
 public:
  struct Limits {
    uint64_t text;   // bytes that the text may grow to
    uint64_t edits;  // more than so many are written at once
    TextIndex::Limits index;
  };

  // For the images of a body in a file of so many bytes.
  static Limits LimitsFor(uint64_t fileSize);

  // The body belongs to the caller, as does the budget, to which every search is charged. Until
  // finish() the body is without some or all of the images.
  ImagePass(SizedBytes& body, Limits limits, SearchBudget& budget);
  ImagePass(const ImagePass&) = delete;
  ImagePass& operator=(const ImagePass&) = delete;

  // The place of the needle's first occurrence in the text, for replace(); kNoPlace when there is
  // none. An empty needle occurs nowhere. StatusOk, or StatusOutOfMemory.
  Status find(std::string_view needle, uint64_t& place);

  enum class Kind { DataUrl, Name };

  // Replaces the references from the place on that the last find() has given for this needle, whose
  // bytes are still where they were. `count` receives their number.
  //   StatusOk
  //   StatusOutOfMemory  without memory, or when the text would outgrow its limit: the text is as
  //                      it was, and the count 0
  Status replace(uint64_t place, std::string_view needle, SizedBytes replacement, Kind kind,
                 uint64_t& count);

  // Forgets the images: the body is about to be another one.
  void discard();

  // Writes the text. StatusOk; StatusOutOfMemory, and then the body is as it was.
  Status finish();

 private:
  struct Edit {
    uint64_t start;
    uint64_t replacement;  // its number
  };
  // By the place of the closing quote, where the stretch ends.
  using Edits =
      std::map<uint64_t, Edit, std::less<>, KernelAllocator<std::pair<const uint64_t, Edit>>>;
  class Collector;

  std::string_view base() const { return index_.text(); }
  std::string_view replacementOf(const Edit& edit) const {
    return replacements_[edit.replacement].view();
  }

  void prepare();
  bool mayTouchReplacement(std::string_view needle);
  bool skipEdits(uint64_t place, uint64_t length, uint64_t& next) const;
  uint64_t firstNul(uint64_t place);
  Status replaceInText(uint64_t place, std::string_view needle, std::string_view replacement,
                       uint64_t& count);

  SizedBytes& body_;
  Limits limits_;
  SearchBudget& budget_;
  bool isReady_ = false;  // what follows is about the body as it is
  TextIndex index_;       // of the body
  Edits edits_;
  KernelVector<SizedBytes> replacements_;
  uint64_t length_ = 0;  // of the text
  std::optional<Occurrences> found_;

  // What the replacements are made of: some are data: URLs, the others' bytes are in names_, a
  // quote after each. An edit that has no quote before it lets a needle reach from the body into
  // its replacement: of each such place, the two bytes where they meet.
  bool hasUrl_ = false;
  KernelVector<char> names_;
  RunFilter nameRuns_;
  std::bitset<65536> meetings_;

  // A stretch of the body without a NUL, which ends at one or at the end.
  uint64_t cleanFrom_ = 0;
  uint64_t cleanEnd_ = 0;
};

}  // namespace tarn

#endif
