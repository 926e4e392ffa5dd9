// TreePart.h - what pages and blocks have in common: how they refer to their context, and what
// keeps damaged trees of them finite.
//
// They refer to it weakly. One that outlives its context can no longer load children, and says so
// with std::bad_weak_ptr.
//
// Trees of pages and of blocks are loaded child by child, and a damaged file can name a part as its
// own ancestor, as the child of many parents, or lay many blocks over the same bytes. Every part of
// a tree knows how deep it is, and all loaded parts share one record: which they are, and how many
// bytes of the file they take.
//
// A part of a tree of pages or subnodes that turns up a second time raises database_corrupt, even
// where two parents share a child and the tree would come to an end. So does a part that is too
// deep, and so do blocks that together are larger than the whole file. Where every part has one
// parent and bytes of its own, no part is refused.
#ifndef TARN_PSTSTORE_TREEPART_H
#define TARN_PSTSTORE_TREEPART_H

#include <memory>

#include "pststore/Types.h"

namespace pststore {

class db_context;

class context_ref {
 protected:
  explicit context_ref(const std::shared_ptr<db_context>& context) : context_(context) {}
  context_ref(const context_ref&) = default;
  ~context_ref() = default;

  // The context; std::bad_weak_ptr when it has died.
  std::shared_ptr<db_context> get_context() const { return std::shared_ptr<db_context>(context_); }

 private:
  std::weak_ptr<db_context> context_;
};

class tree_part {
 public:
  // The level field of a page has 8 bits, and a parent is a level above its children.
  static constexpr ulong max_depth = 256;

 protected:
  // `extent` is what the part takes in the file, and 0 where parts cannot overlap.
  explicit tree_part(ulonglong extent = 0) : extent_(extent) {}
  tree_part(const tree_part&) = default;
  ~tree_part() = default;

  // Takes a child into this part's tree. The numbers name this part and the child. A child that
  // was refused, or for which there was no memory, leaves no trace.
  void adopt_once(db_context& context, ulonglong own_number, tree_part& child,
                  ulonglong child_number) const;

  // For tests: how many numbers have been compared to tell the parts of this tree apart. The file
  // chooses the numbers, and whatever it chooses, that is 2 log n for each of n parts.
  ulonglong get_comparisons() const;

  // Takes a child into a tree of at most `max_parts` parts below each other, in which a child may
  // have many parents.
  void adopt(db_context& context, tree_part& child, ulong max_parts) const;

 private:
  struct record;

  // What the parts of the tree take with the child, which is not entered yet.
  ulonglong measure(db_context& context, const tree_part& child, ulong max_parts) const;
  void enter(tree_part& child, ulonglong bytes) const;

  ulonglong extent_;
  mutable std::shared_ptr<record> record_;  // of the whole tree; made for the first child
  ulong depth_ = 0;
};

}  // namespace pststore

#endif
