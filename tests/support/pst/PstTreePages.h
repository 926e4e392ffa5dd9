// PstTreePages.h - the pages of the node and block B-trees, bulk-built from the leaves upwards
// (MS-PST 2.2.2.7.7).
#ifndef TARN_TESTS_SUPPORT_PST_PSTTREEPAGES_H
#define TARN_TESTS_SUPPORT_PST_PSTTREEPAGES_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>

#include "support/pst/PstLayout.h"
#include "support/pst/PstStructures.h"

namespace tarn::test {

// As little as two entries a page and a few entries make a tree of four levels.
struct PstTreeShape {
  // Entries in a page; 0 is what fits. An inner fan-out of 1 counts as 2.
  size_t leafFanOut = 0;
  size_t innerFanOut = 0;
  // Inner pages of one entry are put above a tree that would be lower.
  unsigned minLevels = 1;
};

// Gives room for the next page of a tree, and takes the bytes of a page before its trailer.
struct PstPageStore {
  std::function<PstPageRef()> take;
  std::function<void(const PstPageRef&, std::string_view)> write;
};

// Entries in order; returns the root. A tree without entries is one empty leaf.
PstPageRef WriteNodeTree(PstLayout layout, const PstTreeShape& shape,
                         std::span<const PstNodeEntry> entries, const PstPageStore& store);
PstPageRef WriteBlockTree(PstLayout layout, const PstTreeShape& shape,
                          std::span<const PstBlockEntry> entries, const PstPageStore& store);

}  // namespace tarn::test

#endif
