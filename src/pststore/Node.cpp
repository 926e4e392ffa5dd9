#include "pststore/Node.h"

#include <stdexcept>

#include "pststore/DbContext.h"
#include "pststore/Disk.h"

namespace pststore {

// What a node knows of itself and what it has loaded so far.
class node_impl : public std::enable_shared_from_this<node_impl> {
 public:
  node_impl(const std::shared_ptr<db_context>& context_, const node_info& info)
      : id(info.id), data_bid(info.data_bid), subnode_bid(info.subnode_bid), context(context_) {}

  node_impl(const std::shared_ptr<node_impl>& owner, const subnode_info& info)
      : id(info.id),
        data_bid(info.data_bid),
        subnode_bid(info.subnode_bid),
        container(owner),
        context(owner->context) {}

  const std::shared_ptr<data_block>& get_data_block() {
    if (data == nullptr) data = context->read_data_block(data_bid);
    return data;
  }

  const std::shared_ptr<subnode_block>& get_subnode_block() {
    if (subnodes == nullptr) subnodes = context->read_subnode_block(subnode_bid);
    return subnodes;
  }

  ulong id;
  ulonglong data_bid;
  ulonglong subnode_bid;
  std::shared_ptr<data_block> data;
  std::shared_ptr<subnode_block> subnodes;
  std::shared_ptr<node_impl> container;  // the node that a subnode belongs to
  std::shared_ptr<db_context> context;
};

node::node(const std::shared_ptr<db_context>& context, const node_info& info)
    : impl_(make_kernel_shared<node_impl>(context, info)) {}

node::node(std::shared_ptr<node_impl> impl) : impl_(std::move(impl)) {}

node::node(const node& other) : impl_(make_kernel_shared<node_impl>(*other.impl_)) {}

node& node::operator=(const node& other) {
  if (this != &other) impl_ = make_kernel_shared<node_impl>(*other.impl_);
  return *this;
}

node::~node() = default;

ulong node::get_id() const { return impl_->id; }

ulonglong node::size() const { return impl_->get_data_block()->get_total_size(); }

size_t node::get_page_count() const { return impl_->get_data_block()->get_page_count(); }

ulonglong node::get_page_size(size_t page) const {
  return impl_->get_data_block()->get_page(page)->get_total_size();
}

// A value may end exactly where the page ends, whatever the text of the exception says.
template <typename T>
T node::read(size_t page, size_t offset) const {
  const std::shared_ptr<external_block> block = impl_->get_data_block()->get_page(page);
  if (offset >= block->get_total_size()) throw std::out_of_range("offset >= size()");
  if (offset + sizeof(T) > block->get_total_size()) {
    throw std::out_of_range("sizeof(T) + offset >= size()");
  }
  return disk::load<T>(block->get_bytes(), offset);
}

template unsigned char node::read<unsigned char>(size_t page, size_t offset) const;
template ushort node::read<ushort>(size_t page, size_t offset) const;
template ulong node::read<ulong>(size_t page, size_t offset) const;
template ulonglong node::read<ulonglong>(size_t page, size_t offset) const;

size_t node::read(std::span<unsigned char> destination, ulonglong offset) const {
  return impl_->get_data_block()->read_raw(destination, offset);
}

size_t node::pass(std::span<unsigned char> destination, ulonglong offset) const {
  return impl_->get_data_block()->pass_raw(destination, offset);
}

size_t node::skip(size_t count, ulonglong offset) const {
  return impl_->get_data_block()->skip_raw(count, offset);
}

size_t node::read(std::span<unsigned char> buffer, size_t page, size_t offset) const {
  if (buffer.empty()) return 0;
  const std::shared_ptr<external_block> block = impl_->get_data_block()->get_page(page);
  if (offset >= block->get_total_size()) throw std::out_of_range("offset >= size()");
  return block->read_raw(buffer, offset);
}

node node::lookup(ulong sub_id) const {
  const std::shared_ptr<subnode_block>& subnodes = impl_->get_subnode_block();
  const std::shared_ptr<node_impl> owner = impl_;
  return node(make_kernel_shared<node_impl>(owner, subnodes->lookup(sub_id)));
}

bool node::has(ulong sub_id) const { return impl_->get_subnode_block()->find(sub_id) != nullptr; }

std::shared_ptr<data_block> node::get_data_block() const { return impl_->get_data_block(); }

std::shared_ptr<subnode_block> node::get_subnode_block() const {
  return impl_->get_subnode_block();
}

const std::shared_ptr<db_context>& node::get_context() const { return impl_->context; }

}  // namespace pststore
