// PropertyBag.h - a property context: the properties of a folder, message or attachment, in a heap
// of their own (MS-PST, 2.3.3).
//
//   BTH leaf record:  0  2  property id
//                     2  2  wPropType, the property type
//                     4  4  the value if it is fixed and takes at most 4 bytes, else the id of the
//                           allocation or subnode that holds it; id 0 is an empty value
//
// A bag never changes, and keeps the store open. Copies read the tree anew and share nothing but
// blocks that were loaded. A node that is no property context is refused with sig_mismatch.
#ifndef TARN_PSTSTORE_PROPERTYBAG_H
#define TARN_PSTSTORE_PROPERTYBAG_H

#include <memory>

#include "pststore/Bth.h"
#include "pststore/Node.h"
#include "pststore/PropertyObject.h"
#include "pststore/Types.h"

namespace pststore {

class property_bag final : public const_property_object {
 public:
  explicit property_bag(node data);
  property_bag(const property_bag& other);
  property_bag& operator=(const property_bag& other);
  property_bag(property_bag&&) noexcept = default;
  property_bag& operator=(property_bag&&) noexcept = default;
  ~property_bag() override = default;

  vector<ushort> get_prop_list() const override;
  ushort get_prop_type(ushort id) const override;
  bool prop_exists(ushort id) const override;
  ulonglong size(ushort id) const override;
  hnid_stream_device open_prop_stream(ushort id) const override;

  // The lower bytes of the entry's value field. An id of an allocation or subnode comes as it is.
  unsigned char get_value_1(ushort id) const override;
  ushort get_value_2(ushort id) const override;
  ulong get_value_4(ushort id) const override;

  // The first 8 bytes of the value; database_corrupt for a shorter one.
  ulonglong get_value_8(ushort id) const override;
  byte_vector get_value_variable(ushort id) const override;

  const node& get_node() const { return tree_->get_heap()->get_node(); }

 private:
  const disk::prop_entry& lookup(ushort id) const;

  std::shared_ptr<prop_tree> tree_;
};

}  // namespace pststore

#endif
