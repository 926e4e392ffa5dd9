// PropertyContextBuilder.h - writes a property context: typed values under 16-bit ids
// (MS-PST 2.3.3).
//
// Values of up to 4 bytes are in the record, others in the heap, and those of more than 3580
// bytes in a subnode of their own. A second value under an id replaces the first.
#ifndef TARN_TESTS_SUPPORT_PST_PROPERTYCONTEXTBUILDER_H
#define TARN_TESTS_SUPPORT_PST_PROPERTYCONTEXTBUILDER_H

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "support/pst/BthBuilder.h"
#include "support/pst/PropertyTypes.h"
#include "support/pst/PstNodeParts.h"

namespace tarn::test {

// The subnode of the n-th value or cell of a node that does not fit into its heap.
inline uint32_t ValueSubnode(uint32_t n) { return ((0x40 + n) << 5) | 0x1F; }

class PropertyContextBuilder {
 public:
  explicit PropertyContextBuilder(PstLayout layout, const BthShape& shape = {})
      : layout_(layout), shape_(shape) {}

  // The value's bytes in little-endian; of a number without a heap id up to 4.
  PropertyContextBuilder& value(uint16_t id, uint16_t type, std::string_view bytes);
  PropertyContextBuilder& number(uint16_t id, uint16_t type, uint64_t value);
  PropertyContextBuilder& text(uint16_t id, std::u16string_view text);  // PtypString
  PropertyContextBuilder& text(uint16_t id, std::string_view text);     // PtypString8
  PropertyContextBuilder& binary(uint16_t id, std::string_view bytes);
  PropertyContextBuilder& time(uint16_t id, uint64_t fileTime);
  // PtypObject: a subnode of this node, and its size.
  PropertyContextBuilder& object(uint16_t id, uint32_t nid, uint32_t size);

  // In a subnode, whatever its size.
  PropertyContextBuilder& streamed(uint16_t id, uint16_t type, PstNodeParts parts);
  // Deviating: this value or heap or node id of the record.
  PropertyContextBuilder& raw(uint16_t id, uint16_t type, uint32_t valueOrId);
  PropertyContextBuilder& without(uint16_t id);
  // A subnode that no value needs to name.
  PropertyContextBuilder& subnode(uint32_t nid, PstNodeParts parts);
  PropertyContextBuilder& shape(const BthShape& shape);

  bool has(uint16_t id) const { return values_.contains(id); }
  // Type and bytes of a value given with value or a short form of it; null for others.
  const std::pair<uint16_t, std::string>* find(uint16_t id) const;
  // Id and type of every value that find gives.
  std::vector<std::pair<uint16_t, uint16_t>> types() const;

  PstNodeParts build() const;

 private:
  struct Value {
    std::pair<uint16_t, std::string> typed;
    std::optional<uint32_t> raw;
    std::optional<PstNodeParts> stream;
  };

  PstLayout layout_;
  BthShape shape_;
  std::map<uint16_t, Value> values_;
  std::vector<PstSubnode> subnodes_;
};

}  // namespace tarn::test

#endif
