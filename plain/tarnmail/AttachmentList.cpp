#include "AttachmentList.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "KernelBytes.h"
#include "console/Text.h"

namespace tarn::host {
namespace {

using Property = std::pair<std::string, std::string>;
using PropertyNames = std::array<std::string_view, 2>;

std::optional<std::string> OptionalText(const char16_t* text) {
  if (text == nullptr) return std::nullopt;
  return Utf8FromWide(text);
}

// Text in an array that ends at its NUL, or at its end.
template <size_t N>
std::string BoundedText(const char16_t (&text)[N]) {
  const std::u16string_view all(text, N);
  return Utf8FromWide(all.substr(0, all.find(u'\0')));
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

// The readers of mail files spell the name of the media type otherwise than those of messages.
constexpr PropertyNames kMediaType = {"MimeType", "MineType"};
constexpr PropertyNames kDisposition = {"Content-Disposition", "Content-Disposition:"};
constexpr PropertyNames kContentId = {"Content-ID", "Content-ID:"};

// The first property of one of the names; null when there is none.
const Property* FirstOf(const std::vector<Property>& properties, const PropertyNames& names) {
  for (const Property& property : properties) {
    if (property.first == names[0] || property.first == names[1]) return &property;
  }
  return nullptr;
}

std::string ValueOf(const Property* property) {
  return property == nullptr ? "" : property->second;
}

}  // namespace

std::string Attachment::mediaType() const { return ValueOf(FirstOf(properties, kMediaType)); }

std::string Attachment::disposition() const { return ValueOf(FirstOf(properties, kDisposition)); }

std::string Attachment::contentId() const { return ValueOf(FirstOf(properties, kContentId)); }

std::vector<std::pair<std::string, std::string>> Attachment::otherProperties() const {
  const std::array<const Property*, 3> known = {FirstOf(properties, kMediaType),
                                                FirstOf(properties, kDisposition),
                                                FirstOf(properties, kContentId)};
  std::vector<Property> others;
  for (const Property& property : properties) {
    if (std::find(known.begin(), known.end(), &property) == known.end()) others.push_back(property);
  }
  return others;
}

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
