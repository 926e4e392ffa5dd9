#include "pststore/PropertyBag.h"

#include "pststore/Disk.h"
#include "pststore/Errors.h"

namespace pststore {

namespace {

std::shared_ptr<prop_tree> open_properties(const heap_ptr& heap) {
  return open_bth<ushort, disk::prop_entry>(heap, heap->get_root_id());
}

}  // namespace

property_bag::property_bag(node data)
    : tree_(open_properties(open_heap(std::move(data), heap_sig_pc))) {}

property_bag::property_bag(const property_bag& other)
    : const_property_object(other), tree_(open_properties(open_heap(other.get_node()))) {}

property_bag& property_bag::operator=(const property_bag& other) {
  if (this != &other) *this = property_bag(other);
  return *this;
}

const disk::prop_entry& property_bag::lookup(ushort id) const {
  const disk::prop_entry* const entry = tree_->find(id);
  if (entry == nullptr) throw key_not_found<ushort>(id);
  return *entry;
}

vector<ushort> property_bag::get_prop_list() const {
  vector<ushort> ids;
  tree_->append_keys(ids);
  return ids;
}

ushort property_bag::get_prop_type(ushort id) const { return lookup(id).wPropType; }

bool property_bag::prop_exists(ushort id) const { return tree_->find(id) != nullptr; }

ulonglong property_bag::size(ushort id) const {
  return hnid_size(*tree_->get_heap(), get_value_4(id));
}

hnid_stream_device property_bag::open_prop_stream(ushort id) const {
  return open_hnid(*tree_->get_heap(), get_value_4(id));
}

unsigned char property_bag::get_value_1(ushort id) const {
  return static_cast<unsigned char>(lookup(id).value);
}

ushort property_bag::get_value_2(ushort id) const { return static_cast<ushort>(lookup(id).value); }

ulong property_bag::get_value_4(ushort id) const { return lookup(id).value; }

ulonglong property_bag::get_value_8(ushort id) const {
  const byte_vector bytes = get_value_variable(id);
  if (bytes.size() < sizeof(ulonglong)) throw database_corrupt("value of less than 8 bytes");
  return disk::load<ulonglong>(bytes, 0);
}

byte_vector property_bag::get_value_variable(ushort id) const {
  return read_hnid(*tree_->get_heap(), get_value_4(id));
}

}  // namespace pststore
