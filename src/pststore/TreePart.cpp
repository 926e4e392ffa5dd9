#include "pststore/TreePart.h"

#include <set>

#include "pststore/DbContext.h"

namespace pststore {

namespace {

class counted_less {
 public:
  explicit counted_less(ulonglong& count) : count_(&count) {}
  bool operator()(ulonglong left, ulonglong right) const {
    ++*count_;
    return left < right;
  }

 private:
  ulonglong* count_;
};

}  // namespace

struct tree_part::record {
  ulonglong bytes = 0;
  ulonglong comparisons = 0;
  std::set<ulonglong, counted_less, kernel_allocator<ulonglong>> numbers{counted_less(comparisons)};
};

ulonglong tree_part::get_comparisons() const {
  return record_ == nullptr ? 0 : record_->comparisons;
}

ulonglong tree_part::measure(db_context& context, const tree_part& child, ulong max_parts) const {
  if (depth_ + 1 >= max_parts) throw database_corrupt("tree too deep");
  if (record_ == nullptr) {
    record_ = make_kernel_shared<record>();
    record_->bytes = extent_;
  }
  const ulonglong bytes = record_->bytes + child.extent_;
  context.expect_tree_room(bytes);
  return bytes;
}

void tree_part::enter(tree_part& child, ulonglong bytes) const {
  record_->bytes = bytes;
  child.record_ = record_;
  child.depth_ = depth_ + 1;
}

void tree_part::adopt_once(db_context& context, ulonglong own_number, tree_part& child,
                           ulonglong child_number) const {
  const ulonglong bytes = measure(context, child, max_depth);
  // Parts below the root are there already.
  record_->numbers.insert(own_number);
  if (!record_->numbers.insert(child_number).second) {
    throw database_corrupt("part of a tree met twice");
  }
  enter(child, bytes);
}

void tree_part::adopt(db_context& context, tree_part& child, ulong max_parts) const {
  enter(child, measure(context, child, max_parts));
}

}  // namespace pststore
