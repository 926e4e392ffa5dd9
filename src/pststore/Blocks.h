// Blocks.h - the blocks of a store (MS-PST, 2.2.2.8).
//
//   external_block   bytes, at most 8180 (ANSI) or 8176 (Unicode) of them
//   extended_block   ids of blocks: of external ones (level 1) or of extended ones of level 1 (2);
//                    what they are is not compared with the level
//   subnode_block    a part of the tree of a node's subnodes: a leaf, or references to others
//
//   extended block:  0  1  block type, 1
//                    1  1  level
//                    2  2  count of ids
//                    4  4  bytes of data in the whole tree
//                    8     ids, 4 (ANSI) or 8 (Unicode) bytes each; id 0 is a hole, all zeros
//
//   subnode block:   0  1  block type, not read
//                    1  1  level, 0 for a leaf
//                    2  2  count of entries
//                          entries, from offset 4 (ANSI) or 8 (Unicode), of 4 or 8 bytes a part:
//                          leaf      node id, data block id, subnode block id
//                          non-leaf  node id, block id; the lower 32 bits of a node id count
//
// The context makes blocks; nodes and parent blocks own them. Blocks refer to their context weakly
// (TreePart.h). Children are loaded at the first need and kept.
//
// The bytes of a block are tested when it is read and decoded when somebody looks at them: one that
// is only passed on the way to others costs no decoding.
//
// Writing happens in memory only, and the filter never writes: BlockWriting.cpp has all of it, but
// for the blocks of zeros that are made for holes. An operation that writes leaves the block that
// holds the outcome in `result`: the block itself, a copy of it when others hold the block too, or
// a block of a higher level. `result` may be the pointer through which the block is held.
#ifndef TARN_PSTSTORE_BLOCKS_H
#define TARN_PSTSTORE_BLOCKS_H

#include <memory>
#include <span>

#include "pststore/BtreeNode.h"
#include "pststore/Codec.h"
#include "pststore/TreePart.h"
#include "pststore/Types.h"

namespace pststore {

class external_block;

// What every block knows of itself.
class block : public context_ref {
 public:
  virtual ~block() = default;

  // Whether it holds references instead of data.
  virtual bool is_internal() const = 0;

  ulonglong get_id() const { return id_; }
  ulonglong get_address() const { return address_; }
  // The size of its data in the file; 0 for a block made or changed in memory.
  ulonglong get_disk_size() const { return size_; }
  bool is_modified() const { return modified_; }

 protected:
  block(const std::shared_ptr<db_context>& context, const block_info& info)
      : context_ref(context), size_(info.size), id_(info.id), address_(info.address) {}
  block(const block&) = default;

  // From the first change on a block has an id of its own and no place in the file.
  void mark_modified(bool internal);

 private:
  bool modified_ = false;
  ulonglong size_;
  ulonglong id_;
  ulonglong address_;
};

// A stream of bytes in one block or in a tree of them, cut into pages of one external block each.
class data_block : public block {
 public:
  // Copies what is between `offset` and the stream's end, as far as there is room for it, and
  // returns how many bytes that is.
  virtual size_t read_raw(std::span<unsigned char> destination, ulonglong offset) = 0;

  // The same, for going from the start of the stream to its end once: blocks that have been passed
  // are let go.
  virtual size_t pass_raw(std::span<unsigned char> destination, ulonglong offset) = 0;
  // Passes `count` bytes that nobody wants. The blocks are read and tested all the same.
  virtual size_t skip_raw(size_t count, ulonglong offset) = 0;

  virtual size_t get_page_count() const = 0;

  // std::out_of_range for a page that there is not.
  virtual std::shared_ptr<external_block> get_page(size_t index) = 0;

  // The bytes of the stream.
  ulonglong get_total_size() const { return total_size_; }

  // Not used by the filter: writing. Replaces bytes, clipped as they are read: a stream does not
  // grow by this.
  virtual size_t write_raw(bytes_view source, ulonglong offset,
                           std::shared_ptr<data_block>& result) = 0;
  // Cuts or lengthens the stream and returns its new size. New bytes are zeros.
  virtual ulonglong resize(ulonglong size, std::shared_ptr<data_block>& result) = 0;

