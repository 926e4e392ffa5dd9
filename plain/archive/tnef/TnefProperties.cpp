#include "archive/tnef/TnefProperties.h"

#include <algorithm>
#include <array>
#include <utility>

#include "Common/LittleEndian.h"
#include "archive/mapi/RawBytes.h"
#include "archive/mapi/Tags.h"

namespace tarn::archive::tnef {
namespace {

using namespace mapi;

constexpr uint16_t kFirstNamedId = 0x8000;
constexpr size_t kInterfaceIdSize = 16;

bool HasLength(uint16_t type) {
  return type == kTypeString8 || type == kTypeString || type == kTypeBinary || type == kTypeObject;
}

std::string_view WithoutTerminator(std::string_view text, uint16_t type) {
  if (type == kTypeString8 && !text.empty() && text.back() == '\0') text.remove_suffix(1);
  if (type == kTypeString && text.size() >= 2 && text.size() % 2 == 0 && text.back() == '\0' &&
      text[text.size() - 2] == '\0') {
    text.remove_suffix(2);
  }
  return text;
}

class ViewSource final : public ByteSource {
 public:
  explicit ViewSource(std::string_view bytes) : rest_(bytes) {}

  Outcome<size_t> read(std::span<char> buffer) override {
    const size_t count = rest_.copy(buffer.data(), buffer.size());
    rest_.remove_prefix(count);
    return count;
  }

