#include "pststore/SubnodeBlocks.h"

#include "pststore/BtreeNode.inc"
#include "pststore/DbContext.h"

namespace pststore {

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
