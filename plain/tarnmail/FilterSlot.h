// FilterSlot.h - what a call of fltInfo leaves with its host.
#ifndef TARN_TARNMAIL_FILTERSLOT_H
#define TARN_TARNMAIL_FILTERSLOT_H

#include "FilterLibrary.h"
#include "TarnPst.h"

namespace tarn::host {

// New, it is empty. Its end frees the filter's record, with its temporary files, and the list; what
// siblings keep in the list is theirs.
class FilterSlot {
 public:
  explicit FilterSlot(const FilterLibrary& filter) : filter_(filter) {}
  FilterSlot(const FilterSlot&) = delete;
  FilterSlot& operator=(const FilterSlot&) = delete;
  ~FilterSlot();

  FilterDataSlot* get() { return &slot_; }

 private:
  const FilterLibrary& filter_;
  FilterDataSlot slot_ = {};
};

}  // namespace tarn::host

#endif
