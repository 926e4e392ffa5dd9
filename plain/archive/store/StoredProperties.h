// StoredProperties.h - what property contexts and rows of tables have in common: values that are in
// the entry itself, in the heap, or in a subnode.
#ifndef TARN_ARCHIVE_STORE_STOREDPROPERTIES_H
#define TARN_ARCHIVE_STORE_STOREDPROPERTIES_H

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "archive/mapi/MapiMessage.h"
#include "pststore/Heap.h"
#include "pststore/Node.h"

namespace tarn::archive::store {

struct StoredValue {
  uint16_t type = 0;
  uint8_t fixedSize = 0;           // bytes of a value that is in the entry itself; else 0
  std::array<char, 8> fixed = {};  // the value
  uint32_t hnid = 0;               // where it is: an allocation or a subnode; 0 is empty

  std::string_view fixedBytes() const { return {fixed.data(), fixedSize}; }
};

// The value of an entry: `bytes` are those of the entry, `inlineWidth` how many of them a value of
// this type takes, 0 where they name a place.
StoredValue MakeStoredValue(uint16_t type, std::string_view bytes, size_t inlineWidth);

// Both throw what the store throws. TooLarge beyond the limit.
uint64_t SizeOfValue(const pststore::heap_impl& heap, const StoredValue& value);
Outcome<std::string> BytesOfValue(const pststore::heap_impl& heap, const StoredValue& value,
                                  size_t limit);

// The subnode that an object (kTypeObject) names.
pststore::node NodeOfObject(const pststore::heap_impl& heap, const StoredValue& value);

// The data of a node as a stream. Damage ends it with `what` as the reason.
std::unique_ptr<ByteSource> SourceOfNode(const pststore::node& data, std::string what);

// A set of properties over a heap. It keeps the store open.
class StoredProperties : public mapi::PropertySet {
 public:
  explicit StoredProperties(pststore::heap_ptr heap) : heap_(std::move(heap)) {}

  std::optional<uint16_t> typeOf(uint16_t id) override;
  std::optional<uint64_t> sizeOf(uint16_t id) override;
  Outcome<std::string> bytes(uint16_t id, size_t limit) override;
  Outcome<std::unique_ptr<ByteSource>> stream(uint16_t id) override;
  Outcome<std::vector<std::string>> values(uint16_t id, size_t limit) override;
  std::vector<Trouble> troubles() override;

  const pststore::heap_ptr& heap() const { return heap_; }

  // The stored form; none for a property that is not there. Throws what the store throws.
  virtual std::optional<StoredValue> find(uint16_t id) const = 0;
  // False for a set of which a part cannot be read: what is not there may be in that part.
  virtual bool isWhole() const = 0;

 private:
  Trouble absence(uint16_t id) const;

  pststore::heap_ptr heap_;
};

}  // namespace tarn::archive::store

#endif
