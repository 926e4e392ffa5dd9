// MessageBuilder.h - describes messages and attachments of a PST store (MS-PST 2.4.5, 2.4.6).
//
// Texts of char16_t are written as PtypString and texts of char as PtypString8, in both layouts and
// as they are: no code page, no terminator. Every property can be replaced or left out afterwards
// through properties().
#ifndef TARN_TESTS_SUPPORT_PST_MESSAGEBUILDER_H
#define TARN_TESTS_SUPPORT_PST_MESSAGEBUILDER_H

#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string_view>

#include "support/pst/PropertyContextBuilder.h"
#include "support/pst/TableContextBuilder.h"

namespace tarn::test {

class MessageBuilder;

class AttachmentBuilder {
 public:
  AttachmentBuilder(PstLayout layout, const BthShape& shape, uint32_t nid);

  uint32_t nid() const { return nid_; }
  AttachmentBuilder& longName(std::u16string_view name);
  AttachmentBuilder& longName(std::string_view name);
  AttachmentBuilder& shortName(std::u16string_view name);
  AttachmentBuilder& shortName(std::string_view name);
  // Attached by value (method 1), with PidTagAttachSize.
  AttachmentBuilder& data(std::string_view bytes);
  AttachmentBuilder& method(uint32_t method);
  AttachmentBuilder& mimeTag(std::u16string_view tag);
  AttachmentBuilder& contentId(std::u16string_view id);
  AttachmentBuilder& created(uint64_t fileTime);
  AttachmentBuilder& modified(uint64_t fileTime);
  AttachmentBuilder& property(uint16_t id, uint16_t type, std::string_view value);
  AttachmentBuilder& without(uint16_t id);
  // An embedded message (method 5): the object property names a subnode of this attachment.
  MessageBuilder& embedded();
  // The attachment table has a row for it, but the message has no such subnode.
  AttachmentBuilder& withoutNode();

  PropertyContextBuilder& properties() { return bag_; }

 private:
  friend class MessageBuilder;
  PstNodeParts build() const;

  PstLayout layout_;
  BthShape shape_;
  uint32_t nid_;
  PropertyContextBuilder bag_;
  std::shared_ptr<MessageBuilder> embedded_;
  bool hasNode_ = true;
};

class MessageBuilder {
 public:
  // With message class, flags, status and times.
  MessageBuilder(PstLayout layout, const BthShape& shape, uint32_t nid);

  uint32_t nid() const { return nid_; }
  // As it is: the two characters that mark a prefix are the caller's.
  MessageBuilder& subject(std::u16string_view text);
  MessageBuilder& subject(std::string_view text);
  MessageBuilder& body(std::u16string_view text);
  MessageBuilder& body(std::string_view text);
  MessageBuilder& html(std::string_view bytes);
  // Already packed (MS-OXRTFCP).
  MessageBuilder& rtf(std::string_view bytes);
  MessageBuilder& from(std::u16string_view name);
  MessageBuilder& to(std::u16string_view names);
  MessageBuilder& cc(std::u16string_view names);
  MessageBuilder& bcc(std::u16string_view names);
  MessageBuilder& importance(uint32_t value);
  MessageBuilder& submitTime(uint64_t fileTime);
  MessageBuilder& property(uint16_t id, uint16_t type, std::string_view value);
  MessageBuilder& without(uint16_t id);

  // Attached by value under its long name.
  MessageBuilder& attachment(std::u16string_view name, std::string_view bytes);
  // An attachment to be described further; it lives as long as the message.
  AttachmentBuilder& attach();
  // An attachment table even without attachments.
  MessageBuilder& withAttachmentTable();
  // Attachments without their table.
  MessageBuilder& withoutAttachmentTable();
  MessageBuilder& attachmentTable(const TableShape& shape);
  // An empty recipient table, as every message is to have as published.
  MessageBuilder& withRecipientTable();
  // A row of the recipient table: its values become cells, and what is no usual column becomes one.
  // Lives as long as the message.
  PropertyContextBuilder& recipient();
  // Deviating: the attachment or recipient table is this node, whatever it is.
  MessageBuilder& attachmentTable(PstNodeParts parts);
  MessageBuilder& recipientTable(PstNodeParts parts);

  PropertyContextBuilder& properties() { return bag_; }
  const PropertyContextBuilder& properties() const { return bag_; }
  PstNodeParts build() const;

 private:
  PstLayout layout_;
  BthShape shape_;
  uint32_t nid_;
  PropertyContextBuilder bag_;
  std::deque<AttachmentBuilder> attachments_;
  enum class Table { AsNeeded, Always, Never } table_ = Table::AsNeeded;
  TableShape tableShape_;
  bool hasRecipients_ = false;
  std::deque<PropertyContextBuilder> recipients_;
  std::optional<PstNodeParts> attachmentNode_;
  std::optional<PstNodeParts> recipientNode_;

  PstNodeParts buildAttachmentTable() const;
  PstNodeParts buildRecipientTable() const;
};

}  // namespace tarn::test

#endif
