// TnefMessage.h - a message of TNEF: that of a whole part of a mail, or one embedded in it.
#ifndef TARN_ARCHIVE_TNEFMESSAGE_H
#define TARN_ARCHIVE_TNEFMESSAGE_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "archive/mapi/MapiMessage.h"
#include "archive/tnef/TnefAttributes.h"
#include "archive/tnef/TnefNames.h"
#include "archive/tnef/TnefProperties.h"

namespace tarn::archive::tnef {

// 8-bit texts are of the code page that the message's attribute tells, else of the message that it
// is embedded in: PidTagMessageCodepage is that one, whatever the list of properties has.
class TnefMessage final : public mapi::MapiMessage {
 public:
  // Owns the bytes, which begin as TNEF.
  explicit TnefMessage(std::string bytes);
  // Bytes that outlive this, and the code page of the message around it; 0 for none.
  TnefMessage(std::string_view bytes, uint32_t codePage);

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
  using AttachmentParts = std::vector<Attribute>;

  void readAttributes(std::string_view bytes);
  void takeForMessage(const Attribute& attribute);
  void takeForAttachment(const Attribute& attribute);
  void readRecipients(std::string_view table);
  std::unique_ptr<TnefProperties> setOfAttachment(size_t index);

  std::string own_;
  TnefNames names_;
  TnefProperties properties_;
  std::string_view listOfProperties_;
  std::vector<Attribute> oldAttributes_;  // of the message
  std::vector<std::string_view> recipients_;
  std::vector<AttachmentParts> attachments_;
  uint32_t codePage_ = 0;
  std::vector<Trouble> troubles_;
};

}  // namespace tarn::archive::tnef

#endif
