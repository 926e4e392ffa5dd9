// Siblings.h - the sibling filters of the fuzzing host: they read all they are given, the file by
// name included, and answer as they were told to.
#ifndef TARN_FUZZ_HOST_SIBLINGS_H
#define TARN_FUZZ_HOST_SIBLINGS_H

#include <cstdint>

#include "TarnPst.h"

namespace tarn::fuzz {

// What a sibling throws when it is told to.
struct SiblingThrow {};

class Siblings {
 public:
  // Bits of `manner`: 0 to 2, below 4 success, 4 and 5 refusals, 6 the answer 2, 7 an exception;
  // 3, no pages; 4, extreme sizes; 5, no resolution; 6 and 7, another format than it was called
  // with.
  uint8_t manner = 0;
  // Whether something is to be kept, and with which format.
  bool keeps = false;
  int32_t keptFormat = 7;

  // What the calls since the last start found.
  void start(bool readsBeyondMark);
  bool wasCalled() const { return calls_ != 0; }
  // Of the last call; all bytes of the document as one number. False when there was none to read.
  bool sawDocument() const { return sawDocument_; }
  uint64_t document() const { return document_; }
  int32_t result() const { return result_; }
  int32_t pageCount() const { return (manner & 8) != 0 ? 0 : 3; }

  void offer(FilterInfoContext& context) const;
  void offer(FilterLoadContext& context) const;

  // Called by the functions that were offered.
  int32_t answerFile(const char16_t* path, void* info, const void* options);
  int32_t answerMemory(const void* data, uint64_t size, void* info, const void* options);

 private:
  int32_t answer(void* info, const void* options);

  bool readsBeyondMark_ = false;
  uint64_t calls_ = 0;
  bool sawDocument_ = false;
  uint64_t document_ = 0;
  int32_t result_ = 0;
};

// The siblings that the offered functions speak for.
Siblings& TheSiblings();

}  // namespace tarn::fuzz

#endif
