#include "pststore/Database.h"

#include <algorithm>

#include "pststore/EntryParsing.h"

namespace pststore {

namespace {

// Of another type or another level than the one that was asked for.
void expect_page(bool expected, disk::page_type type) {
  if (expected) return;
  throw unexpected_page(type == disk::page_type_bbt ? "page_type != page_type_bbt"
                                                    : "page_type != page_type_nbt");
}

void expect_block(bool expected, const char* message) {
  if (!expected) throw unexpected_block(message);
}

bool is_internal_id(ulonglong bid) { return (bid & disk::bid_internal_bit) != 0; }

// Every level but 1 counts as the second.
template <typename T>
constexpr extended_limits limits_of(ushort level) {
  using layout = disk::layout<T>;
  if (level == 1) return {layout::max_block_data, 1, layout::max_extended_children, 1};
  return {layout::max_block_data * layout::max_extended_children, layout::max_extended_children,
          layout::max_extended_children, 2};
}

}  // namespace

template <typename T>
node database_impl<T>::lookup_node(ulong nid) {
  return node(shared_from_this(), lookup_node_info(nid));
}

template <typename T>
node_info database_impl<T>::lookup_node_info(ulong nid) {
  return read_nbt_root()->lookup(nid);
}

template <typename T>
block_info database_impl<T>::lookup_block_info(ulonglong bid) {
  if (bid == 0) return block_info();
  return read_bbt_root()->lookup(bid & ~disk::bid_ignored_bit);
}

template <typename T>
std::shared_ptr<bbt_page> database_impl<T>::read_bbt_root() {
  if (bbt_root_ == nullptr) bbt_root_ = read_bbt_page(reader_.get_bbt_root());
  return bbt_root_;
}

template <typename T>
std::shared_ptr<nbt_page> database_impl<T>::read_nbt_root() {
  if (nbt_root_ == nullptr) nbt_root_ = read_nbt_page(reader_.get_nbt_root());
  return nbt_root_;
}

// Pages ---------------------------------------------------------------------------------------

template <typename T>
page_bytes database_impl<T>::read_page(const page_info& info, disk::page_type type) {
  const page_bytes bytes = reader_.read_page(info);
  expect_page(bytes[layout::page_type] == type, type);
  return bytes;
}

template <typename T>
std::shared_ptr<bbt_page> database_impl<T>::read_bbt_page(const page_info& info) {
  const page_bytes bytes = read_page(info, disk::page_type_bbt);
  if (is_leaf(bytes)) return make_bbt_leaf(info, bytes);
  return make_bbt_nonleaf(info, bytes);
}

template <typename T>
std::shared_ptr<nbt_page> database_impl<T>::read_nbt_page(const page_info& info) {
  const page_bytes bytes = read_page(info, disk::page_type_nbt);
  if (is_leaf(bytes)) return make_nbt_leaf(info, bytes);
  return make_nbt_nonleaf(info, bytes);
}

template <typename T>
std::shared_ptr<nbt_leaf_page> database_impl<T>::read_nbt_leaf_page(const page_info& info) {
  const page_bytes bytes = read_page(info, disk::page_type_nbt);
  expect_page(is_leaf(bytes), disk::page_type_nbt);
  return make_nbt_leaf(info, bytes);
}

template <typename T>
std::shared_ptr<nbt_nonleaf_page> database_impl<T>::read_nbt_nonleaf_page(const page_info& info) {
  const page_bytes bytes = read_page(info, disk::page_type_nbt);
  expect_page(!is_leaf(bytes), disk::page_type_nbt);
  return make_nbt_nonleaf(info, bytes);
}

template <typename T>
std::shared_ptr<bbt_leaf_page> database_impl<T>::read_bbt_leaf_page(const page_info& info) {
  const page_bytes bytes = read_page(info, disk::page_type_bbt);
  expect_page(is_leaf(bytes), disk::page_type_bbt);
  return make_bbt_leaf(info, bytes);
}

template <typename T>
std::shared_ptr<bbt_nonleaf_page> database_impl<T>::read_bbt_nonleaf_page(const page_info& info) {
  const page_bytes bytes = read_page(info, disk::page_type_bbt);
  expect_page(!is_leaf(bytes), disk::page_type_bbt);
  return make_bbt_nonleaf(info, bytes);
}

template <typename T>
std::shared_ptr<bbt_leaf_page> database_impl<T>::make_bbt_leaf(const page_info& info,
                                                               const page_bytes& bytes) {
  return make_kernel_shared<bbt_leaf_page>(shared_from_this(), info, parse_bbt_leaf<T>(bytes));
}

template <typename T>
std::shared_ptr<nbt_leaf_page> database_impl<T>::make_nbt_leaf(const page_info& info,
                                                               const page_bytes& bytes) {
  return make_kernel_shared<nbt_leaf_page>(shared_from_this(), info, parse_nbt_leaf<T>(bytes));
}

template <typename T>
std::shared_ptr<bbt_nonleaf_page> database_impl<T>::make_bbt_nonleaf(const page_info& info,
                                                                     const page_bytes& bytes) {
  return make_kernel_shared<bbt_nonleaf_page>(shared_from_this(), info, bytes[layout::page_level],
                                              parse_nonleaf<T, ulonglong>(bytes));
}

template <typename T>
std::shared_ptr<nbt_nonleaf_page> database_impl<T>::make_nbt_nonleaf(const page_info& info,
                                                                     const page_bytes& bytes) {
  return make_kernel_shared<nbt_nonleaf_page>(shared_from_this(), info, bytes[layout::page_level],
                                              parse_nonleaf<T, ulong>(bytes));
}

// Blocks of data ------------------------------------------------------------------------------

template <typename T>
std::shared_ptr<block> database_impl<T>::read_block(const context_ptr& parent,
                                                    const block_info& info) {
  try {
    return read_data_block(parent, info);
  } catch (const unexpected_block&) {
    return read_subnode_block(parent, info);
  }
}

template <typename T>
std::shared_ptr<data_block> database_impl<T>::read_data_block(const context_ptr& parent,
                                                              const block_info& info) {
  if (!is_internal_id(info.id)) return read_external_block(parent, info);
  expect_block(reader_.read_block_type(info) == disk::block_type_extended,
               "extended block expected");
  return read_extended_block(parent, info);
}

template <typename T>
std::shared_ptr<extended_block> database_impl<T>::read_extended_block(const context_ptr& parent,
                                                                      const block_info& info) {
  expect_block(is_internal_id(info.id), "internal bid expected");
  const bytes_view bytes = reader_.read_references(info);
  const extended_limits limits = limits_of<T>(bytes[disk::internal_level]);
  extended_content content = parse_extended<T>(bytes);
  // All children but the last are full. Pages after the stream's end can be asked for, too.
  const ulonglong full_children = content.ids.empty() ? 0 : content.ids.size() - 1;
  reader_.expect_room(std::max(content.total_size, full_children * limits.child_max_total_size));
  return make_kernel_shared<extended_block>(parent, info, bytes.size(), limits, std::move(content));
}

template <typename T>
std::shared_ptr<external_block> database_impl<T>::read_external_block(const context_ptr& parent,
                                                                      const block_info& info) {
  byte_vector bytes;
  if (info.id != 0) {
    expect_block(!is_internal_id(info.id), "External BID expected");
    bytes = reader_.read_block(info);
  }
  // The empty block has no bytes, whatever else is said of it.
  return make_kernel_shared<external_block>(parent, info.id != 0 ? info : block_info(),
                                            layout::max_block_data, std::move(bytes),
                                            reader_.get_encoding(info));
}

template <typename T>
std::shared_ptr<external_block> database_impl<T>::create_external_block(const context_ptr& parent,
                                                                        ulonglong size) {
  reader_.count_made(size);
  return make_kernel_shared<external_block>(parent, layout::max_block_data, size);
}

template <typename T>
std::shared_ptr<extended_block> database_impl<T>::create_extended_block(const context_ptr& parent,
                                                                        ulonglong size) {
  const bool one_level = size <= limits_of<T>(2).child_max_total_size;
  auto made = make_kernel_shared<extended_block>(parent, limits_of<T>(one_level ? 1 : 2), size);
  reader_.count_made(made->get_child_ids().size() * sizeof(T));
  return made;
}

template <typename T>
std::shared_ptr<extended_block> database_impl<T>::create_extended_block(
    const context_ptr& parent, const std::shared_ptr<extended_block>& child) {
  return make_kernel_shared<extended_block>(parent, limits_of<T>(2), child);
}

template <typename T>
std::shared_ptr<extended_block> database_impl<T>::create_extended_block(
    const context_ptr& parent, const std::shared_ptr<external_block>& child) {
  return make_kernel_shared<extended_block>(parent, limits_of<T>(1), child);
}

// An AND, not an OR: all that is left of an internal block's id is the bit that says so.
template <typename T>
ulonglong database_impl<T>::alloc_bid(bool is_internal) {
  const ulonglong next = reader_.take_next_bid();
  return is_internal ? next & disk::bid_internal_bit : next;
}

// Blocks of subnodes --------------------------------------------------------------------------

template <typename T>
std::shared_ptr<subnode_block> database_impl<T>::read_subnode_block(const context_ptr& parent,
                                                                    const block_info& info) {
  if (info.id == 0) {
    // The empty block has no place, whatever else is said of it.
    return make_kernel_shared<subnode_leaf_block>(parent, block_info(), 0,
                                                  subnode_leaf_block::entries());
  }
  const bytes_view bytes = reader_.read_references(info);
  if (bytes[disk::internal_level] != 0) return make_subnode_nonleaf(parent, info, bytes);
  return make_subnode_leaf(parent, info, bytes);
}

template <typename T>
std::shared_ptr<subnode_leaf_block> database_impl<T>::read_subnode_leaf_block(
    const context_ptr& parent, const block_info& info) {
  const bytes_view bytes = reader_.read_references(info);
  expect_block(bytes[disk::internal_level] == 0, "psub->level != 0");
  return make_subnode_leaf(parent, info, bytes);
}

template <typename T>
std::shared_ptr<subnode_nonleaf_block> database_impl<T>::read_subnode_nonleaf_block(
    const context_ptr& parent, const block_info& info) {
  const bytes_view bytes = reader_.read_references(info);
  expect_block(bytes[disk::internal_level] != 0, "psub->level == 1");
  return make_subnode_nonleaf(parent, info, bytes);
}

template <typename T>
std::shared_ptr<subnode_leaf_block> database_impl<T>::make_subnode_leaf(const context_ptr& parent,
                                                                        const block_info& info,
                                                                        bytes_view bytes) {
  return make_kernel_shared<subnode_leaf_block>(parent, info, bytes.size(),
                                                parse_subnode_leaf<T>(bytes));
}

template <typename T>
std::shared_ptr<subnode_nonleaf_block> database_impl<T>::make_subnode_nonleaf(
    const context_ptr& parent, const block_info& info, bytes_view bytes) {
  return make_kernel_shared<subnode_nonleaf_block>(parent, info, bytes.size(),
                                                   parse_subnode_nonleaf<T>(bytes));
}

template <typename T>
void database_impl<T>::expect_tree_room(ulonglong bytes) {
  reader_.expect_tree_room(bytes);
}

template class database_impl<ulong>;
template class database_impl<ulonglong>;

std::shared_ptr<db_context> open_database(const char16_t* path) {
  try {
    return make_kernel_shared<database_impl<ulong>>(path);
  } catch (const invalid_format&) {
    // The first attempt has closed the file.
    return make_kernel_shared<database_impl<ulonglong>>(path);
  }
}

}  // namespace pststore
