#include "AttachmentList.h"

#include <algorithm>
#include <string_view>

#include "KernelBytes.h"
#include "Text.h"

namespace tarn::host {
namespace {

std::optional<std::string> OptionalText(const char16_t* text) {
  if (text == nullptr) return std::nullopt;
  return Utf8FromWide(text);
}

// Text in an array that ends at its NUL, or at its end.
template <size_t N>
std::string BoundedText(const char16_t (&text)[N]) {
  return Utf8FromWide({text, static_cast<size_t>(std::find(text, text + N, u'\0') - text)});
}

template <typename Value>
std::optional<Value> Known(Value value) {
  if (value == 0) return std::nullopt;
  return value;
}

Attachment CopyItem(const AttachmentInfoItem& item, int32_t format) {
  Attachment attachment;
  attachment.number = item.number;
  attachment.name = OptionalText(item.name);
  attachment.description = OptionalText(item.description);
  // Mail files are read whole, so that 0 is a size; the other readers leave it at 0.
  attachment.size = format == FormatEml ? item.size : Known<uint64_t>(item.size);
  attachment.created = Known<int64_t>(item.creationTime);
  attachment.modified = Known<int64_t>(item.modificationTime);
  for (uint64_t i = 0; i < item.propertyCount; ++i) {
    const AttachmentProperty& property = item.properties[i];
    attachment.properties.emplace_back(BoundedText(property.name), BoundedText(property.value));
  }
  return attachment;
}

std::string FirstOf(const Attachment& attachment, std::string_view name,
                    std::string_view otherName) {
  for (const auto& [key, value] : attachment.properties) {
    if (key == name || key == otherName) return value;
  }
  return "";
}

}  // namespace

// The readers of mail files spell the name of this property otherwise than those of messages.
std::string Attachment::mediaType() const { return FirstOf(*this, "MimeType", "MineType"); }

std::string Attachment::contentId() const { return FirstOf(*this, "Content-ID", "Content-ID:"); }

std::vector<Attachment> CopyAttachments(const AttachmentInfoBlock& block) {
  std::vector<Attachment> attachments;
  for (uint64_t i = 0; i < block.itemCount; ++i) {
    attachments.push_back(CopyItem(block.items[i], block.format));
  }
  return attachments;
}

void ReleaseAttachments(AttachmentInfoBlock* block) {
  if (block == nullptr) return;
  for (uint64_t i = 0; i < block->itemCount; ++i) {
    const AttachmentInfoItem& item = block->items[i];
    ReleaseBlock(item.name);
    ReleaseBlock(item.reserved0);
    ReleaseBlock(item.description);
    ReleaseBlock(item.properties);
  }
  ReleaseBlock(block->items);
  ReleaseBlock(block);
}

}  // namespace tarn::host
