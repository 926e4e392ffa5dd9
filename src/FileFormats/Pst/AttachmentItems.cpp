#include "FileFormats/Pst/AttachmentItems.h"

#include <algorithm>
#include <string_view>

#include "Common/ApiUtils.h"
#include "FileFormats/Pst/AttachmentCommon.h"
#include "FileFormats/Pst/MailDate.h"

namespace tarn {
namespace {

// An item with all that it owns, until the list takes it.
struct ItemHolder {
  AttachmentInfoItem item = {};
  ~ItemHolder() { ReleaseItem(item); }
};

// A copy of the text in a block of its own, null for an empty text. False without memory.
bool CopyText(const char16_t* text, char16_t*& copy) {
  const uint64_t length = WideLength(text);
  if (length == 0) return true;
  auto block = AllocateBlock<char16_t>(length + 1, TARN_HERE);
  if (!block) return false;
  std::memcpy(block.get(), text, (length + 1) * sizeof(char16_t));
  copy = block.take();
  return true;
}

AttachmentProperty* FindProperty(PropertyList& list, std::u16string_view name) {
  for (AttachmentProperty& property : list.elements()) {
    if (name == property.name) return &property;
  }
  return nullptr;
}

void RemoveProperty(PropertyList& list, AttachmentProperty* property) {
  std::copy(property + 1, list.data() + list.length(), property);
  list.setLength(list.length() - 1);
}

// Moves the properties that have a field of their own out of the list and into the item. False
// without memory.
bool TakeKnownProperties(PropertyList& list, AttachmentInfoItem& item) {
  if (AttachmentProperty* const found = FindProperty(list, u"Content-Description:")) {
    if (!CopyText(found->value, item.description)) return false;
    RemoveProperty(list, found);
  }
  if (AttachmentProperty* const found = FindProperty(list, u"creation-date=")) {
    item.creationTime = ParseMailDate(found->value);
    RemoveProperty(list, found);
  }
  if (AttachmentProperty* const found = FindProperty(list, u"modification-date=")) {
    item.modificationTime = ParseMailDate(found->value);
    RemoveProperty(list, found);
  }
  if (AttachmentProperty* const found = FindProperty(list, u"MsgCreationTime")) {
    item.creationTime = static_cast<int64_t>(ParseDecimal(found->value));
    RemoveProperty(list, found);
  }
  if (AttachmentProperty* const found = FindProperty(list, u"MsgModificationTime")) {
    item.modificationTime = static_cast<int64_t>(ParseDecimal(found->value));
    RemoveProperty(list, found);
  }
  return true;
}

// What remains of the list belongs to the item.
void TakeRemainingProperties(PropertyList& list, AttachmentInfoItem& item) {
  if (list.length() == 0) return;
  item.propertyCount = list.length();
  list.shrinkToFit();
  item.properties = list.take().take();
}

}  // namespace

void ReleaseItem(AttachmentInfoItem& item) {
  for (void* block : {static_cast<void*>(item.name), item.reserved0,
                      static_cast<void*>(item.description), static_cast<void*>(item.properties)}) {
    if (block != nullptr) KernelFree(block, TARN_HERE);
  }
  item = {};
}

Status AddAttachmentItem(void* list, TrackedBuffer<char>* data, const char16_t* name,
                         PropertyList* properties) {
  auto* const items = static_cast<ItemList*>(list);
  if (items == nullptr) return StatusNullArgument;

  ItemHolder holder;
  AttachmentInfoItem& item = holder.item;
  item.number = items->length() + 1;
  if (name != nullptr && !CopyText(name, item.name)) return StatusOutOfMemory;
  item.size = data->length();
  if (properties != nullptr) {
    if (!TakeKnownProperties(*properties, item)) return StatusOutOfMemory;
    TakeRemainingProperties(*properties, item);
  }
  const Status added = items->append(&item, 1);
  if (added.ok()) item = {};
  return added;
}

void TrimPropertyName(AttachmentProperty& property) {
  const uint64_t length = WideLength(property.name);
  if (length <= 1) return;
  char16_t& last = property.name[length - 1];
  if (last == u':' || last == u'=') last = u'\0';
}

}  // namespace tarn
