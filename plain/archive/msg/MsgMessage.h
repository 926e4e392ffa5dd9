// MsgMessage.h - a message of an MSG file: the file's own, or one that is embedded in another.
#ifndef TARN_ARCHIVE_MSGMESSAGE_H
#define TARN_ARCHIVE_MSGMESSAGE_H

#include <string_view>
#include <vector>

#include "archive/mapi/MapiMessage.h"
#include "archive/msg/MsgNames.h"
#include "archive/msg/MsgProperties.h"

namespace tarn::archive::msg {

class MsgMessage final : public mapi::MapiMessage {
 public:
  // File and names outlive this.
  MsgMessage(StorageFile& file, const MsgNames& names, EntryNumber storage);

  mapi::PropertySet& properties() override { return properties_; }
  std::optional<uint16_t> idOf(const mapi::PropertyName& name) override {
    return names_.idOf(name);
  }
  std::optional<mapi::PropertyName> nameOf(uint16_t id) override { return names_.nameOf(id); }
  std::vector<Trouble> troubles() override { return troubles_; }
  Outcome<size_t> recipientCount() override { return recipients_.size(); }
  Outcome<std::unique_ptr<mapi::PropertySet>> recipient(size_t index) override;
  Outcome<size_t> attachmentCount() override { return attachments_.size(); }
  Outcome<std::unique_ptr<mapi::PropertySet>> attachment(size_t index) override;
  Outcome<std::unique_ptr<mapi::MapiMessage>> embedded(size_t index) override;
  Outcome<std::unique_ptr<ByteSource>> object(size_t index) override;

 private:
  // The storages of a kind, in the order of their numbers.
  std::vector<EntryNumber> storagesOf(EntryNumber storage, std::string_view prefix) const;
  Outcome<std::unique_ptr<mapi::PropertySet>> setOf(const std::vector<EntryNumber>& storages,
                                                    size_t index);

  StorageFile& file_;
  const MsgNames& names_;
  MsgProperties properties_;
  std::vector<EntryNumber> recipients_;
  std::vector<EntryNumber> attachments_;
  std::vector<Trouble> troubles_;
};

}  // namespace tarn::archive::msg

#endif
