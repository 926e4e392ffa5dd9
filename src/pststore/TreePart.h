// TreePart.h - what keeps damaged trees finite.
//
// Trees of pages and of subnode blocks are loaded child by child, and a damaged file can name a
// part as its own ancestor, or as the child of many parents. Every part of a tree knows how deep it
// stands, and all share one record of the parts that were loaded: a part that turns up a second
// time, or too deep, raises database_corrupt. In a sound file every part has one parent, who loads
// it once and keeps it, so sound files never notice.
#ifndef TARN_PSTSTORE_TREEPART_H
#define TARN_PSTSTORE_TREEPART_H

#include <memory>

#include "pststore/Types.h"

namespace pststore {

// A set of odd numbers.
class odd_set {
 public:
  // False when the number was in the set.
  bool insert(ulonglong number);

 private:
  void grow();

  vector<ulonglong> slots_;  // 0: free; at most half of them are in use
  size_t count_ = 0;
};

class tree_part {
 public:
  // The level field of a page has 8 bits, and a parent stands a level above its children.
  static constexpr ulong max_depth = 256;

 protected:
  tree_part() = default;
  ~tree_part() = default;

  // Takes a child into this part's tree. The numbers name this part and the child, and lose their
  // lowest bit.
  void adopt(ulonglong own_number, tree_part& child, ulonglong child_number) const;

 private:
  mutable std::shared_ptr<odd_set> loaded_;  // of the whole tree; made for the first child
  ulong depth_ = 0;
};

}  // namespace pststore

#endif
