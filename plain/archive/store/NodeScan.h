// NodeScan.h - all nodes of a store in the order of its index, past pages that cannot be read.
#ifndef TARN_ARCHIVE_STORE_NODESCAN_H
#define TARN_ARCHIVE_STORE_NODESCAN_H

#include <functional>

#include "archive/store/StoreSession.h"

namespace tarn::archive::store {

// Nodes that all stores have (MS-PST 2.4.1).
inline constexpr uint32_t kMessageStoreNode = 0x21;
inline constexpr uint32_t kNameMapNode = 0x61;
inline constexpr uint32_t kRootFolderNode = 0x122;

// Types of nodes (MS-PST 2.2.2.1).
inline constexpr uint32_t kNodeTypeMask = 0x1F;
inline constexpr uint32_t kFolderNode = 0x02;
inline constexpr uint32_t kSearchFolderNode = 0x03;
inline constexpr uint32_t kMessageNode = 0x04;
inline constexpr uint32_t kHierarchyTableNode = 0x0D;
inline constexpr uint32_t kContentsTableNode = 0x0E;

constexpr bool IsNodeOf(uint32_t nid, uint32_t type) { return (nid & kNodeTypeMask) == type; }
constexpr uint32_t NodeBeside(uint32_t nid, uint32_t type) { return (nid & ~kNodeTypeMask) | type; }

// Calls `visit` for every node that can be reached and returns how many pages of the index cannot
// be read. Memory for one page of each level. A damaged index may give a node twice, and no more
// pages are read than the file has. Throws what opening the store throws.
uint64_t ScanNodes(StoreSession& session,
                   const std::function<void(const pststore::node_info&)>& visit);

}  // namespace tarn::archive::store

#endif
