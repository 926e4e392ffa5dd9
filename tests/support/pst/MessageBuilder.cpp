#include "support/pst/MessageBuilder.h"

#include "support/pst/StoreTemplates.h"

namespace tarn::test {
namespace {

// 2021-01-01 00:00 UTC.
constexpr uint64_t kUsualTime = 132539328000000000;
constexpr uint32_t kFirstAttachment = 0x8025;
constexpr uint32_t kEmbeddedNid = 0x200024;
constexpr uint32_t kByValue = 1;
constexpr uint32_t kEmbeddedMessage = 5;

}  // namespace

AttachmentBuilder::AttachmentBuilder(PstLayout layout, const BthShape& shape, uint32_t nid)
    : layout_(layout), shape_(shape), nid_(nid), bag_(layout, shape) {
  bag_.number(kPropRenderingPosition, kTypeInt32, 0xFFFFFFFF);
}

AttachmentBuilder& AttachmentBuilder::longName(std::u16string_view name) {
  bag_.text(kPropAttachLongFilename, name);
  return *this;
}

AttachmentBuilder& AttachmentBuilder::longName(std::string_view name) {
  bag_.text(kPropAttachLongFilename, name);
  return *this;
}

AttachmentBuilder& AttachmentBuilder::shortName(std::u16string_view name) {
  bag_.text(kPropAttachFilename, name);
  return *this;
}

AttachmentBuilder& AttachmentBuilder::shortName(std::string_view name) {
  bag_.text(kPropAttachFilename, name);
  return *this;
}

AttachmentBuilder& AttachmentBuilder::data(std::string_view bytes) {
  bag_.binary(kPropAttachData, bytes);
  bag_.number(kPropAttachSize, kTypeInt32, bytes.size());
  return method(kByValue);
}

AttachmentBuilder& AttachmentBuilder::method(uint32_t method) {
  bag_.number(kPropAttachMethod, kTypeInt32, method);
  return *this;
}

AttachmentBuilder& AttachmentBuilder::mimeTag(std::u16string_view tag) {
  bag_.text(kPropAttachMimeTag, tag);
  return *this;
}

AttachmentBuilder& AttachmentBuilder::contentId(std::u16string_view id) {
  bag_.text(kPropAttachContentId, id);
  return *this;
}

AttachmentBuilder& AttachmentBuilder::created(uint64_t fileTime) {
  bag_.time(kPropCreationTime, fileTime);
  return *this;
}

AttachmentBuilder& AttachmentBuilder::modified(uint64_t fileTime) {
  bag_.time(kPropLastModificationTime, fileTime);
  return *this;
}

AttachmentBuilder& AttachmentBuilder::property(uint16_t id, uint16_t type, std::string_view value) {
  bag_.value(id, type, value);
  return *this;
}

AttachmentBuilder& AttachmentBuilder::without(uint16_t id) {
  bag_.without(id);
  return *this;
}

MessageBuilder& AttachmentBuilder::embedded() {
  embedded_ = std::make_shared<MessageBuilder>(layout_, shape_, kEmbeddedNid);
  method(kEmbeddedMessage);
  return *embedded_;
}

AttachmentBuilder& AttachmentBuilder::withoutNode() {
  hasNode_ = false;
  return *this;
}

PstNodeParts AttachmentBuilder::build() const {
  if (!embedded_) return bag_.build();
  PropertyContextBuilder bag = bag_;
  PstNodeParts message = embedded_->build();
  uint32_t size = 0;
  for (const std::string& page : message.pages) size += static_cast<uint32_t>(page.size());
  bag.object(kPropAttachData, kEmbeddedNid, size);
  bag.number(kPropAttachSize, kTypeInt32, size);
  bag.subnode(kEmbeddedNid, std::move(message));
  return bag.build();
}

MessageBuilder::MessageBuilder(PstLayout layout, const BthShape& shape, uint32_t nid)
    : layout_(layout), shape_(shape), nid_(nid), bag_(layout, shape) {
  constexpr uint32_t kRead = 1;
  bag_.text(kPropMessageClass, u"IPM.Note");
  bag_.number(kPropMessageFlags, kTypeInt32, kRead);
  bag_.number(kPropMessageStatus, kTypeInt32, 0);
  bag_.number(kPropMessageSize, kTypeInt32, 0);
  bag_.time(kPropCreationTime, kUsualTime);
  bag_.time(kPropLastModificationTime, kUsualTime);
}

MessageBuilder& MessageBuilder::subject(std::u16string_view text) {
  bag_.text(kPropSubject, text);
  return *this;
}

MessageBuilder& MessageBuilder::subject(std::string_view text) {
  bag_.text(kPropSubject, text);
  return *this;
}

MessageBuilder& MessageBuilder::body(std::u16string_view text) {
  bag_.text(kPropBody, text);
  return *this;
}

MessageBuilder& MessageBuilder::body(std::string_view text) {
  bag_.text(kPropBody, text);
  return *this;
}

MessageBuilder& MessageBuilder::html(std::string_view bytes) {
  bag_.binary(kPropHtml, bytes);
  return *this;
}

MessageBuilder& MessageBuilder::rtf(std::string_view bytes) {
  bag_.binary(kPropRtfCompressed, bytes);
  return *this;
}

MessageBuilder& MessageBuilder::from(std::u16string_view name) {
  bag_.text(kPropSenderName, name);
  return *this;
}

MessageBuilder& MessageBuilder::to(std::u16string_view names) {
  bag_.text(kPropDisplayTo, names);
  return *this;
}

MessageBuilder& MessageBuilder::cc(std::u16string_view names) {
  bag_.text(kPropDisplayCc, names);
  return *this;
}

MessageBuilder& MessageBuilder::bcc(std::u16string_view names) {
  bag_.text(kPropDisplayBcc, names);
  return *this;
}

MessageBuilder& MessageBuilder::importance(uint32_t value) {
  bag_.number(kPropImportance, kTypeInt32, value);
  return *this;
}

MessageBuilder& MessageBuilder::submitTime(uint64_t fileTime) {
  bag_.time(kPropClientSubmitTime, fileTime);
  return *this;
}

MessageBuilder& MessageBuilder::property(uint16_t id, uint16_t type, std::string_view value) {
  bag_.value(id, type, value);
  return *this;
}

MessageBuilder& MessageBuilder::without(uint16_t id) {
  bag_.without(id);
  return *this;
}

MessageBuilder& MessageBuilder::attachment(std::u16string_view name, std::string_view bytes) {
  attach().longName(name).data(bytes);
  return *this;
}

AttachmentBuilder& MessageBuilder::attach() {
  const uint32_t nid = kFirstAttachment + static_cast<uint32_t>(attachments_.size()) * 32;
  return attachments_.emplace_back(layout_, shape_, nid);
}

MessageBuilder& MessageBuilder::withAttachmentTable() {
  table_ = Table::Always;
  return *this;
}

MessageBuilder& MessageBuilder::withoutAttachmentTable() {
  table_ = Table::Never;
  return *this;
}

MessageBuilder& MessageBuilder::attachmentTable(const TableShape& shape) {
  tableShape_ = shape;
  return *this;
}

MessageBuilder& MessageBuilder::withRecipientTable() {
  hasRecipients_ = true;
  return *this;
}

PropertyContextBuilder& MessageBuilder::recipient() {
  hasRecipients_ = true;
  return recipients_.emplace_back(layout_, shape_);
}

MessageBuilder& MessageBuilder::attachmentTable(PstNodeParts parts) {
  attachmentNode_ = std::move(parts);
  return *this;
}

MessageBuilder& MessageBuilder::recipientTable(PstNodeParts parts) {
  hasRecipients_ = true;
  recipientNode_ = std::move(parts);
  return *this;
}

PstNodeParts MessageBuilder::buildAttachmentTable() const {
  if (attachmentNode_) return *attachmentNode_;
  TableContextBuilder table(layout_, tableShape_);
  AddAttachmentColumns(table);
  for (const AttachmentBuilder& attachment : attachments_) {
    TableContextBuilder::Row row = table.row(attachment.nid());
    CopyToRow(attachment.bag_, table, row);
  }
  return table.build();
}

PstNodeParts MessageBuilder::buildRecipientTable() const {
  if (recipientNode_) return *recipientNode_;
  TableContextBuilder table(layout_);
  AddRecipientColumns(table, recipients_);
  for (size_t i = 0; i < recipients_.size(); ++i) {
    TableContextBuilder::Row row = table.row(static_cast<uint32_t>(i));
    CopyToRow(recipients_[i], table, row);
  }
  return table.build();
}

PstNodeParts MessageBuilder::build() const {
  PstNodeParts parts = bag_.build();
  for (const AttachmentBuilder& attachment : attachments_) {
    if (attachment.hasNode_) parts.subnode(attachment.nid(), attachment.build());
  }
  const bool isNeeded = table_ == Table::AsNeeded && !attachments_.empty();
  if (isNeeded || table_ == Table::Always) {
    parts.subnode(kAttachmentTableNid, buildAttachmentTable());
  }
  if (hasRecipients_) parts.subnode(kRecipientTableNid, buildRecipientTable());
  return parts;
}

}  // namespace tarn::test
