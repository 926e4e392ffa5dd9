#include "archive/catalogue/CatalogueItem.h"

#include <utility>

namespace tarn::archive {
namespace {

constexpr std::string_view kMark = "tarnmail item 1\n";
constexpr int kNumberBytes = 8;

class Packer {
 public:
  void number(uint64_t value) {
    for (int at = 0; at < kNumberBytes; ++at) {
      bytes_ += static_cast<char>(value >> (8 * at) & 0xFF);
    }
  }
  void text(std::string_view value) {
    number(value.size());
    bytes_ += value;
  }
  void optionalText(const std::optional<std::string>& value) {
    number(value ? 1 : 0);
    if (value) text(*value);
  }
  void address(const Address& value) {
    text(value.name);
    text(value.address);
  }
  void addresses(const std::vector<Address>& values) {
    number(values.size());
    for (const Address& value : values) address(value);
  }
  void moment(const std::optional<Moment>& value) {
    number(value ? 1 : 0);
    if (!value) return;
    number(static_cast<uint64_t>(value->seconds));
    number(value->offsetMinutes ? 1 : 0);
    if (value->offsetMinutes) number(static_cast<uint64_t>(int64_t{*value->offsetMinutes}));
  }

  std::string take() { return std::move(bytes_); }

 private:
  std::string bytes_{kMark};
};

// What is missing or too much makes the record a bad one; values are then empty.
class Unpacker {
 public:
  explicit Unpacker(std::string_view bytes) : rest_(bytes) {
    isBad_ = !rest_.starts_with(kMark);
    if (!isBad_) rest_.remove_prefix(kMark.size());
  }

  uint64_t number() {
    const std::string_view bytes = take(kNumberBytes);
    uint64_t value = 0;
    for (size_t at = 0; at < bytes.size(); ++at) {
      value |= uint64_t{static_cast<unsigned char>(bytes[at])} << (8 * at);
    }
    return value;
  }
  std::string text() { return std::string(take(number())); }
  std::optional<std::string> optionalText() {
    return flag() ? std::optional(text()) : std::nullopt;
  }
  bool flag() {
    const uint64_t value = number();
    isBad_ = isBad_ || value > 1;
    return value == 1;
  }
  // How many elements follow: each takes a byte at least, so that no number costs memory that the
  // record does not back.
  size_t count() {
    const uint64_t value = number();
    isBad_ = isBad_ || value > rest_.size();
    return isBad_ ? 0 : static_cast<size_t>(value);
  }
  Address address() {
    Address value;
    value.name = text();
    value.address = text();
    return value;
  }
  std::vector<Address> addresses() {
    std::vector<Address> values;
    for (size_t left = count(); left != 0 && !isBad_; --left) values.push_back(address());
    return values;
  }
  std::optional<Moment> moment() {
    if (!flag()) return std::nullopt;
    Moment value;
    value.seconds = static_cast<int64_t>(number());
    if (flag()) value.offsetMinutes = static_cast<int32_t>(number());
    return value;
  }

  bool isBad() const { return isBad_; }
  bool isWhole() const { return !isBad_ && rest_.empty(); }
  void refuse() { isBad_ = true; }

 private:
  std::string_view take(uint64_t count) {
    isBad_ = isBad_ || count > rest_.size();
    if (isBad_) return {};
    const std::string_view taken = rest_.substr(0, static_cast<size_t>(count));
    rest_.remove_prefix(taken.size());
    return taken;
  }

  std::string_view rest_;
  bool isBad_ = false;
};

void Pack(Packer& out, const ItemFields& fields) {
  out.text(fields.messageClass);
  out.text(fields.subject);
  out.address(fields.from);
  out.moment(fields.sent);
  out.moment(fields.received);
  out.number(fields.size ? 1 : 0);
  if (fields.size) out.number(*fields.size);
  out.number(fields.hasAttachments ? 1 : 0);
  out.addresses(fields.to);
  out.addresses(fields.cc);
  out.addresses(fields.bcc);
  out.number(fields.sender ? 1 : 0);
  if (fields.sender) out.address(*fields.sender);
  out.text(fields.messageId);
  out.number(fields.attachmentCount);
}

ItemFields UnpackFields(Unpacker& in) {
  ItemFields fields;
  fields.messageClass = in.text();
  fields.subject = in.text();
  fields.from = in.address();
  fields.sent = in.moment();
  fields.received = in.moment();
  if (in.flag()) fields.size = in.number();
  fields.hasAttachments = in.flag();
  fields.to = in.addresses();
  fields.cc = in.addresses();
  fields.bcc = in.addresses();
  if (in.flag()) fields.sender = in.address();
  fields.messageId = in.text();
  fields.attachmentCount = static_cast<size_t>(in.number());
  return fields;
}

ExportedFile UnpackFile(Unpacker& in) {
  ExportedFile file;
  file.path = in.text();
  file.role = in.text();
  file.bytes = in.number();
  file.sha256 = in.text();
  file.name = in.text();
  file.index = static_cast<size_t>(in.number());
  file.page = in.number();
  return file;
}

AttachmentText UnpackAttachment(Unpacker& in) {
  AttachmentText attachment;
  attachment.index = static_cast<size_t>(in.number());
  attachment.name = in.text();
  attachment.text = in.text();
  return attachment;
}

}  // namespace

std::string_view NameOf(ExportStatus status) {
  constexpr std::string_view kNames[] = {"exported", "partial", "failed"};
  return kNames[static_cast<size_t>(status)];
}

std::string PackedItem(const CatalogueItem& item) {
  Packer out;
  out.text(item.source);
  out.text(item.id);
  out.optionalText(item.parent);
  out.number(item.folder.size());
  for (const std::string& name : item.folder) out.text(name);
  Pack(out, item.fields);
  out.number(static_cast<uint64_t>(item.status));
  out.text(item.reason);
  out.number(item.files.size());
  for (const ExportedFile& file : item.files) {
    out.text(file.path);
    out.text(file.role);
    out.number(file.bytes);
    out.text(file.sha256);
    out.text(file.name);
    out.number(file.index);
    out.number(file.page);
  }
  out.text(item.body);
  out.number(item.attachments.size());
  for (const AttachmentText& attachment : item.attachments) {
    out.number(attachment.index);
    out.text(attachment.name);
    out.text(attachment.text);
  }
  return out.take();
}

Outcome<CatalogueItem> UnpackedItem(std::string_view bytes) {
  Unpacker in(bytes);
  CatalogueItem item;
  item.source = in.text();
  item.id = in.text();
  item.parent = in.optionalText();
  for (size_t left = in.count(); left != 0 && !in.isBad(); --left) item.folder.push_back(in.text());
  item.fields = UnpackFields(in);
  const uint64_t status = in.number();
  if (status > static_cast<uint64_t>(ExportStatus::Failed)) in.refuse();
  item.status = in.isBad() ? ExportStatus::Failed : static_cast<ExportStatus>(status);
  item.reason = in.text();
  for (size_t left = in.count(); left != 0 && !in.isBad(); --left) {
    item.files.push_back(UnpackFile(in));
  }
  item.body = in.text();
  for (size_t left = in.count(); left != 0 && !in.isBad(); --left) {
    item.attachments.push_back(UnpackAttachment(in));
  }
  if (!in.isWhole()) return Trouble{TroubleKind::Damaged, "the record of an item is torn"};
  return item;
}

}  // namespace tarn::archive
