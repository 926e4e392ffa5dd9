#include "archive/store/Headline.h"

#include <string>

#include "archive/mapi/MapiFields.h"
#include "archive/store/StoreText.h"
#include "pststore/Disk.h"

namespace tarn::archive::store {
namespace {

constexpr uint16_t kMessageClass = 0x001A;
constexpr uint16_t kSubject = 0x0037;
constexpr uint16_t kSentRepresentingName = 0x0042;
constexpr uint16_t kClientSubmitTime = 0x0039;
constexpr uint16_t kMessageDeliveryTime = 0x0E06;
constexpr uint16_t kMessageFlags = 0x0E07;
constexpr uint16_t kMessageSize = 0x0E08;

constexpr uint32_t kHasAttachments = 0x10;

// Longer ones come from the message.
constexpr size_t kLongestText = 32768;

// The text of a cell; none where it needs the message. A cell that is not there is empty.
std::optional<std::string> TextOf(const TableRows& table, std::string_view row,
                                  const TableColumn& column) {
  const auto value = table.shape()->value(row, column);
  if (!value) return std::string();
  if (value->type != mapi::kTypeString && value->type != mapi::kTypeString8) return std::nullopt;
  const Outcome<std::string> bytes = BytesOfValue(*table.heap(), *value, kLongestText);
  if (!bytes) return std::nullopt;
  return TextOfAnyCodePage(value->type, *bytes);
}

std::optional<uint64_t> NumberOf(const TableRows& table, std::string_view row,
                                 const TableColumn& column) {
  const auto value = table.shape()->value(row, column);
  if (!value || value->fixedSize == 0) return std::nullopt;
  uint64_t number = 0;
  for (size_t i = value->fixedSize; i-- > 0;) {
    number = number << 8 | static_cast<unsigned char>(value->fixed[i]);
  }
  return number;
}

std::optional<Moment> MomentOf(const TableRows& table, std::string_view row,
                               const TableColumn& column) {
  const auto number = NumberOf(table, row, column);
  return number && column.type == mapi::kTypeTime ? MomentOfFileTime(*number) : std::nullopt;
}

}  // namespace

HeadlineColumns::HeadlineColumns(const TableShape& shape)
    : messageClass_(shape.column(kMessageClass)),
      subject_(shape.column(kSubject)),
      from_(shape.column(kSentRepresentingName)),
      sent_(shape.column(kClientSubmitTime)),
      received_(shape.column(kMessageDeliveryTime)),
      size_(shape.column(kMessageSize)),
      flags_(shape.column(kMessageFlags)) {}

mapi::KnownFields HeadlineColumns::read(const TableRows& table, std::string_view row) const {
  mapi::KnownFields known;
  if (size_ != nullptr) known.size = NumberOf(table, row, *size_);
  if (known.size == 0) known.size = std::nullopt;
  known.headline = readHeadline(table, row);
  return known;
}

std::optional<ItemFields> HeadlineColumns::readHeadline(const TableRows& table,
                                                        std::string_view row) const {
  for (const TableColumn* const column :
       {messageClass_, subject_, from_, sent_, received_, flags_}) {
    if (column == nullptr) return std::nullopt;
  }
  auto messageClass = TextOf(table, row, *messageClass_);
  auto from = TextOf(table, row, *from_);
  if (!messageClass || messageClass->empty() || !from || from->empty()) return std::nullopt;
  auto subject = TextOf(table, row, *subject_);
  const auto flags = NumberOf(table, row, *flags_);
  if (!subject || !flags) return std::nullopt;

  ItemFields fields;
  fields.messageClass = std::move(*messageClass);
  fields.subject = mapi::SubjectWithoutMark(std::move(*subject));
  if (fields.subject.empty()) return std::nullopt;
  fields.from.name = std::move(*from);
  fields.sent = MomentOf(table, row, *sent_);
  fields.received = MomentOf(table, row, *received_);
  fields.hasAttachments = (*flags & kHasAttachments) != 0;
  return fields;
}

}  // namespace tarn::archive::store