 private:
  std::string_view rest_;
};

}  // namespace

std::optional<uint16_t> ListBytes::number16() {
  if (rest_.size() < 2) return std::nullopt;
  const uint16_t number = LoadLittleEndian<uint16_t>(mapi::RawBytes(rest_));
  rest_.remove_prefix(2);
  return number;
}

std::optional<uint32_t> ListBytes::number32() {
  if (rest_.size() < 4) return std::nullopt;
  const uint32_t number = LoadLittleEndian<uint32_t>(mapi::RawBytes(rest_));
  rest_.remove_prefix(4);
  return number;
}

std::optional<std::string_view> ListBytes::filled(size_t size) {
  if (rest_.size() < size) return std::nullopt;
  const std::string_view bytes = rest_.substr(0, size);
  rest_.remove_prefix(std::min(rest_.size(), (size + 3) / 4 * 4));
  return bytes;
}

std::unique_ptr<ByteSource> SourceOf(std::string_view bytes) {
  return std::make_unique<ViewSource>(bytes);
}

void TnefProperties::readList(std::string_view bytes, TnefNames& names) {
  sizeOfList_.reset();
  ListBytes list(bytes);
  const uint32_t count = list.number32().value_or(UINT32_MAX);
  for (uint32_t at = 0; at < count; ++at) {
    if (readProperty(list, names)) continue;
    troubles_.push_back({TroubleKind::Damaged, "the list of the properties is damaged"});
    return;
  }
  sizeOfList_ = bytes.size() - list.rest().size();
}

bool TnefProperties::readProperty(ListBytes& list, TnefNames& names) {
  const std::optional<uint16_t> type = list.number16();
  const std::optional<uint16_t> id = list.number16();
  if (!type || !id) return false;
  Row row{{*id, *type}, values_.size(), 0};
  if (*id < kFirstNamedId) {
    if (!readValues(list, row)) return false;
    addRow(row);
    return true;
  }
  const std::optional<PropertyName> name = readName(list);
  if (!name || !readValues(list, row)) return false;
  if (const std::optional<uint16_t> own = names.add(*id, *name)) {
    row.tag.id = *own;
    addRow(row);
  }
  return true;
}

std::optional<PropertyName> TnefProperties::readName(ListBytes& list) {
  const std::optional<std::string_view> set = list.filled(16);
  const std::optional<uint32_t> kind = list.number32();
  const std::optional<uint32_t> numberOrLength = list.number32();
  if (!set || !kind || !numberOrLength) return std::nullopt;
  PropertyName name;
  std::copy_n(set->begin(), name.set.size(), name.set.begin());
  if (*kind == 0) {
    name.number = *numberOrLength;
    return name;
  }
  const std::optional<std::string_view> text = list.filled(*numberOrLength);
  if (!text) return std::nullopt;
  for (size_t at = 0; at + 2 <= text->size(); at += 2) {
    const auto unit = static_cast<char16_t>(LoadLittleEndian<uint16_t>(mapi::RawBytes(*text) + at));
    if (unit == 0) break;
    name.name.push_back(unit);
  }
  return name;
}

bool TnefProperties::readValues(ListBytes& list, Row& row) {
  const uint16_t type = row.tag.type & ~kMultipleValues;
  const bool isMany = (row.tag.type & kMultipleValues) != 0;
  uint32_t count = 1;
  if (isMany || HasLength(type)) {
    const std::optional<uint32_t> declared = list.number32();
    if (!declared) return false;
    count = *declared;
  }
  for (uint32_t at = 0; at < count; ++at) {
    const std::optional<std::string_view> value = readValue(list, type);
    if (!value) return false;
    values_.push_back(*value);
    ++row.count;
  }
  return true;
}

std::optional<std::string_view> TnefProperties::readValue(ListBytes& list, uint16_t type) {
  if (const size_t width = WidthOfValue(type)) return list.filled(width);
  if (!HasLength(type)) return std::nullopt;
  const std::optional<uint32_t> length = list.number32();
  if (!length) return std::nullopt;
  const std::optional<std::string_view> bytes = list.filled(*length);
  if (!bytes) return std::nullopt;
  return WithoutTerminator(*bytes, type);
}

void TnefProperties::addRow(const Row& row) {
  if (rowOf_.emplace(row.tag.id, rows_.size()).second) rows_.push_back(row);
}

void TnefProperties::addView(PropertyTag tag, std::string_view value) {
  if (rowOf_.count(tag.id) != 0) return;
  addRow({tag, values_.size(), 1});
  values_.push_back(value);
}

void TnefProperties::add(PropertyTag tag, std::string value) {
  if (rowOf_.count(tag.id) == 0) addView(tag, made_.emplace_back(std::move(value)));
}

void TnefProperties::replaceView(PropertyTag tag, std::string_view value) {
  const auto at = rowOf_.find(tag.id);
  if (at == rowOf_.end()) return addView(tag, value);
  rows_[at->second] = {tag, values_.size(), 1};
  values_.push_back(value);
}

void TnefProperties::replace(PropertyTag tag, std::string value) {
  replaceView(tag, made_.emplace_back(std::move(value)));
}

const TnefProperties::Row* TnefProperties::find(uint16_t id) const {
  const auto at = rowOf_.find(id);
  return at == rowOf_.end() ? nullptr : &rows_[at->second];
}

std::string_view TnefProperties::valueOf(const Row& row) const {
  if (row.count == 0) return {};
  std::string_view value = values_[row.first];
  if (row.tag.type == kTypeObject) value.remove_prefix(std::min(value.size(), kInterfaceIdSize));
  return value;
}

std::vector<PropertyTag> TnefProperties::tags() {
  std::vector<PropertyTag> all;
  all.reserve(rows_.size());
  for (const Row& row : rows_) all.push_back(row.tag);
  return all;
}

std::optional<uint16_t> TnefProperties::typeOf(uint16_t id) {
  const Row* const row = find(id);
  if (row == nullptr) return std::nullopt;
  return row->tag.type;
}

std::optional<std::string_view> TnefProperties::view(uint16_t id) const {
  const Row* const row = find(id);
  if (row == nullptr) return std::nullopt;
  return valueOf(*row);
}

std::optional<uint64_t> TnefProperties::sizeOf(uint16_t id) {
  const Row* const row = find(id);
  if (row == nullptr) return std::nullopt;
  if ((row->tag.type & kMultipleValues) == 0) return valueOf(*row).size();
  uint64_t size = 0;
  for (size_t at = 0; at < row->count; ++at) size += values_[row->first + at].size();
  return size;
}

Outcome<std::string> TnefProperties::bytes(uint16_t id, size_t limit) {
  const std::optional<std::string_view> value = view(id);
  if (!value) return Trouble{TroubleKind::Missing, "the property is not there"};
  if (value->size() > limit) {
    return Trouble{TroubleKind::TooLarge, "more than " + std::to_string(limit) + " bytes"};
  }
  return std::string(*value);
}

Outcome<std::unique_ptr<ByteSource>> TnefProperties::stream(uint16_t id) {
  const std::optional<std::string_view> value = view(id);
  if (!value) return Trouble{TroubleKind::Missing, "the property is not there"};
  return SourceOf(*value);
}

Outcome<std::vector<std::string>> TnefProperties::values(uint16_t id, size_t limit) {
  const Row* const row = find(id);
  if (row == nullptr) return Trouble{TroubleKind::Missing, "the property is not there"};
  if (*sizeOf(id) > limit) {
    return Trouble{TroubleKind::TooLarge, "more than " + std::to_string(limit) + " bytes"};
  }
  if ((row->tag.type & kMultipleValues) == 0) {
    return std::vector<std::string>{std::string(valueOf(*row))};
  }
  const auto first = values_.begin() + static_cast<ptrdiff_t>(row->first);
  return std::vector<std::string>(first, first + static_cast<ptrdiff_t>(row->count));
}

RowsOfTable ReadTable(std::string_view bytes) {
  RowsOfTable table;
  ListBytes list(bytes);
  table.declared = list.number32().value_or(0);
  std::string_view rest = list.rest();
  for (uint32_t at = 0; at < table.declared && !rest.empty(); ++at) {
    TnefNames names;
    TnefProperties row;
    row.readList(rest, names);
    const std::optional<size_t> size = row.sizeOfList();
    table.rows.push_back(rest.substr(0, size.value_or(rest.size())));
    if (!size) break;
    rest.remove_prefix(*size);
  }
  return table;
}

}  // namespace tarn::archive::tnef
