// AttachmentCalls.h - the two attachment calls, with what must hold after each.
#ifndef TARN_FUZZ_HOST_ATTACHMENTCALLS_H
#define TARN_FUZZ_HOST_ATTACHMENTCALLS_H

#include <cstdint>
#include <memory>
#include <string>

#include "TarnPst.h"
#include "host/Workplace.h"

namespace tarn::fuzz {

// The status. A list that was given is looked through and freed.
int32_t ListAttachments(const char16_t* path, int32_t message);

// While it lives, blocks are noted that the items of a freed list own. A call that failed may leave
// those, and they are freed then; anything else that it left ends the process.
class FailingListCheck {
 public:
  FailingListCheck();
  FailingListCheck(const FailingListCheck&) = delete;
  FailingListCheck& operator=(const FailingListCheck&) = delete;
  ~FailingListCheck();

  void freeWhatItemsOwn() const;
  uint64_t peakBytes() const;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

struct Extracted {
  int32_t status = 0;
  bool hasBytes = false;
  std::string bytes;
};

Extracted ExtractToMemory(const char16_t* path, int32_t message, int32_t number);
// Whether there was any output cannot be told from an attachment without bytes.
Extracted ExtractToFile(const Workplace& place, const char16_t* output, int32_t message,
                        int32_t number);

}  // namespace tarn::fuzz

#endif
