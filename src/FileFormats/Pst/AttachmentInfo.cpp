// fltGetAttachmentInfo: the list of a message's attachments with their properties.

#include <string_view>

#include "Common/ApiUtils.h"
#include "FileFormats/Pst/AttachmentCommon.h"
#include "FileFormats/Pst/Frame.h"
#include "FileFormats/Pst/MailDate.h"

namespace tarn {
namespace {

using ItemList = TrackedBuffer<AttachmentInfoItem>;

void ReleaseItem(AttachmentInfoItem& item) {
  for (void* block : {static_cast<void*>(item.name), item.reserved0,
                      static_cast<void*>(item.description), static_cast<void*>(item.properties)}) {
    if (block != nullptr) KernelFree(block, TARN_HERE);
  }
  item = {};
}

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

AttachmentProperty* FindProperty(const PropertyList& list, std::u16string_view name) {
  for (uint64_t i = 0; i < list.length; ++i) {
    if (name == list.data[i].name) return &list.data[i];
  }
  return nullptr;
}

void RemoveProperty(PropertyList& list, AttachmentProperty* property) {
  const auto index = static_cast<uint64_t>(property - list.data);
  std::memmove(property, property + 1, (list.length - index - 1) * sizeof *property);
  --list.length;
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
  if (list.length == 0) return;
  item.propertyCount = list.length;
  item.properties = ShrinkToFit(list.data, list.length, list.capacity);
  list.data = nullptr;
  list.take();
}

int32_t AddItem(void* user, TrackedBuffer<char>* data, const char16_t* name,
                PropertyList* properties) {
  auto* const list = static_cast<ItemList*>(user);
  if (list == nullptr) return StatusNullArgument;

  ItemHolder holder;
  AttachmentInfoItem& item = holder.item;
  item.number = list->length + 1;
  if (name != nullptr && !CopyText(name, item.name)) return StatusOutOfMemory;
  item.size = data->length;
  if (properties != nullptr) {
    if (!TakeKnownProperties(*properties, item)) return StatusOutOfMemory;
    TakeRemainingProperties(*properties, item);
  }
  const int32_t added = list->append(&item, 1);
  if (added == StatusOk) item = {};
  return added;
}

// "Content-ID:" reaches the host as "Content-ID", "name=" as "name".
void TrimName(AttachmentProperty& property) {
  const uint64_t length = WideLength(property.name);
  if (length <= 1) return;
  char16_t& last = property.name[length - 1];
  if (last == u':' || last == u'=') last = u'\0';
}

}  // namespace

int32_t GetAttachmentInfo(GetAttachmentInfoContext* context) {
  if (context == nullptr) return StatusNullArgument;

  ItemList items;
  const AttachmentRequest request = {kAllAttachments, 1, AddItem, &items};
  int32_t format = FormatNone;
  const int32_t walked = WalkAttachments(context->path, context->options, request, format);
  // On a failure the array goes, and what its items own stays allocated: kept as it is.
  if (walked != StatusOk) return walked;

  auto block = AllocateZeroBlock<AttachmentInfoBlock>(1, TARN_HERE);
  if (!block) {
    for (uint64_t i = 0; i < items.length; ++i) ReleaseItem(items.data[i]);
    return StatusOutOfMemory;
  }
  block.get()->format = format;
  block.get()->itemSize = sizeof(AttachmentInfoItem);
  block.get()->itemCount = items.length;
  if (items.length != 0) {
    items.data = ShrinkToFit(items.data, items.length, items.capacity);
    block.get()->items = items.take();
  }
  for (uint64_t i = 0; i < block.get()->itemCount; ++i) {
    AttachmentInfoItem& item = block.get()->items[i];
    for (uint64_t k = 0; k < item.propertyCount; ++k) TrimName(item.properties[k]);
  }
  context->block = block.take();
  return StatusOk;
}

}  // namespace tarn
