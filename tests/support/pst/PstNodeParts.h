// PstNodeParts.h - the content of a node: its data, block by block, and its subnodes.
//
// The shapes say how data and subnodes become trees of blocks. Their defaults are as published;
// what deviates says so.
#ifndef TARN_TESTS_SUPPORT_PST_PSTNODEPARTS_H
#define TARN_TESTS_SUPPORT_PST_PSTNODEPARTS_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tarn::test {

struct DataTreeShape {
  // Ids in an XBLOCK or XXBLOCK. 0 is what fits: 1021 in the Unicode layout, 2043 in the ANSI
  // layout. Readers that count 1019 in the ANSI layout need 1019 for streams of more blocks.
  size_t fanOut = 0;
  // 1: an XBLOCK even above a single block; 2: an XXBLOCK even above a single XBLOCK.
  unsigned minLevels = 0;
  // Deviating: pages whose id in the XBLOCK is 0. Their bytes count, but are written nowhere.
  std::set<size_t> pageHoles = {};
  // Deviating: XBLOCKs whose id in the XXBLOCK is 0; their pages are written nowhere.
  std::set<size_t> childHoles = {};
  // Deviating: lcbTotal of the uppermost block.
  std::optional<uint32_t> totalSize = {};
};

struct SubnodeTreeShape {
  // Entries in an SLBLOCK and in an SIBLOCK; 0 is what fits.
  size_t leafFanOut = 0;
  size_t innerFanOut = 0;
  // 2: an SIBLOCK even above a single SLBLOCK. More than 2 levels are not as published.
  unsigned minLevels = 1;
};

struct PstSubnode;

struct PstNodeParts {
  PstNodeParts() = default;
  static PstNodeParts OfPages(std::vector<std::string> pages);
  // Data of one stream, cut into pages of this size.
  static PstNodeParts Stream(std::string_view bytes, size_t pageSize);

  // One block each, none for no data. Every page but the last is to have the full size, if the
  // node is to be as published.
  std::vector<std::string> pages;
  DataTreeShape dataShape;
  // Sorted by id when written.
  std::vector<PstSubnode> subnodes;
  SubnodeTreeShape subnodeShape;

  PstNodeParts& subnode(uint32_t nid, PstNodeParts parts);
};

struct PstSubnode {
  uint32_t nid = 0;
  PstNodeParts parts;
};

inline PstNodeParts PstNodeParts::OfPages(std::vector<std::string> pages) {
  PstNodeParts parts;
  parts.pages = std::move(pages);
  return parts;
}

inline PstNodeParts PstNodeParts::Stream(std::string_view bytes, size_t pageSize) {
  PstNodeParts parts;
  for (size_t at = 0; at < bytes.size(); at += pageSize) {
    parts.pages.emplace_back(bytes.substr(at, pageSize));
  }
  return parts;
}

inline PstNodeParts& PstNodeParts::subnode(uint32_t nid, PstNodeParts parts) {
  subnodes.push_back({nid, std::move(parts)});
  return *this;
}

}  // namespace tarn::test

#endif
