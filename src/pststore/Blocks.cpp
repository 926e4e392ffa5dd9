#include "pststore/Blocks.h"

#include <cstring>
#include <stdexcept>

#include "pststore/DbContext.h"

namespace pststore {

void block::mark_modified(bool internal) {
  if (modified_) return;
  id_ = get_context()->alloc_bid(internal);
  modified_ = true;
  size_ = 0;
  address_ = 0;
}

// Blocks of data ------------------------------------------------------------------------------

external_block::external_block(const std::shared_ptr<db_context>& context, ulonglong max_size,
                               ulonglong size)
    : data_block(context, block_info(), size), max_size_(max_size), buffer_(size) {
  mark_modified(false);
}

// Decoding is done once, in place.
byte_vector& external_block::decoded() const {
  if (encoding_.method != disk::crypt_method::none) {
    disk::decode(std::span(buffer_).first(total_size_), encoding_);
    encoding_ = {};
  }
  return buffer_;
}

size_t external_block::read_raw(std::span<unsigned char> destination, ulonglong offset) {
  const size_t count = clip(destination.size(), offset);
  if (count != 0) std::memcpy(destination.data(), decoded().data() + offset, count);
  return count;
}

std::shared_ptr<external_block> external_block::get_page(size_t index) {
  if (index != 0) throw std::out_of_range("index > 0");
  return shared_from_this();
}

// Blocks of blocks ----------------------------------------------------------------------------

extended_block::extended_block(const std::shared_ptr<db_context>& context, const block_info& info,
                               ulonglong extent, const extended_limits& limits,
                               extended_content&& content)
    : data_block(context, info, content.total_size),
      tree_part(extent),
      limits_(limits),
      block_ids_(std::move(content.ids)),
      child_blocks_(block_ids_.size()) {}

extended_block::extended_block(const std::shared_ptr<db_context>& context,
                               const extended_limits& limits, ulonglong total_size)
    : data_block(context, block_info(), total_size),
      limits_(limits),
      block_ids_(detail::divide_up(total_size, limits.child_max_total_size)),
      child_blocks_(block_ids_.size()) {
  mark_modified(true);
}

size_t extended_block::get_page_count() const {
  const ulonglong page_size = limits_.child_max_total_size / limits_.child_max_page_count;
  return detail::divide_up(total_size_, page_size);
}

std::shared_ptr<external_block> extended_block::get_page(size_t index) {
  return get_child_block(index / limits_.child_max_page_count)
      ->get_page(index % limits_.child_max_page_count);
}

size_t extended_block::read_raw(std::span<unsigned char> destination, ulonglong offset) {
  destination = destination.first(clip(destination.size(), offset));
  return visit_children(destination.size(), offset,
                        [&](ulonglong index, ulonglong at, size_t done) {
                          return get_child_block(index)->read_raw(destination.subspan(done), at);
                        });
}

size_t extended_block::pass_raw(std::span<unsigned char> destination, ulonglong offset) {
  destination = destination.first(clip(destination.size(), offset));
  return visit_children(destination.size(), offset,
                        [&](ulonglong index, ulonglong at, size_t done) {
                          return pass_child_block(index)->pass_raw(destination.subspan(done), at);
                        });
}

size_t extended_block::skip_raw(size_t count, ulonglong offset) {
  count = clip(count, offset);
  return visit_children(count, offset, [&](ulonglong index, ulonglong at, size_t done) {
    return pass_child_block(index)->skip_raw(count - done, at);
  });
}

std::shared_ptr<data_block>& extended_block::get_child_block(ulonglong index) {
  if (index >= child_blocks_.size()) {
    throw std::out_of_range("index >= m_child_blocks.size()");
  }
  std::shared_ptr<data_block>& child = child_blocks_[index];
  if (child == nullptr) {
    const ulonglong id = block_ids_[index];
    child = id != 0 ? load_child(id) : make_hole();
  }
  return child;
}

std::shared_ptr<data_block>& extended_block::pass_child_block(ulonglong index) {
  std::shared_ptr<data_block>& child = get_child_block(index);
  if (index != passed_ && passed_ < child_blocks_.size()) child_blocks_[passed_] = nullptr;
  passed_ = index;
  return child;
}

// A block can contain itself: the depth ends that.
std::shared_ptr<data_block> extended_block::load_child(ulonglong id) {
  const std::shared_ptr<db_context> context = get_context();
  std::shared_ptr<data_block> child = context->read_data_block(id);
  if (child->is_internal()) {
    adopt(*context, static_cast<extended_block&>(*child), max_extended_depth);
  }
  return child;
}

// A hole is as large as its place, wherever the stream ends.
std::shared_ptr<data_block> extended_block::make_hole() {
  const std::shared_ptr<db_context> context = get_context();
  if (limits_.level == 1) {
    return context->create_external_block(context, limits_.child_max_total_size);
  }
  return context->create_extended_block(context, limits_.child_max_total_size);
}

// Blocks of subnodes --------------------------------------------------------------------------

subnode_block& subnode_nonleaf_block::load_child(ulong pos) const {
  const ulonglong id = entries_.get_value(pos);
  std::shared_ptr<subnode_block>& child = children_[pos];
  if (child == nullptr) {
    const std::shared_ptr<db_context> context = get_context();
    auto loaded = context->read_subnode_block(id);
    // The empty block is no block of the file, and is made anew for everybody who names it.
    if (loaded->get_id() != 0) adopt_once(*context, get_id(), *loaded, loaded->get_id());
    child = std::move(loaded);
  }
  return *child;
}

}  // namespace pststore
