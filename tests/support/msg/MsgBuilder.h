// MsgBuilder.h - writes MSG files (MS-OXMSG) from a short description.
//
//   MsgBuilder msg;
//   msg.text(0x0037, u"Subject").text8(0x1000, "Body").submitTime(ticks).importance(2);
//   msg.recipient(u"Bob", u"bob@example.com");
//   msg.attachment(u"a.png", bytes).contentId(u"a.png@x").mimeType(u"image/png");
//   msg.attachment().text(0x3707, u"mail.msg").embedded().text(0x0037, u"Inner");
//   std::string file = msg.write();
//
// Properties go, in the order in which they were named, into "__properties_version1.0" after a
// header of 32 bytes (a message of its own), 24 (an embedded one) or 8 (attachments, recipients);
// those of variable size have a stream too. A stream named by hand, the properties stream included,
// replaces what would be written. Attachments begin with their number, recipients with their row.
#ifndef TARN_TESTS_SUPPORT_MSG_MSGBUILDER_H
#define TARN_TESTS_SUPPORT_MSG_MSGBUILDER_H

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "support/compound/CompoundBuilder.h"

namespace tarn::test {

enum MsgPropertyType : uint16_t {
  MsgInteger = 0x0003,
  MsgObject = 0x000D,
  MsgText8 = 0x001E,
  MsgText = 0x001F,
  MsgTime = 0x0040,
  MsgBinary = 0x0102
};

// "__substg1.0_" + id + type.
std::string MsgStreamName(uint16_t id, uint16_t type);

// UTF-16 as little-endian bytes, without a terminator.
std::string WideBytes(std::u16string_view text);

// A record of a properties stream: type, id, flags 6, value.
std::string MsgRecord(uint16_t type, uint16_t id, uint64_t value);

// What every storage of an MSG file holds.
class MsgProperties {
 public:
  void addText(uint16_t id, std::u16string_view text);
  void addText8(uint16_t id, std::string_view text);
  void addBinary(uint16_t id, std::string_view bytes);
  void addRecord(uint16_t type, uint16_t id, uint64_t value);
  void addStream(const std::string& name, std::string_view bytes);

  // Puts the streams into the folder, the records after the header.
  void write(CompoundFolder& folder, const std::string& header) const;

 private:
  std::string records_;
  std::map<std::string, std::string> streams_;
};

// The fluent face of the properties.
template <typename Self>
class MsgDescription {
 public:
  Self& text(uint16_t id, std::u16string_view text) {
    properties_.addText(id, text);
    return self();
  }
  Self& text8(uint16_t id, std::string_view text) {
    properties_.addText8(id, text);
    return self();
  }
  Self& binary(uint16_t id, std::string_view bytes) {
    properties_.addBinary(id, bytes);
    return self();
  }
  Self& integer(uint16_t id, uint32_t value) {
    properties_.addRecord(MsgInteger, id, value);
    return self();
  }
  // 100 ns since 1601.
  Self& time(uint16_t id, uint64_t ticks) {
    properties_.addRecord(MsgTime, id, ticks);
    return self();
  }
  Self& stream(const std::string& name, std::string_view bytes) {
    properties_.addStream(name, bytes);
    return self();
  }

 protected:
  MsgProperties properties_;

 private:
  Self& self() { return static_cast<Self&>(*this); }
};

class MsgBuilder;

class MsgAttachment : public MsgDescription<MsgAttachment> {
 public:
  explicit MsgAttachment(uint32_t number);

  MsgAttachment& contentId(std::u16string_view id) { return text(0x3712, id); }
  MsgAttachment& mimeType(std::u16string_view type) { return text(0x370E, type); }
  MsgAttachment& created(uint64_t ticks) { return time(0x3007, ticks); }
  MsgAttachment& modified(uint64_t ticks) { return time(0x3008, ticks); }
  // The message that the attachment is, in place of bytes. It lives as long as the attachment.
  MsgBuilder& embedded();

 private:
  friend class MsgBuilder;

  void write(CompoundFolder& folder) const;

  std::shared_ptr<MsgBuilder> message_;
};

class MsgBuilder : public MsgDescription<MsgBuilder> {
 public:
  MsgBuilder& submitTime(uint64_t ticks) { return time(0x0039, ticks); }
  MsgBuilder& importance(uint32_t value) { return integer(0x0017, value); }
  MsgBuilder& recipient(std::u16string_view name, std::u16string_view address);
  // A property with a name, in the public strings; its id. Only of a message of its own.
  uint16_t named(std::u16string_view name);

  // Attachments live as long as the builder. The first form has a long file name and bytes.
  MsgAttachment& attachment(std::u16string_view name, std::string_view bytes);
  MsgAttachment& attachment();

  CompoundImage image(const CompoundOptions& options = CompoundOptions()) const;
  std::string write(const CompoundOptions& options = CompoundOptions()) const;

 private:
  friend class MsgAttachment;

  void fill(CompoundFolder& folder, bool isEmbedded) const;
  void writeNames(CompoundFolder& folder) const;

  std::vector<std::unique_ptr<MsgAttachment>> attachments_;
  std::vector<MsgProperties> recipients_;
  std::vector<std::u16string> names_;
};

}  // namespace tarn::test

#endif
