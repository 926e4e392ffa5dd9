// SubnodeBlocks.h - the tree of a node's subnodes, in blocks (MS-PST, 2.2.2.8.3.3).
//
//   0  1  block type, not read
//   1  1  level, 0 for a leaf
//   2  2  count of entries
//         entries, from offset 4 (ANSI) or 8 (Unicode)
//
//   leaf entry      node id, data block id, subnode block id: 4 (ANSI) or 8 (Unicode) bytes each
//   non-leaf entry  node id, block id, likewise; the lower 32 bits of a node id count
//
// The context makes these blocks; a node owns the root of its tree and parents own their children.
#ifndef TARN_PSTSTORE_SUBNODEBLOCKS_H
#define TARN_PSTSTORE_SUBNODEBLOCKS_H

#include <memory>

#include "pststore/Blocks.h"
#include "pststore/BtreeNode.h"
#include "pststore/TreeEntries.h"
#include "pststore/TreePart.h"
#include "pststore/Types.h"

namespace pststore {

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
