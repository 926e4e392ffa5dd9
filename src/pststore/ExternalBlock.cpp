#include <algorithm>
#include <cstring>

#include "pststore/Blocks.h"
#include "pststore/DbContext.h"

namespace pststore {

void block::mark_modified(bool internal) {
  if (modified_) return;
  id_ = get_context()->alloc_bid(internal);
  modified_ = true;
  size_ = 0;
  address_ = 0;
}

external_block::external_block(const std::shared_ptr<db_context>& context, ulonglong max_size,
                               ulonglong size)
    : data_block(context, block_info(), size), max_size_(max_size), buffer_(size) {
  mark_modified(false);
}

// Decoding is done once, in place.
byte_vector& external_block::decoded() const {
  if (encoding_.method != 0) {
    disk::decode(buffer_.data(), total_size_, encoding_);
    encoding_ = {};
  }
  return buffer_;
}

size_t external_block::read_raw(void* destination, ulonglong count, ulonglong offset) {
  count = clip(count, offset);
  if (count != 0) std::memcpy(destination, decoded().data() + offset, count);
  return count;
}

size_t external_block::pass_raw(void* destination, ulonglong count, ulonglong offset) {
  return destination == nullptr ? clip(count, offset) : read_raw(destination, count, offset);
}

size_t external_block::write_raw(const void* source, ulonglong count, ulonglong offset,
                                 std::shared_ptr<data_block>& result) {
  const std::shared_ptr<external_block> self = shared_from_this();
  if (self.use_count() >= 3) {
    return make_kernel_shared<external_block>(*this)->write_raw(source, count, offset, result);
  }
  mark_modified(is_internal());
  count = clip(count, offset);
  if (count != 0) std::memcpy(decoded().data() + offset, source, count);
  result = self;
  return count;
}

std::shared_ptr<external_block> external_block::get_page(ulong index) {
  if (index != 0) throw std::out_of_range("index > 0");
  return shared_from_this();
}

ulonglong external_block::resize(ulonglong size, std::shared_ptr<data_block>& result) {
  const std::shared_ptr<external_block> self = shared_from_this();
  if (self.use_count() >= 3) return make_kernel_shared<external_block>(*this)->resize(size, result);
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

}  // namespace pststore
