#include "archive/store/StoreMessage.h"

#include <set>

#include "archive/store/StoreTrouble.h"
#include "pststore/Blocks.h"
#include "pststore/Errors.h"

namespace tarn::archive::store {
namespace {

using mapi::MapiMessage;
using mapi::PropertySet;

constexpr pststore::ulong kAttachmentTable = 0x671;
constexpr pststore::ulong kRecipientTable = 0x692;
constexpr uint32_t kTypeMask = 0x1F;
constexpr uint32_t kAttachmentType = 0x05;
constexpr uint16_t kAttachData = 0x3701;

Trouble NoSuch(const char* what) { return {TroubleKind::Missing, std::string("no such ") + what}; }

constexpr const char* kAttachmentReason = "the attachment cannot be read";

}  // namespace

Outcome<StoreMessage::Recipients>& StoreMessage::recipients() {
  if (!recipients_) {
    recipients_ = Guarded("their table cannot be read", [&] {
      Recipients read;
      if (!node().has(kRecipientTable)) return read;
      read.table = std::make_unique<TableRows>(node().lookup(kRecipientTable), blockSize_);
      read.rows = ListRows(*read.table);
      return read;
    });
  }
  return *recipients_;
}

Outcome<size_t> StoreMessage::recipientCount() {
  const auto& read = recipients();
  if (!read) return read.trouble();
  return read->count();
}

Outcome<std::unique_ptr<PropertySet>> StoreMessage::recipient(size_t index) {
  auto& read = recipients();
  if (!read) return read.trouble();
  if (index >= read->count()) return NoSuch("recipient");
  if (index == read->rows.all.size()) {
    return Trouble{TroubleKind::Damaged, "a part of their table cannot be read"};
  }
  return Guarded("the row cannot be read", [&] {
    TableRows& table = *read->table;
    return std::unique_ptr<PropertySet>(
        new RowProperties(table, table.row(read->rows.all[index].number)));
  });
}

const std::vector<uint32_t>& StoreMessage::attachments() {
  if (!attachments_) {
    attachments_.emplace();
    readAttachments();
  }
  return *attachments_;
}

void StoreMessage::readAttachments() {
  const auto table = Guarded("their table cannot be read", [&] { return readAttachmentTable(); });
  if (table && *table) return;
  const auto held = Guarded("their table cannot be read", [&] {
    addHeldAttachments();
    return true;
  });
  if (!held) attachmentTrouble_ = table ? held.trouble() : table.trouble();
}

// Whether it is there and all of it could be read.
bool StoreMessage::readAttachmentTable() {
  if (!node().has(kAttachmentTable)) return false;
  TableRows table(node().lookup(kAttachmentTable), blockSize_);
  const ListedRows rows = ListRows(table);
  for (const ListedRow& row : rows.all) attachments_->push_back(row.id);
  return rows.isWhole;
}

void StoreMessage::addHeldAttachments() {
  std::set<uint32_t> met(attachments_->begin(), attachments_->end());
  const std::shared_ptr<pststore::subnode_block> root = node().get_subnode_block();
  pststore::btree_iter_impl<pststore::ulong, pststore::subnode_info> end;
  root->last(end);
  ++end.leaf_pos;
  pststore::btree_iter_impl<pststore::ulong, pststore::subnode_info> at;
  for (root->first(at); !(at == end); at.leaf->next(at)) {
    const uint32_t id = at.leaf->get_value(at.leaf_pos).id;
    if ((id & kTypeMask) == kAttachmentType && met.insert(id).second) attachments_->push_back(id);
  }
}

Outcome<size_t> StoreMessage::attachmentCount() {
  const size_t count = attachments().size();
  if (count == 0 && attachmentTrouble_) return *attachmentTrouble_;
  // Those that cannot be named are one more together.
  return count + (attachmentTrouble_ ? 1 : 0);
}

PropertyContext StoreMessage::openAttachment(size_t index) {
  return PropertyContext(node().lookup(attachments()[index]));
}

Outcome<std::unique_ptr<PropertySet>> StoreMessage::attachment(size_t index) {
  if (index == attachments().size() && attachmentTrouble_) return *attachmentTrouble_;
  if (index >= attachments().size()) return NoSuch("attachment");
  return Guarded(kAttachmentReason, [&] {
    return std::unique_ptr<PropertySet>(new PropertyContext(node().lookup(attachments()[index])));
  });
}

Outcome<std::unique_ptr<MapiMessage>> StoreMessage::embedded(size_t index) {
  if (index >= attachments().size()) return NoSuch("attachment");
  return Guarded("the embedded message cannot be read", [&] {
    const PropertyContext attachment = openAttachment(index);
    const auto data = attachment.find(kAttachData);
    if (!data || data->type != mapi::kTypeObject) {
      throw pststore::key_not_found<pststore::ushort>(kAttachData);
    }
    return std::unique_ptr<MapiMessage>(
        new StoreMessage(NodeOfObject(*attachment.heap(), *data), names_, blockSize_));
  });
}

Outcome<std::unique_ptr<ByteSource>> StoreMessage::object(size_t index) {
  if (index >= attachments().size()) return NoSuch("attachment");
  auto opened = Guarded("the object cannot be read", [&]() -> Outcome<std::unique_ptr<ByteSource>> {
    PropertyContext attachment = openAttachment(index);
    const auto data = attachment.find(kAttachData);
    if (!data || data->type != mapi::kTypeObject) return attachment.stream(kAttachData);
    return SourceOfNode(NodeOfObject(*attachment.heap(), *data), "the object cannot be read");
  });
  if (!opened) return opened.trouble();
  return std::move(*opened);
}

}  // namespace tarn::archive::store
