#include "pststore/StoreObjects.h"

#include "pststore/Errors.h"

namespace pststore {

namespace {

constexpr ulong nid_type_mask = 0x1F;
constexpr ulong nid_type_folder = 0x02;
constexpr ulong nid_type_contents_table = 0x0E;
constexpr ulong nid_attachment_table = 0x671;

constexpr ushort prop_attach_long_filename = 0x3707;
constexpr ushort prop_attach_filename = 0x3704;

std::shared_ptr<table> copy_table(const std::shared_ptr<table>& source) {
  return source == nullptr ? nullptr : make_kernel_shared<table>(*source);
}

// The place after the last entry of the tree.
btree_iter_impl<ulong, node_info> end_of(const nbt_page& root) {
  btree_iter_impl<ulong, node_info> end;
  root.last(end);
  ++end.leaf_pos;
  return end;
}

}  // namespace

// All copies go into the first slot, and the last table of the source stays there.
folder::folder(const folder& other) : context_(other.context_), bag_(other.bag_) {
  for (const std::shared_ptr<table>& source : other.tables_) {
    if (source != nullptr) tables_[0] = copy_table(source);
  }
}

folder& folder::operator=(const folder& other) {
  if (this != &other) *this = folder(other);
  return *this;
}

message::message(const message& other)
    : bag_(other.bag_), tables_{copy_table(other.tables_[0]), copy_table(other.tables_[1])} {}

message& message::operator=(const message& other) {
  if (this != &other) *this = message(other);
  return *this;
}

bool folder_iterator::is_end(const position& at) const { return at == end_; }

void folder_iterator::skip_others(position& at) const {
  while (!is_end(at)) {
    const node_info& info = at.leaf->get_value(at.leaf_pos);
    if ((info.id & nid_type_mask) == nid_type_folder) return;
    at.leaf->next(at);
  }
}

folder_iterator& folder_iterator::operator++() {
  if (is_end(current_)) throw std::out_of_range("folder iterator at its end");
  position following = current_;
  following.leaf->next(following);
  skip_others(following);
  current_ = std::move(following);
  return *this;
}

folder_iterator folder_begin(const std::shared_ptr<db_context>& context) {
  btree_iter_impl<ulong, node_info> current;
  context->read_nbt_root()->first(current);
  folder_iterator begin(std::move(current), end_of(*context->read_nbt_root()), context);
  begin.skip_others(begin.current_);
  return begin;
}

folder_iterator folder_end(const std::shared_ptr<db_context>& context) {
  const btree_iter_impl<ulong, node_info> end = end_of(*context->read_nbt_root());
  return folder_iterator(end, end, context);
}

folder make_folder(const folder_iterator& at) {
  if (at.is_end(at.current_)) throw std::out_of_range("folder iterator at its end");
  const node_info& info = at.current_.leaf->get_value(at.current_.leaf_pos);
  return folder(at.context_, property_bag(node(at.context_, info)));
}

const std::shared_ptr<table>& get_contents_table(const folder& owner) {
  std::shared_ptr<table>& slot = owner.tables_[0];
  if (slot == nullptr) {
    const ulong nid = (owner.get_id() & ~nid_type_mask) | nid_type_contents_table;
    slot = make_kernel_shared<table>(owner.context_->lookup_node(nid));
  }
  return slot;
}

property_bag make_message_bag(const message_iterator& at) {
  const ulong nid = at.row_.table->get_row_id(at.row_.row);
  return property_bag(at.context_->lookup_node(nid));
}

message make_message(const message_iterator& at) { return message(make_message_bag(at)); }

const std::shared_ptr<table>& get_attachment_table(const message& owner) {
  std::shared_ptr<table>& slot = owner.tables_[0];
  if (slot == nullptr) {
    slot = make_kernel_shared<table>(owner.bag_.get_node().lookup(nid_attachment_table));
  }
  return slot;
}

// Most messages have no table, and an exception for each would take longer than looking first.
ulong get_attachment_count(const message& owner) {
  if (owner.tables_[0] == nullptr && !owner.bag_.get_node().has(nid_attachment_table)) return 0;
  try {
    return static_cast<ulong>(get_attachment_table(owner)->size());
  } catch (const key_not_found<ulong>&) {
    return 0;
  }
}

// The table comes first, so that the iterator's copy of the node shares the loaded subnodes.
attachment_iterator attachment_begin(const message& owner) {
  const const_table_row_iter row = get_attachment_table(owner)->begin();
  return attachment_iterator(row, owner.get_property_bag().get_node());
}

attachment_iterator attachment_end(const message& owner) {
  const const_table_row_iter row = get_attachment_table(owner)->end();
  return attachment_iterator(row, owner.get_property_bag().get_node());
}

attachment make_attachment(const attachment_iterator& at) {
  const ulong id = at.row_.table->get_row_id(at.row_.row);
  return attachment(property_bag(at.message_node_.lookup(id)));
}

wstring get_filename(const attachment& source) {
  const property_bag& bag = source.get_property_bag();
  try {
    return bag.read_prop<wstring>(prop_attach_long_filename);
  } catch (const key_not_found<ushort>&) {
    return bag.read_prop<wstring>(prop_attach_filename);
  }
}

}  // namespace pststore
