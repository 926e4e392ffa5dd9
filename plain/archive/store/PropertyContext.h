// PropertyContext.h - the properties of a node: a property context (MS-PST 2.3.3), read as
// published. The store layer's property_bag takes every record of an index for 8 bytes, as the
// exports must; here those of non-leaves have 6.
#ifndef TARN_ARCHIVE_STORE_PROPERTYCONTEXT_H
#define TARN_ARCHIVE_STORE_PROPERTYCONTEXT_H

#include <vector>

#include "archive/store/StoredProperties.h"

namespace tarn::archive::store {

class PropertyContext final : public StoredProperties {
 public:
  // Throws what the store throws for a node that is no property context or whose index has no
  // readable root. Of a deeper index, parts that cannot be read are left out.
  explicit PropertyContext(const pststore::node& data);

  std::vector<mapi::PropertyTag> tags() override;
  std::optional<StoredValue> find(uint16_t id) const override;
  bool isWhole() const override { return isWhole_; }

  const pststore::node& node() const { return heap()->get_node(); }

 private:
  struct Record {
    uint16_t id = 0;
    uint16_t type = 0;
    uint32_t value = 0;
  };

  void readIndex();
  void readPart(uint32_t hid, unsigned level, uint64_t& budget);

  std::vector<Record> records_;  // by id
  bool isWhole_ = true;
};

}  // namespace tarn::archive::store

#endif
