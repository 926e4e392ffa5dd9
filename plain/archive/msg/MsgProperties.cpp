#include "archive/msg/MsgProperties.h"

#include <algorithm>
#include <utility>

#include "Common/LittleEndian.h"
#include "archive/mapi/Hexadecimal.h"
#include "archive/mapi/RawBytes.h"
#include "archive/mapi/Tags.h"
#include "archive/msg/MsgStreamNames.h"

namespace tarn::archive::msg {
namespace {

using namespace mapi;

constexpr size_t kRecordSize = 16;
constexpr size_t kOuterHeader = 32;
constexpr size_t kEmbeddedHeader = 24;
constexpr size_t kPartHeader = 8;
constexpr size_t kLargestRecords = size_t{1} << 24;  // two tags for each property that can be

bool HasManyValues(uint16_t type) { return (type & kMultipleValues) != 0; }

uint32_t KeyOf(PropertyTag tag) { return (uint32_t{tag.id} << 16) | tag.type; }

// A message's header is 32 bytes, or 24 of an embedded one. Some programs write the one for the
// other; records are 16 bytes, and so the length tells.
size_t HeaderSize(SetOf kind, uint64_t streamSize) {
  if (kind == SetOf::Part) return kPartHeader;
  return streamSize % kRecordSize == 0 ? kOuterHeader : kEmbeddedHeader;
}

}  // namespace

bool IsMessageStorage(const StorageFile& file, EntryNumber storage) {
  const auto children = file.children(storage);
  return std::any_of(children.begin(), children.end(), [&](EntryNumber entry) {
    const std::string_view name = file.name(entry);
    return name == kPropertiesName || name == kNamesName || ParseStreamName(name).has_value();
  });
}

MsgProperties::MsgProperties(StorageFile& file, EntryNumber storage, SetOf kind) : file_(file) {
  collectStreams(storage);
  const std::optional<EntryNumber> records = file.find(storage, kPropertiesName);
  if (records && !file.isStorage(*records)) {
    readRecords(*records, kind);
  } else {
    troubles_.push_back({TroubleKind::Missing, "the stream of the properties is missing"});
  }
  addStreamsWithoutRecord();
}

void MsgProperties::collectStreams(EntryNumber storage) {
  for (const EntryNumber entry : file_.children(storage)) {
    const std::optional<StreamName> name = ParseStreamName(file_.name(entry));
    if (!name) continue;
    const uint32_t key = KeyOf(name->tag);
    if (!name->place) {
      streams_.emplace(key, entry);
    } else {
      furtherStreams_.emplace((uint64_t{key} << 32) | *name->place, entry);
    }
  }
}

void MsgProperties::readRecords(EntryNumber stream, SetOf kind) {
  std::string bytes;
  const uint64_t size = file_.sizeOf(stream);
  Outcome<std::unique_ptr<ByteSource>> source = file_.open(stream);
  if (!source) {
    troubles_.push_back(source.trouble());
    return;
  }
  // What comes before a damage is read.
  std::array<char, 4096> buffer;
  while (bytes.size() < kLargestRecords) {
    const Outcome<size_t> count = (*source)->read(buffer);
    if (!count || *count == 0) break;
    bytes.append(buffer.data(), *count);
  }
  const size_t header = HeaderSize(kind, size);
  if (bytes.size() < size || size < header || (size - header) % kRecordSize != 0) {
    troubles_.push_back({TroubleKind::Damaged, "the stream of the properties is cut off"});
  }
  if (kind == SetOf::Message && bytes.size() >= kEmbeddedHeader) {
    declaredRecipients_ = LoadLittleEndian<uint32_t>(mapi::RawBytes(bytes) + 16);
    declaredAttachments_ = LoadLittleEndian<uint32_t>(mapi::RawBytes(bytes) + 20);
  }
  for (size_t at = header; at + kRecordSize <= bytes.size(); at += kRecordSize) {
    addRecord(mapi::RawBytes(bytes) + at);
  }
}

void MsgProperties::addRecord(const unsigned char* record) {
  Row row;
  row.tag.type = LoadLittleEndian<uint16_t>(record);
  row.tag.id = LoadLittleEndian<uint16_t>(record + 2);
  std::copy_n(record + 8, row.value.size(), row.value.begin());
  if (row.tag.id == 0 || rowOf_.count(row.tag.id) != 0) return;
  if (WidthOfNumber(row.tag.type) == 0) {
    const auto at = streams_.find(KeyOf(row.tag));
    if (at != streams_.end()) {
      row.entry = at->second;
    } else {
      // Text of the other width, as some programs leave it.
      const auto near = streams_.lower_bound(uint32_t{row.tag.id} << 16);
      if (near != streams_.end() && near->first >> 16 == row.tag.id) {
        row.tag.type = static_cast<uint16_t>(near->first);
        row.entry = near->second;
      }
    }
  }
  rowOf_.emplace(row.tag.id, rows_.size());
  rows_.push_back(row);
}

void MsgProperties::addStreamsWithoutRecord() {
  for (const auto& [key, entry] : streams_) {
    const PropertyTag tag{static_cast<uint16_t>(key >> 16), static_cast<uint16_t>(key)};
    if (WidthOfNumber(tag.type) != 0 || !rowOf_.emplace(tag.id, rows_.size()).second) continue;
    rows_.push_back({tag, {}, entry});
  }
}

const MsgProperties::Row* MsgProperties::find(uint16_t id) const {
  const auto at = rowOf_.find(id);
  return at == rowOf_.end() ? nullptr : &rows_[at->second];
}

std::vector<PropertyTag> MsgProperties::tags() {
  std::vector<PropertyTag> all;
  all.reserve(rows_.size());
  for (const Row& row : rows_) all.push_back(row.tag);
  return all;
}

std::optional<uint16_t> MsgProperties::typeOf(uint16_t id) {
  const Row* const row = find(id);
  if (row == nullptr) return std::nullopt;
  return row->tag.type;
}

std::optional<uint64_t> MsgProperties::sizeOf(uint16_t id) {
  const Row* const row = find(id);
  if (row == nullptr) return std::nullopt;
  if (const size_t width = WidthOfNumber(row->tag.type)) return width;
  return row->entry ? file_.sizeOf(*row->entry) : 0;
}

Outcome<std::string> MsgProperties::streamOf(const Row& row, size_t limit) {
  if (row.entry && !file_.isStorage(*row.entry)) return file_.read(*row.entry, limit);
  // The record tells the size, that of a text with its terminator. An empty value needs no stream.
  const uint32_t declared = LoadLittleEndian<uint32_t>(row.value.data());
  const uint32_t terminator = row.tag.type == kTypeString    ? 2
                              : row.tag.type == kTypeString8 ? 1
                                                             : 0;
  if (!row.entry && declared <= terminator) return std::string();
  return Trouble{TroubleKind::Missing, "its stream is missing"};
}

Outcome<std::string> MsgProperties::bytes(uint16_t id, size_t limit) {
  const Row* const row = find(id);
  if (row == nullptr) return Trouble{TroubleKind::Missing, "the property is not there"};
  if (const size_t width = WidthOfNumber(row->tag.type)) {
    return std::string(row->value.begin(), row->value.begin() + static_cast<ptrdiff_t>(width));
  }
  return streamOf(*row, limit);
}

Outcome<std::unique_ptr<ByteSource>> MsgProperties::stream(uint16_t id) {
  const Row* const row = find(id);
  if (row != nullptr && row->entry && WidthOfNumber(row->tag.type) == 0)
    return file_.open(*row->entry);
  Outcome<std::string> all = bytes(id, kRecordSize);
  if (!all) return all.trouble();
  return BytesOf(std::move(*all));
}

Outcome<std::vector<std::string>> MsgProperties::values(uint16_t id, size_t limit) {
  const Row* const row = find(id);
  if (row == nullptr) return Trouble{TroubleKind::Missing, "the property is not there"};
  if (!HasManyValues(row->tag.type)) {
    Outcome<std::string> one = bytes(id, limit);
    if (!one) return one.trouble();
    return std::vector<std::string>{std::move(*one)};
  }
  const uint16_t type = row->tag.type & ~kMultipleValues;
  return WidthOfValue(type) != 0 ? fixedValues(*row, limit) : variableValues(*row, limit);
}

Outcome<std::vector<std::string>> MsgProperties::fixedValues(const Row& row, size_t limit) {
  const Outcome<std::string> all = streamOf(row, limit);
  if (!all) return all.trouble();
  const size_t width = WidthOfValue(row.tag.type & ~kMultipleValues);
  std::vector<std::string> values;
  for (size_t at = 0; at + width <= all->size(); at += width) {
    values.push_back(all->substr(at, width));
  }
  return values;
}

Outcome<std::vector<std::string>> MsgProperties::variableValues(const Row& row, size_t limit) {
  const Outcome<std::string> lengths = streamOf(row, limit);
  if (!lengths) return lengths.trouble();
  // A length is 4 bytes, of binary values 8 (MS-OXMSG 2.1.4.1).
  const size_t width = (row.tag.type & ~kMultipleValues) == kTypeBinary ? 8 : 4;
  std::vector<std::string> values;
  size_t left = limit;
  for (size_t place = 0; (place + 1) * width <= lengths->size(); ++place) {
    const auto at = furtherStreams_.find((uint64_t{KeyOf(row.tag)} << 32) | place);
    const uint32_t length = LoadLittleEndian<uint32_t>(mapi::RawBytes(*lengths) + place * width);
    if (at == furtherStreams_.end()) {
      if (length != 0) return Trouble{TroubleKind::Missing, "the stream of a value is missing"};
      values.emplace_back();
      continue;
    }
    Outcome<std::string> value = file_.read(at->second, left);
    if (!value) return value.trouble();
    left -= value->size();
    values.push_back(std::move(*value));
  }
  return values;
}

std::optional<EntryNumber> MsgProperties::storageOf(uint16_t id) const {
  const Row* const row = find(id);
  if (row == nullptr || !row->entry || !file_.isStorage(*row->entry)) return std::nullopt;
  return row->entry;
}

}  // namespace tarn::archive::msg
