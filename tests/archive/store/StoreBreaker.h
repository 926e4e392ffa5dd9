// StoreBreaker.h - breaks single blocks and pages of a store that a builder has written.
#ifndef TARN_TESTS_ARCHIVE_STORE_STOREBREAKER_H
#define TARN_TESTS_ARCHIVE_STORE_STOREBREAKER_H

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "pststore/Node.h"
#include "support/TempDirectory.h"
#include "support/pst/PstDamage.h"
#include "support/pst/StoreBuilder.h"

namespace tarn::test {

// A node, or a subnode of it, of that ...: their ids from the outermost on.
using NodePath = std::vector<uint32_t>;

// What is broken cannot be read; everything else can. A path that the store does not have fails
// the test with an exception of the store.
class StoreBreaker {
 public:
  // Finishes the store.
  explicit StoreBreaker(StoreBuilder& store);

  // The uppermost block of the node's data, and one of the blocks below it, from 0.
  StoreBreaker& data(const NodePath& path);
  StoreBreaker& dataBlock(const NodePath& path, size_t index);
  // The uppermost block of the node's subnodes, and one of those below it.
  StoreBreaker& subnodes(const NodePath& path);
  StoreBreaker& subnodesBlock(const NodePath& path, size_t index);
  // The page of the index of nodes that has this one, and the page of the index of blocks that has
  // the uppermost block of its data.
  StoreBreaker& nodePage(uint32_t nid);
  StoreBreaker& blockPage(uint32_t nid);

  const std::string& image() { return damage_.image(); }

  // The last subnode of a node that the store has, whole as it was.
  uint32_t lastSubnode(const NodePath& path) const;

 private:
  struct Place {
    uint64_t data = 0;
    uint64_t subnodes = 0;
    std::shared_ptr<pststore::node> node;
  };

  Place find(const NodePath& path) const;
  void breakExtent(const PstExtent& extent);
  void breakLeaf(PstExtentKind kind, uint64_t key, size_t width);

  TempDirectory folder_;
  size_t wide_;  // bytes of a block id
  PstDamage damage_;
  std::filesystem::path path_;  // of the store as it was
};

}  // namespace tarn::test

#endif
