#include "support/pst/PropertyContextBuilder.h"

#include "support/pst/PstBytes.h"

namespace tarn::test {

PropertyContextBuilder& PropertyContextBuilder::value(uint16_t id, uint16_t type,
                                                      std::string_view bytes) {
  values_[id] = {{type, std::string(bytes)}, {}, {}};
  return *this;
}

PropertyContextBuilder& PropertyContextBuilder::number(uint16_t id, uint16_t type,
                                                       uint64_t number) {
  return value(id, type, LeBytes(number, CellWidth(type)));
}

PropertyContextBuilder& PropertyContextBuilder::text(uint16_t id, std::u16string_view text) {
  return value(id, kTypeString, Utf16Bytes(text));
}

PropertyContextBuilder& PropertyContextBuilder::text(uint16_t id, std::string_view text) {
  return value(id, kTypeString8, text);
}

PropertyContextBuilder& PropertyContextBuilder::binary(uint16_t id, std::string_view bytes) {
  return value(id, kTypeBinary, bytes);
}

PropertyContextBuilder& PropertyContextBuilder::time(uint16_t id, uint64_t fileTime) {
  return number(id, kTypeTime, fileTime);
}

PropertyContextBuilder& PropertyContextBuilder::object(uint16_t id, uint32_t nid, uint32_t size) {
  return value(id, kTypeObject, LeBytes(nid, 4) + LeBytes(size, 4));
}

PropertyContextBuilder& PropertyContextBuilder::streamed(uint16_t id, uint16_t type,
                                                         PstNodeParts parts) {
  values_[id] = {{type, {}}, {}, std::move(parts)};
  return *this;
}

PropertyContextBuilder& PropertyContextBuilder::raw(uint16_t id, uint16_t type,
                                                    uint32_t valueOrId) {
  values_[id] = {{type, {}}, valueOrId, {}};
  return *this;
}

PropertyContextBuilder& PropertyContextBuilder::without(uint16_t id) {
  values_.erase(id);
  return *this;
}

PropertyContextBuilder& PropertyContextBuilder::subnode(uint32_t nid, PstNodeParts parts) {
  subnodes_.push_back({nid, std::move(parts)});
  return *this;
}

PropertyContextBuilder& PropertyContextBuilder::shape(const BthShape& shape) {
  shape_ = shape;
  return *this;
}

const std::pair<uint16_t, std::string>* PropertyContextBuilder::find(uint16_t id) const {
  const auto found = values_.find(id);
  if (found == values_.end() || found->second.raw || found->second.stream) return nullptr;
  return &found->second.typed;
}

std::vector<std::pair<uint16_t, uint16_t>> PropertyContextBuilder::types() const {
  std::vector<std::pair<uint16_t, uint16_t>> types;
  for (const auto& [id, value] : values_) {
    if (find(id) != nullptr) types.emplace_back(id, value.typed.first);
  }
  return types;
}

PstNodeParts PropertyContextBuilder::build() const {
  PstNodeParts parts;
  parts.subnodes = subnodes_;
  HeapBuilder heap(layout_, kPropertyContext);
  const uint32_t header = heap.reserve(8);
  heap.setRoot(header);
  BthBuilder tree(2, 6, shape_);
  uint32_t streams = 0;
  for (const auto& [id, value] : values_) {
    const auto& [type, bytes] = value.typed;
    uint32_t field = 0;
    if (value.raw) {
      field = *value.raw;
    } else if (value.stream || bytes.size() > kMaxHeapAllocation) {
      field = ValueSubnode(streams++);
      const size_t pageSize = OffsetsOf(layout_).maxBlockData;
      parts.subnode(field, value.stream ? *value.stream : PstNodeParts::Stream(bytes, pageSize));
    } else if (InlineWidth(type) != 0) {
      field = static_cast<uint32_t>(GetLe(bytes, 0, std::min<size_t>(bytes.size(), 4)));
    } else {
      field = heap.add(bytes);
    }
    tree.add(id, LeBytes(type, 2) + LeBytes(field, 4));
  }
  tree.write(heap, header);
  parts.pages = heap.pages();
  return parts;
}

}  // namespace tarn::test
