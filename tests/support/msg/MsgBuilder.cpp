#include "support/msg/MsgBuilder.h"

#include <cstdio>

#include "support/RtfCompressor.h"

namespace tarn::test {
namespace {

constexpr const char* kPropertiesStream = "__properties_version1.0";
constexpr uint32_t kRecordFlags = 6;  // readable and writable

std::string Number(uint64_t value, size_t width) {
  std::string bytes;
  for (size_t i = 0; i < width; ++i) bytes += static_cast<char>(value >> (8 * i) & 0xFF);
  return bytes;
}

std::string Numbered(const char* prefix, size_t number) {
  char name[40];
  std::snprintf(name, sizeof name, "%s#%08X", prefix, static_cast<unsigned>(number));
  return name;
}

// The 8 bytes before the records of attachments and recipients.
std::string SmallHeader() { return std::string(8, '\0'); }

// Reserved, the next numbers of recipients and attachments, how many there are of each, and in a
// message of its own 8 reserved bytes more.
std::string MessageHeader(size_t recipients, size_t attachments, bool isEmbedded) {
  std::string header(8, '\0');
  header += Number(recipients, 4) + Number(attachments, 4);
  header += Number(recipients, 4) + Number(attachments, 4);
  return header + std::string(isEmbedded ? 0 : 8, '\0');
}

}  // namespace

std::string MsgStreamName(uint16_t id, uint16_t type) {
  char name[32];
  std::snprintf(name, sizeof name, "__substg1.0_%04X%04X", id, type);
  return name;
}

std::string WideBytes(std::u16string_view text) {
  std::string bytes;
  for (const char16_t unit : text) bytes += Number(unit, 2);
  return bytes;
}

std::string MsgRecord(uint16_t type, uint16_t id, uint64_t value) {
  return Number(type, 2) + Number(id, 2) + Number(kRecordFlags, 4) + Number(value, 8);
}

void MsgProperties::addText(uint16_t id, std::u16string_view text) {
  addStream(MsgStreamName(id, MsgText), WideBytes(text));
  addRecord(MsgText, id, 2 * text.size() + 2);  // counts a terminator that is not stored
}

void MsgProperties::addText8(uint16_t id, std::string_view text) {
  addStream(MsgStreamName(id, MsgText8), text);
  addRecord(MsgText8, id, text.size() + 1);
}

void MsgProperties::addBinary(uint16_t id, std::string_view bytes) {
  addStream(MsgStreamName(id, MsgBinary), bytes);
  addRecord(MsgBinary, id, bytes.size());
}

void MsgProperties::addRecord(uint16_t type, uint16_t id, uint64_t value) {
  records_ += MsgRecord(type, id, value);
}

void MsgProperties::addStream(const std::string& name, std::string_view bytes) {
  streams_[name] = bytes;
}

void MsgProperties::write(CompoundFolder& folder, const std::string& header) const {
  folder.stream(kPropertiesStream, header + records_);
  for (const auto& [name, bytes] : streams_) folder.stream(name, bytes);
}

MsgAttachment::MsgAttachment(uint32_t number) { integer(0x0E21, number); }

MsgBuilder& MsgAttachment::embedded() {
  if (!message_) {
    message_ = std::make_shared<MsgBuilder>();
    integer(0x3705, 5);
    properties_.addRecord(MsgObject, 0x3701, uint64_t{1} << 32 | 0xFFFFFFFF);
  }
  return *message_;
}

void MsgAttachment::write(CompoundFolder& folder) const {
  properties_.write(folder, SmallHeader());
  if (message_) message_->fill(folder.storage(MsgStreamName(0x3701, MsgObject)), true);
}

MsgBuilder& MsgBuilder::recipient(std::u16string_view name, std::u16string_view address) {
  MsgProperties& recipient = recipients_.emplace_back();
  recipient.addRecord(MsgInteger, 0x3000, recipients_.size() - 1);
  recipient.addRecord(MsgInteger, 0x0C15, 1);
  recipient.addText(0x3001, name);
  recipient.addText(0x39FE, address);
  return *this;
}

uint16_t MsgBuilder::named(std::u16string_view name) {
  names_.emplace_back(name);
  return static_cast<uint16_t>(0x8000 + names_.size() - 1);
}

MsgAttachment& MsgBuilder::attachment(std::u16string_view name, std::string_view bytes) {
  MsgAttachment& made = attachment();
  made.integer(0x3705, 1);
  return made.text(0x3707, name).binary(0x3701, bytes);
}

MsgAttachment& MsgBuilder::attachment() {
  const auto number = static_cast<uint32_t>(attachments_.size());
  return *attachments_.emplace_back(std::make_unique<MsgAttachment>(number));
}

CompoundImage MsgBuilder::image(const CompoundOptions& options) const {
  CompoundBuilder file(options);
  writeNames(file.storage("__nameid_version1.0"));
  fill(file.root(), false);
  return file.image();
}

std::string MsgBuilder::write(const CompoundOptions& options) const { return image(options).bytes; }

void MsgBuilder::fill(CompoundFolder& folder, bool isEmbedded) const {
  properties_.write(folder, MessageHeader(recipients_.size(), attachments_.size(), isEmbedded));
  for (size_t i = 0; i < recipients_.size(); ++i) {
    recipients_[i].write(folder.storage(Numbered("__recip_version1.0_", i)), SmallHeader());
  }
  for (size_t i = 0; i < attachments_.size(); ++i) {
    attachments_[i]->write(folder.storage(Numbered("__attach_version1.0_", i)));
  }
}

// MS-OXMSG 2.2.3: the streams of GUIDs (none besides the well-known ones), of entries and of texts,
// and one stream for each bucket of the hash of names.
void MsgBuilder::writeNames(CompoundFolder& folder) const {
  constexpr uint32_t kPublicStrings = 2;  // the index of PS_PUBLIC_STRINGS
  constexpr uint32_t kIsString = 1;
  std::string entries;
  std::string texts;
  std::map<uint32_t, std::string> buckets;
  for (size_t i = 0; i < names_.size(); ++i) {
    const std::string text = WideBytes(names_[i]);
    const uint64_t kind = kPublicStrings << 1 | kIsString;
    const std::string kindAndIndex = Number(kind, 2) + Number(i, 2);
    entries += Number(texts.size(), 4) + kindAndIndex;
    const uint32_t checksum = LzfuChecksum(text);
    buckets[0x1000 + (checksum ^ static_cast<uint32_t>(kind)) % 0x1F] +=
        Number(checksum, 4) + kindAndIndex;
    texts += Number(text.size(), 4) + text;
    texts.resize((texts.size() + 3) / 4 * 4);
  }
  folder.stream(MsgStreamName(0x0002, MsgBinary), "");
  folder.stream(MsgStreamName(0x0003, MsgBinary), entries);
  folder.stream(MsgStreamName(0x0004, MsgBinary), texts);
  for (const auto& [id, bytes] : buckets) {
    folder.stream(MsgStreamName(static_cast<uint16_t>(id), MsgBinary), bytes);
  }
}

}  // namespace tarn::test
