#include "FileFormats/Pst/SiblingCall.h"

#include "Common/FilterData.h"

namespace tarn {

TarnSibling SiblingForKind(TarnDocumentKind kind, bool textOnly) {
  if (textOnly) return SiblingText;
  switch (kind) {
    case DocumentHtml:
      return SiblingHtml;
    case DocumentRtf:
      return SiblingRtf;
    default:
      return SiblingText;
  }
}

HostLoadOptions CopyOptions(const HostLoadOptions* options) {
  HostLoadOptions copy = {};
  if (options != nullptr) std::memcpy(&copy, options, sizeof copy);
  copy.size = sizeof copy;
  return copy;
}

void PassSiblingData(const FilterDataSlot* slot, int32_t position, HostLoadOptions& options) {
  if (slot == nullptr || slot->data == nullptr) return;

  if (slot->dataFormat == FILTER_DATA_LIST_FORMAT) {
    const FilterDataList* const list = SlotList(slot);
    if (list == nullptr || position < 0 || position >= list->count) return;
    const FilterDataEntry& entry = list->entries[position];
    options.data = entry.data;
    options.dataSize = entry.size;
    options.dataFormat = entry.format;
  } else {
    if (position < 0 || position >= 1) return;
    options.data = slot->data;
    options.dataSize = slot->dataSize;
    options.dataFormat = slot->dataFormat;
  }
  options.flags |= HOST_LOAD_OPTIONS_HAS_DATA;
}

}  // namespace tarn
