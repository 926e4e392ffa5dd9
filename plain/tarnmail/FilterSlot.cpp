#include "FilterSlot.h"

#include "KernelBytes.h"

namespace tarn::host {

FilterSlot::~FilterSlot() {
  if (slot_.data == nullptr) return;
  if (slot_.dataFormat != FILTER_DATA_LIST_FORMAT) {
    filter_.freeData(slot_.data);
    return;
  }
  auto* const list = static_cast<FilterDataList*>(slot_.data);
  if (list->entries[0].data != nullptr) filter_.freeData(list->entries[0].data);
  ReleaseBlock(list);
}

}  // namespace tarn::host
