#include "archive/store/NodeScan.h"

#include <new>

#include "pststore/Disk.h"

namespace tarn::archive::store {
namespace {

using Visit = std::function<void(const pststore::node_info&)>;

class Scan {
 public:
  Scan(pststore::db_context& context, uint64_t fileSize, const Visit& visit)
      : context_(context), pagesLeft_(fileSize / pststore::disk::page_size + 1), visit_(visit) {}

  // Children are a level below their parent, so that the recursion ends.
  void page(const pststore::nbt_page& page) {
    const auto* const inner = dynamic_cast<const pststore::nbt_nonleaf_page*>(&page);
    if (inner == nullptr) {
      leaf(static_cast<const pststore::nbt_leaf_page&>(page));
      return;
    }
    for (pststore::ulong i = 0; i < inner->num_values(); ++i) {
      if (pagesLeft_ == 0) {
        ++damaged_;
        return;
      }
      --pagesLeft_;
      std::shared_ptr<pststore::nbt_page> child;
      try {
        child = context_.read_nbt_page(inner->get_child_info(i));
      } catch (const std::bad_alloc&) {
        throw;
      } catch (const std::exception&) {
        ++damaged_;
        continue;
      }
      if (child->get_level() < inner->get_level()) {
        this->page(*child);
      } else {
        ++damaged_;
      }
    }
  }

  uint64_t damaged() const { return damaged_; }

 private:
  void leaf(const pststore::nbt_leaf_page& leaf) {
    for (pststore::ulong i = 0; i < leaf.num_values(); ++i) visit_(leaf.get_value(i));
  }

  pststore::db_context& context_;
  uint64_t pagesLeft_;
  uint64_t damaged_ = 0;
  const Visit& visit_;
};

}  // namespace

uint64_t ScanNodes(StoreSession& session, const Visit& visit) {
  Scan scan(*session.context(), session.fileSize(), visit);
  scan.page(*session.context()->read_nbt_root());
  return scan.damaged();
}

}  // namespace tarn::archive::store
