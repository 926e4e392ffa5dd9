// SearchBudget.h - how many bytes the searches of one kind may pass over in one read.
//
// Two kinds of search are not bounded by the size of the file: each level of nested multiparts
// looks for its own delimiter in all that is nested in it, and each image looks for its name in the
// whole body. A file of a few megabytes can so ask for days of work. Every byte passed over is
// therefore counted, and a read that has spent a budget ends with
// StatusOutOfMemory.
//
// A budget is the sum of a fixed part and a part in proportion to the file. What the mail programs
// of this world write stays far below: ten levels of any size, hundreds of levels of a few
// megabytes, and tens of thousands of images (ImagePass.h) are within them. Images whose names
// could be found in the data of other images are searched in a body that grows by each of them; of
// those, five hundred of any size are.
#ifndef TARN_COMMON_SEARCHBUDGET_H
#define TARN_COMMON_SEARCHBUDGET_H

#include <cstdint>

namespace tarn {

class SearchBudget {
 public:
  explicit SearchBudget(uint64_t bytes) : left_(bytes) {}

  static SearchBudget ForDelimiters(uint64_t fileSize) { return {uint64_t{1} << 28, 64, fileSize}; }
  static SearchBudget ForImages(uint64_t fileSize) { return {uint64_t{1} << 32, 1024, fileSize}; }

  void spend(uint64_t bytes) { left_ = bytes < left_ ? left_ - bytes : 0; }
  bool isSpent() const { return left_ == 0; }

 private:
  SearchBudget(uint64_t fixed, uint64_t perFileByte, uint64_t fileSize)
      : left_(fileSize > (UINT64_MAX - fixed) / perFileByte ? UINT64_MAX
                                                            : fixed + fileSize * perFileByte) {}

  uint64_t left_;
};

}  // namespace tarn

#endif
