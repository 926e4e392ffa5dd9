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

std::string AttachmentReason(size_t index) {
  return "attachment " + std::to_string(index + 1) + " cannot be read";
}

}  // namespace

const Outcome<std::unique_ptr<TableRows>>& StoreMessage::recipients() {
  if (!recipients_) {
    recipients_ = Guarded("the recipients cannot be read", [&] {
      if (!node().has(kRecipientTable)) return std::unique_ptr<TableRows>();
      return std::make_unique<TableRows>(node().lookup(kRecipientTable), blockSize_);
    });
  }
  return *recipients_;
}

Outcome<size_t> StoreMessage::recipientCount() {
  const auto& table = recipients();
  if (!table) return table.trouble();
  return *table == nullptr ? size_t{0} : static_cast<size_t>((*table)->rowCount());
}

Outcome<std::unique_ptr<PropertySet>> StoreMessage::recipient(size_t index) {
  const Outcome<size_t> count = recipientCount();
  if (!count) return count.trouble();
  if (index >= *count) return NoSuch("recipient");
  TableRows& table = **recipients();
  return Guarded("recipient " + std::to_string(index + 1) + " cannot be read", [&] {
    return std::unique_ptr<PropertySet>(new RowProperties(table, table.row(index)));
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
  const auto table =
      Guarded("the list of attachments cannot be read", [&] { return readAttachmentTable(); });
  if (table && *table) return;
  const auto held = Guarded("the list of attachments cannot be read", [&] {
    addHeldAttachments();
    return true;
  });
  if (!held) attachmentTrouble_ = table ? held.trouble() : table.trouble();
}

// Whether all of it could be read.
bool StoreMessage::readAttachmentTable() {
  if (!node().has(kAttachmentTable)) return true;
  TableRows table(node().lookup(kAttachmentTable), blockSize_);
  std::set<uint32_t> met;
  bool isWhole = true;
  for (uint64_t number = 0; number < table.rowCount(); ++number) {
    const auto row = Guarded("a row", [&] { return TableRows::IdOf(table.row(number)); });
    if (!row) {
      isWhole = false;
      number = table.nextBlock(number) - 1;
    } else if (met.insert(*row).second) {
      attachments_->push_back(*row);
    }
  }
  return isWhole;
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
  // One more stands for those that cannot be named.
  return count + (attachmentTrouble_ ? 1 : 0);
}

PropertyContext StoreMessage::openAttachment(size_t index) {
  return PropertyContext(node().lookup(attachments()[index]));
}

Outcome<std::unique_ptr<PropertySet>> StoreMessage::attachment(size_t index) {
  if (index == attachments().size() && attachmentTrouble_) return *attachmentTrouble_;
  if (index >= attachments().size()) return NoSuch("attachment");
  return Guarded(AttachmentReason(index), [&] {
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
