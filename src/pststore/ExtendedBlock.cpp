#include <algorithm>

#include "pststore/Blocks.h"
#include "pststore/DbContext.h"

namespace pststore {

namespace {

ulonglong divide_up(ulonglong dividend, ulonglong divisor) {
  return dividend / divisor + (dividend % divisor != 0 ? 1 : 0);
}

}  // namespace

extended_block::extended_block(const std::shared_ptr<db_context>& context, const block_info& info,
                               ulonglong extent, const extended_limits& limits,
                               ulonglong total_size, vector<ulonglong>&& ids)
    : data_block(context, info, total_size),
      tree_part(extent),
      limits_(limits),
      block_ids_(std::move(ids)),
      child_blocks_(block_ids_.size()) {}

extended_block::extended_block(const std::shared_ptr<db_context>& context,
                               const extended_limits& limits, ulonglong total_size)
    : data_block(context, block_info(), total_size),
      limits_(limits),
      block_ids_(divide_up(total_size, limits.child_max_total_size)),
      child_blocks_(block_ids_.size()) {
  mark_modified(true);
}

extended_block::extended_block(const std::shared_ptr<db_context>& context,
                               const extended_limits& limits, std::shared_ptr<data_block> child)
    : data_block(context, block_info(), child->get_total_size()),
      limits_(limits),
      block_ids_(1, child->get_id()),
      child_blocks_(1) {
  child_blocks_[0] = std::move(child);
  mark_modified(true);
}

ulong extended_block::get_page_count() const {
  const ulonglong page_size = limits_.child_max_total_size / limits_.child_max_page_count;
  return static_cast<ulong>(divide_up(total_size_, page_size));
}

std::shared_ptr<external_block> extended_block::get_page(ulong index) {
  return get_child_block(index / limits_.child_max_page_count)
      ->get_page(index % limits_.child_max_page_count);
}

// `read(index, to, left, at)` reads from a child: at most `left` bytes from its byte `at` on, to
// `to`, which is null when there is no destination.
template <typename Read>
size_t extended_block::read_children(void* destination, ulonglong count, ulonglong offset,
                                     const Read& read) {
  count = clip(count, offset);
  auto* const begin = static_cast<unsigned char*>(destination);
  // The position has 32 bits, like the total size in the file. In a stream made in memory, which
  // may be larger, it starts again from 0.
  ulong position = static_cast<ulong>(offset);
  size_t sum = 0;
  while (sum < count) {
    const size_t done =
        read(position / limits_.child_max_total_size, begin == nullptr ? begin : begin + sum,
             count - sum, position % limits_.child_max_total_size);
    if (done == 0) throw database_corrupt("child shorter than its place");
    position += static_cast<ulong>(done);
    sum += done;
  }
  return sum;
}

size_t extended_block::read_raw(void* destination, ulonglong count, ulonglong offset) {
  return read_children(destination, count, offset,
                       [this](ulonglong index, void* to, ulonglong left, ulonglong at) {
                         return get_child_block(index)->read_raw(to, left, at);
                       });
}

size_t extended_block::pass_raw(void* destination, ulonglong count, ulonglong offset) {
  return read_children(destination, count, offset,
                       [this](ulonglong index, void* to, ulonglong left, ulonglong at) {
                         const std::shared_ptr<data_block>& child = get_child_block(index);
                         if (index != passed_ && passed_ < child_blocks_.size()) {
                           child_blocks_[passed_] = nullptr;
                         }
                         passed_ = index;
                         return child->pass_raw(to, left, at);
                       });
}

size_t extended_block::write_raw(const void* source, ulonglong count, ulonglong offset,
                                 std::shared_ptr<data_block>& result) {
  const std::shared_ptr<extended_block> self = shared_from_this();
  if (self.use_count() >= 3) {
    return make_kernel_shared<extended_block>(*this)->write_raw(source, count, offset, result);
  }
  mark_modified(is_internal());
  count = clip(count, offset);
  const auto* next = static_cast<const unsigned char*>(source);
  ulong position = static_cast<ulong>(offset);
  size_t sum = 0;
  while (sum < count) {
    auto& child = get_child_block(position / limits_.child_max_total_size);
    const size_t done =
        child->write_raw(next, count - sum, position % limits_.child_max_total_size, child);
    if (done == 0) throw database_corrupt("child shorter than its place");
    next += done;
    position += static_cast<ulong>(done);
    sum += done;
  }
  result = self;
  return sum;
}

ulonglong extended_block::resize(ulonglong size, std::shared_ptr<data_block>& result) {
  const std::shared_ptr<extended_block> self = shared_from_this();
  const ulonglong max_size = limits_.max_page_count * limits_.child_max_total_size;
  const ulonglong pages =
      std::min<ulonglong>(divide_up(size, limits_.child_max_total_size), limits_.max_page_count);
  if (pages < 2) return get_child_block(0)->resize(size, result);

  if (self.use_count() >= 3) return make_kernel_shared<extended_block>(*this)->resize(size, result);
  mark_modified(is_internal());

  const ulonglong new_size = std::min(size, max_size);
  const size_t old_pages = child_blocks_.size();
  block_ids_.reserve(pages);
  child_blocks_.resize(pages);
  block_ids_.resize(pages);
  if (old_pages != 0 && old_pages < pages) {
    resize_child(old_pages - 1, limits_.child_max_total_size);
  }
  resize_child(pages - 1, new_size - (pages - 1) * limits_.child_max_total_size);
  total_size_ = new_size;
  if (size <= max_size) {
    result = self;
    return total_size_;
  }
  if (limits_.level == 2) throw can_not_resize("size > max_size");
  const std::shared_ptr<db_context> context = get_context();
  return context->create_extended_block(context, self)->resize(size, result);
}

// A child that has the size already counts as changed, too.
void extended_block::resize_child(ulonglong index, ulonglong size) {
  std::shared_ptr<data_block>& child = get_child_block(index);
  child->resize(size, child);
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

}  // namespace pststore