 protected:
  data_block(const std::shared_ptr<db_context>& context, const block_info& info,
             ulonglong total_size)
      : block(context, info), total_size_(total_size) {}
  data_block(const data_block&) = default;

  // How many of `count` bytes are between `offset` and the stream's end.
  size_t clip(size_t count, ulonglong offset) const {
    if (offset >= total_size_) return 0;
    return count < total_size_ - offset ? count : total_size_ - offset;
  }

  ulonglong total_size_;
};

class external_block final : public data_block,
                             public std::enable_shared_from_this<external_block> {
 public:
  // A block of the file, as it is encoded there. `extent` holds at least info.size bytes; it may
  // hold padding and trailer.
  external_block(const std::shared_ptr<db_context>& context, const block_info& info,
                 ulonglong max_size, byte_vector&& extent, disk::encoding encoding)
      : data_block(context, info, info.size),
        max_size_(max_size),
        buffer_(std::move(extent)),
        encoding_(encoding) {}
  // A new block of zeros.
  external_block(const std::shared_ptr<db_context>& context, ulonglong max_size, ulonglong size);
  external_block(const external_block&) = default;

  bool is_internal() const override { return false; }
  size_t read_raw(std::span<unsigned char> destination, ulonglong offset) override;
  size_t pass_raw(std::span<unsigned char> destination, ulonglong offset) override {
    return read_raw(destination, offset);
  }
  size_t skip_raw(size_t count, ulonglong offset) override { return clip(count, offset); }
  size_t get_page_count() const override { return 1; }
  std::shared_ptr<external_block> get_page(size_t index) override;

  // The bytes themselves, without padding; they live as long as the block and until it is written.
  bytes_view get_bytes() const { return bytes_view(decoded()).first(total_size_); }

  size_t write_raw(bytes_view source, ulonglong offset,
                   std::shared_ptr<data_block>& result) override;
  ulonglong resize(ulonglong size, std::shared_ptr<data_block>& result) override;

 private:
  byte_vector& decoded() const;

  ulonglong max_size_;
  mutable byte_vector buffer_;
  mutable disk::encoding encoding_;  // of what the buffer holds
};

// What follows from a block's layout and level.
struct extended_limits {
  ulonglong child_max_total_size = 0;  // bytes under one child
  ulong child_max_page_count = 0;      // pages under one child
  ulong max_page_count = 0;            // children
  ushort level = 0;                    // 1 or 2
};

// What an extended block of the file says. Neither the total size nor the number of ids is compared
// with the limits.
struct extended_content {
  ulonglong total_size = 0;
  vector<ulonglong> ids;
};

namespace detail {

constexpr ulonglong divide_up(ulonglong dividend, ulonglong divisor) {
  return dividend / divisor + (dividend % divisor != 0 ? 1 : 0);
}

}  // namespace detail

class extended_block final : public data_block,
                             public tree_part,
                             public std::enable_shared_from_this<extended_block> {
 public:
  // At most this many extended blocks lie one below the other, whatever their levels say.
  static constexpr ulong max_extended_depth = 8;

  // A block of the file, in which it takes `extent` bytes.
  extended_block(const std::shared_ptr<db_context>& context, const block_info& info,
                 ulonglong extent, const extended_limits& limits, extended_content&& content);
  // A new block of as many holes as `total_size` asks for.
  extended_block(const std::shared_ptr<db_context>& context, const extended_limits& limits,
                 ulonglong total_size);
  // Not used by the filter: a new block over one child.
  extended_block(const std::shared_ptr<db_context>& context, const extended_limits& limits,
                 std::shared_ptr<data_block> child);
  extended_block(const extended_block&) = default;

  bool is_internal() const override { return true; }
  size_t read_raw(std::span<unsigned char> destination, ulonglong offset) override;
  size_t pass_raw(std::span<unsigned char> destination, ulonglong offset) override;
  size_t skip_raw(size_t count, ulonglong offset) override;
  size_t get_page_count() const override;
  std::shared_ptr<external_block> get_page(size_t index) override;

  ushort get_level() const { return limits_.level; }
  const vector<ulonglong>& get_child_ids() const { return block_ids_; }

  size_t write_raw(bytes_view source, ulonglong offset,
                   std::shared_ptr<data_block>& result) override;
  ulonglong resize(ulonglong size, std::shared_ptr<data_block>& result) override;

 private:
  // Goes through `count` bytes, child by child. `visit(index, at, done)` is told the child, the
  // place in it and how many bytes came before; it answers how many the child had from there on.
  template <typename Visit>
  size_t visit_children(size_t count, ulonglong offset, const Visit& visit);
  std::shared_ptr<data_block>& get_child_block(ulonglong index);
  // The same, and the child that was passed last is let go.
  std::shared_ptr<data_block>& pass_child_block(ulonglong index);
  std::shared_ptr<data_block> make_hole();
  std::shared_ptr<data_block> load_child(ulonglong id);
  void resize_child(ulonglong index, ulonglong size);

  extended_limits limits_;
  vector<ulonglong> block_ids_;
  vector<std::shared_ptr<data_block>> child_blocks_;
  ulonglong passed_ = 0;  // the child that was passed last
};

template <typename Visit>
size_t extended_block::visit_children(size_t count, ulonglong offset, const Visit& visit) {
  // The position has 32 bits, like the total size in the file. In a stream made in memory, which
  // may be larger, it starts again from 0.
  ulong position = static_cast<ulong>(offset);
  size_t sum = 0;
  while (sum < count) {
    const size_t done = visit(position / limits_.child_max_total_size,
                              position % limits_.child_max_total_size, sum);
    if (done == 0) throw database_corrupt("child shorter than its place");
    position += static_cast<ulong>(done);
    sum += done;
  }
  return sum;
}

class subnode_block : public block,
                      public tree_part,
                      public virtual btree_node<ulong, subnode_info> {
 public:
  bool is_internal() const override { return true; }
  // 0 for a leaf, 1 for all others.
  ushort get_level() const { return level_; }

 protected:
  // `extent` is what the block takes in the file.
  subnode_block(const std::shared_ptr<db_context>& context, const block_info& info,
                ulonglong extent, ushort level)
      : block(context, info), tree_part(extent), level_(level) {}

 private:
  ushort level_;
};

class subnode_leaf_block final : public subnode_block,
                                 public btree_node_leaf<ulong, subnode_info>,
                                 public std::enable_shared_from_this<subnode_leaf_block> {
 public:
  using entries = tree_entries<ulong, subnode_info>::list;

  subnode_leaf_block(const std::shared_ptr<db_context>& context, const block_info& info,
                     ulonglong extent, entries&& subnodes)
      : subnode_block(context, info, extent, 0), entries_(std::move(subnodes)) {}

  ulong get_key(ulong pos) const override { return entries_.get_key(pos); }
  ulong num_values() const override { return entries_.size(); }
  const subnode_info& get_value(ulong pos) const override { return entries_.get_value(pos); }

 private:
  tree_entries<ulong, subnode_info> entries_;
};

class subnode_nonleaf_block final : public subnode_block,
                                    public btree_node_nonleaf<ulong, subnode_info>,
                                    public std::enable_shared_from_this<subnode_nonleaf_block> {
 public:
  using entries = tree_entries<ulong, ulonglong>::list;

  subnode_nonleaf_block(const std::shared_ptr<db_context>& context, const block_info& info,
                        ulonglong extent, entries&& children)
      : subnode_block(context, info, extent, 1),
        entries_(std::move(children)),
        children_(entries_.size()) {}

  ulong get_key(ulong pos) const override { return entries_.get_key(pos); }
  ulong num_values() const override { return entries_.size(); }
  const btree_node<ulong, subnode_info>& get_child(ulong pos) const override {
    return load_child(pos);
  }
  btree_node<ulong, subnode_info>& get_child(ulong pos) override { return load_child(pos); }

 private:
  subnode_block& load_child(ulong pos) const;

  tree_entries<ulong, ulonglong> entries_;
  mutable vector<std::shared_ptr<subnode_block>> children_;
};

}  // namespace pststore

#endif
