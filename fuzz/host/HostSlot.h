// HostSlot.h - the slot that the host keeps for its file, with all that a host may have put there.
#ifndef TARN_FUZZ_HOST_HOSTSLOT_H
#define TARN_FUZZ_HOST_HOSTSLOT_H

#include <cstdint>

#include "TarnPst.h"

namespace tarn::fuzz {

class HostSlot {
 public:
  HostSlot() { slot_.defaultFormat = kDefaultFormat; }
  HostSlot(const HostSlot&) = delete;
  HostSlot& operator=(const HostSlot&) = delete;
  ~HostSlot() { clear(); }

  FilterDataSlot* get() { return &slot_; }
  FilterDataSlot copy() const { return slot_; }

  // The filter's record, wherever it lies; null without one.
  void* record() const;
  // Ends the record through fltFreeData and takes it out; a list stays, without it.
  void endRecord();
  // Ends the record, frees the list and what the host put there.
  void clear();

  // A foreign item of 1 to 32 bytes. These three do nothing unless the slot is empty.
  void putItem(uint8_t size);
  // A list with room for eight entries that says it has so many, 0 to 7; bit 3 puts a foreign item
  // first.
  void putList(uint8_t count);
  // A list with another mark, a count beyond its size, or another size than the slot says.
  void putBadList(uint8_t kind);

 private:
  static constexpr int32_t kDefaultFormat = 4242;

  FilterDataList* list() const;
  void** recordPlace();

  FilterDataSlot slot_ = {};
  void* item_ = nullptr;
};

}  // namespace tarn::fuzz

#endif
