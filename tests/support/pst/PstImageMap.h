// PstImageMap.h - which pages and blocks the B-trees of an image reach, whoever made it.
#ifndef TARN_TESTS_SUPPORT_PST_PSTIMAGEMAP_H
#define TARN_TESTS_SUPPORT_PST_PSTIMAGEMAP_H

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "support/pst/PstLayout.h"

namespace tarn::test {

struct PstImagePage {
  uint64_t id;
  uint64_t offset;
  bool isBlockTree;
  bool isInner;
  size_t entrySize;
  size_t entries;  // no more than a page has room for
};

struct PstImageBlock {
  uint64_t id;
  uint64_t offset;
  uint16_t size;
  size_t entry;  // where its entry begins in the image: id, offset, size
};

// All of them are in the image. A page is listed once, a block as often as it is named.
struct PstImageMap {
  PstLayout layout;
  std::vector<PstImagePage> pages;
  std::vector<PstImageBlock> blocks;
};

// Takes any bytes; nothing when there is no whole header. References out of the image or to a page
// met before are passed over, and so are blocks that would make all blocks together larger than
// four images: what is done for each page and block is bounded by the size of the image.
std::optional<PstImageMap> MapPstImage(std::string_view image);

}  // namespace tarn::test

#endif
