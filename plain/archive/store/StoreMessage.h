// StoreMessage.h - a message of a store: its properties, its table of recipients, its attachments
// and what they hold (MS-PST 2.4.5, 2.4.6).
#ifndef TARN_ARCHIVE_STORE_STOREMESSAGE_H
#define TARN_ARCHIVE_STORE_STOREMESSAGE_H

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "archive/mapi/MapiMessage.h"
#include "archive/store/NameMap.h"
#include "archive/store/PropertyContext.h"
#include "archive/store/TableRows.h"

namespace tarn::archive::store {

class StoreMessage final : public mapi::MapiMessage {
 public:
  // Throws what the store throws for a node that is no property context.
  StoreMessage(const pststore::node& data, std::shared_ptr<NameMap> names, size_t blockSize)
      : bag_(data), names_(std::move(names)), blockSize_(blockSize) {}

  mapi::PropertySet& properties() override { return bag_; }
  std::optional<uint16_t> idOf(const mapi::PropertyName& name) override {
    return names_->idOf(name);
  }
  std::optional<mapi::PropertyName> nameOf(uint16_t id) override { return names_->nameOf(id); }

  // Rows that say that they are the same one are one recipient. All that cannot be read are
  // one more together, the last.
  Outcome<size_t> recipientCount() override;
  Outcome<std::unique_ptr<mapi::PropertySet>> recipient(size_t index) override;

  // In the order of their table. Where it is missing or cannot be read whole, the attachments that
  // the message holds besides those of the table come after these.
  Outcome<size_t> attachmentCount() override;
  Outcome<std::unique_ptr<mapi::PropertySet>> attachment(size_t index) override;
  Outcome<std::unique_ptr<mapi::MapiMessage>> embedded(size_t index) override;
  Outcome<std::unique_ptr<ByteSource>> object(size_t index) override;

 private:
  const pststore::node& node() const { return bag_.node(); }
  struct Recipients {
    std::unique_ptr<TableRows> table;  // null where there is none
    ListedRows rows;
    size_t count() const { return rows.all.size() + (rows.isWhole ? 0 : 1); }
  };

  Outcome<Recipients>& recipients();
  const std::vector<uint32_t>& attachments();
  void readAttachments();
  bool readAttachmentTable();
  void addHeldAttachments();
  PropertyContext openAttachment(size_t index);

  PropertyContext bag_;
  std::shared_ptr<NameMap> names_;
  size_t blockSize_;
  std::optional<Outcome<Recipients>> recipients_;
  std::optional<std::vector<uint32_t>> attachments_;  // their subnodes, each once
  std::optional<Trouble> attachmentTrouble_;          // the table was the only way to some
};

}  // namespace tarn::archive::store

#endif
