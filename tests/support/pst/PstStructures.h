// PstStructures.h - pages and blocks of a PST file as bytes (MS-PST 2.2.2.7.7 and 2.2.2.8).
//
// Every writer of stores puts its files together from these. What they are told they write: counts
// are not compared with entries, nor sizes with what a page or block has room for.
#ifndef TARN_TESTS_SUPPORT_PST_PSTSTRUCTURES_H
#define TARN_TESTS_SUPPORT_PST_PSTSTRUCTURES_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "support/pst/PstLayout.h"

namespace tarn::test {

// Of a page; a block's reference is the same bytes.
struct PstPageRef {
  uint64_t bid = 0;
  uint64_t ib = 0;
};

struct PstNodeEntry {
  uint32_t nid;
  uint32_t parent;
  uint64_t dataBid;
  uint64_t subnodeBid;
};

struct PstBlockEntry {
  uint64_t bid;
  uint64_t ib;
  uint16_t cb;
  uint16_t cRef;
};

struct SubnodeEntry {
  uint32_t nid;
  uint64_t dataBid;
  uint64_t subnodeBid;
};

// Entries of leaves.
std::string EntryBytes(PstLayout layout, const PstNodeEntry& entry);
std::string EntryBytes(PstLayout layout, const PstBlockEntry& entry);
std::string EntryBytes(PstLayout layout, const SubnodeEntry& entry);
// Entries above leaves, of pages and of subnode blocks. A node id takes the width of a block id.
std::string InnerEntryBytes(PstLayout layout, uint64_t key, const PstPageRef& page);
std::string InnerEntryBytes(PstLayout layout, uint64_t key, uint64_t bid);

// What is before the trailer of a page in a tree: the entries, each of entrySize, and the counters.
std::string TreePageBody(PstLayout layout, size_t entrySize, uint8_t level, size_t count,
                         std::string_view entries);
// A whole page: the body, padded, and its trailer. A body beyond the trailer's start throws
// std::length_error.
std::string PageBytes(PstLayout layout, uint8_t type, const PstPageRef& page,
                      std::string_view body);

// The data of an XBLOCK (level 1) or XXBLOCK (level 2), and of an SLBLOCK (0) or SIBLOCK (1).
std::string ExtendedBlockData(PstLayout layout, uint8_t level, std::span<const uint64_t> ids,
                              uint32_t totalSize);
std::string SubnodeBlockData(PstLayout layout, uint8_t level, size_t count,
                             std::string_view entries);
// A whole block: the data as it is in the file, padding and trailer.
std::string BlockBytes(PstLayout layout, const PstPageRef& block, std::string_view data,
                       char padding = '\0');

}  // namespace tarn::test

#endif
