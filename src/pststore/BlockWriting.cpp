// Writing to blocks in memory. The filter only reads; the tests hold what is promised here.
#include <algorithm>
#include <cstring>

#include "pststore/Blocks.h"
#include "pststore/DbContext.h"

namespace pststore {

namespace {

// An operation holds the block once more itself.
template <typename Block>
bool is_shared(const std::shared_ptr<Block>& self) {
  return self.use_count() >= 3;
}

}  // namespace

size_t external_block::write_raw(bytes_view source, ulonglong offset,
                                 std::shared_ptr<data_block>& result) {
  const std::shared_ptr<external_block> self = shared_from_this();
  if (is_shared(self)) {
    return make_kernel_shared<external_block>(*this)->write_raw(source, offset, result);
  }
  mark_modified(is_internal());
  const size_t count = clip(source.size(), offset);
  if (count != 0) std::memcpy(decoded().data() + offset, source.data(), count);
  result = self;
  return count;
}

ulonglong external_block::resize(ulonglong size, std::shared_ptr<data_block>& result) {
  const std::shared_ptr<external_block> self = shared_from_this();
  if (is_shared(self)) return make_kernel_shared<external_block>(*this)->resize(size, result);
  mark_modified(is_internal());
  const ulonglong new_size = std::min(size, max_size_);
  // What follows the data in a block of the file is no part of it and must not come to light.
  decoded().resize(std::min(total_size_, new_size));
  total_size_ = buffer_.size();
  buffer_.resize(new_size);
  total_size_ = new_size;
  if (size > max_size_) {
    const std::shared_ptr<db_context> context = get_context();
    return context->create_extended_block(context, self)->resize(size, result);
  }
  result = self;
  return total_size_;
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

size_t extended_block::write_raw(bytes_view source, ulonglong offset,
                                 std::shared_ptr<data_block>& result) {
  const std::shared_ptr<extended_block> self = shared_from_this();
  if (is_shared(self)) {
    return make_kernel_shared<extended_block>(*this)->write_raw(source, offset, result);
  }
  mark_modified(is_internal());
  source = source.first(clip(source.size(), offset));
  const auto write = [&](ulonglong index, ulonglong at, size_t done) {
    std::shared_ptr<data_block>& child = get_child_block(index);
    return child->write_raw(source.subspan(done), at, child);
  };
  const size_t count = visit_children(source.size(), offset, write);
  result = self;
  return count;
}

ulonglong extended_block::resize(ulonglong size, std::shared_ptr<data_block>& result) {
  const std::shared_ptr<extended_block> self = shared_from_this();
  const ulonglong place = limits_.child_max_total_size;
  const ulonglong max_size = limits_.max_page_count * place;
  const ulonglong pages =
      std::min<ulonglong>(detail::divide_up(size, place), limits_.max_page_count);
  if (pages < 2) return get_child_block(0)->resize(size, result);

  if (is_shared(self)) return make_kernel_shared<extended_block>(*this)->resize(size, result);
  mark_modified(is_internal());

  const ulonglong new_size = std::min(size, max_size);
  const size_t old_pages = child_blocks_.size();
  block_ids_.reserve(pages);
  child_blocks_.resize(pages);
  block_ids_.resize(pages);
  if (old_pages != 0 && old_pages < pages) resize_child(old_pages - 1, place);
  resize_child(pages - 1, new_size - (pages - 1) * place);
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

}  // namespace pststore
