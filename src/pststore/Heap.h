// Heap.h - a heap on a node: small numbered allocations in the pages of a node (MS-PST, 2.3.1).
//
//   first header, at the start of the node's data
//     0  2  page_map_offset: where the page map is; at the start of every page
//     2  1  heap_sig, 0xEC
//     3  1  client_sig: 0xBC property context, 0x7C table
//     4  4  heap id of the client's root allocation
//     8  4  fill levels, not read
//
//   page map, at that offset of each page
//     0  2  num_allocs, the number of allocations
//     2  2  number of freed ones, not read
//     4     offsets into the page, 2 bytes each; entry i + 1 is the end of allocation i
//
//   heap id: page number << 16 | (number of the allocation + 1) << 5; 0 is the empty allocation.
//   The lower 5 bits are 0; an id with one of them set names a subnode of the heap's node instead.
//
// Nothing is kept but the root's id and the node with its loaded blocks: every operation reads the
// page map again. Sizes and offsets count bytes. Operations throw what the node throws, and
//   std::length_error   the page map has no such allocation, or the allocation no such place;
//   std::out_of_range   the page does not exist, or ends before the place;
//   database_corrupt    the page map contradicts itself.
#ifndef TARN_PSTSTORE_HEAP_H
#define TARN_PSTSTORE_HEAP_H

#include <memory>
#include <span>

#include "pststore/Node.h"
#include "pststore/Types.h"

namespace pststore {

class external_block;
class heap_impl;
class hnid_stream_device;

using heap_ptr = std::shared_ptr<heap_impl>;

inline constexpr unsigned char heap_sig = 0xEC;
inline constexpr unsigned char heap_sig_pc = 0xBC;  // client signature of a property context
inline constexpr unsigned char heap_sig_tc = 0x7C;  // of a table; also the root allocation's

// Whether a heap-or-node id names an allocation.
constexpr bool is_heap_id(ulong hnid) { return (hnid & 0x1F) == 0; }

class heap_impl : public std::enable_shared_from_this<heap_impl> {
 public:
  // For open_heap.
  explicit heap_impl(node data);
  heap_impl(node data, unsigned char client_sig);

  size_t size(ulong hid) const;

  // Fills the buffer from `offset` of the allocation and returns the number of bytes read: fewer
  // when the page ends before the allocation does.
  size_t read(std::span<unsigned char> buffer, ulong hid, size_t offset) const;

  // The whole allocation.
  byte_vector read(ulong hid) const;

  hnid_stream_device open_stream(ulong hid);

  ulong get_root_id() const { return root_id_; }
  const node& get_node() const { return node_; }
  node& get_node() { return node_; }

 private:
  struct allocation {
    std::shared_ptr<external_block> page;
    size_t start = 0;
    size_t size = 0;
  };

  unsigned char read_header();
  allocation find(ulong hid) const;

  node node_;
  ulong root_id_ = 0;
};

// The heap on a copy of the node; sig_mismatch for a wrong signature. The first form takes any
// client signature.
heap_ptr open_heap(node data);
heap_ptr open_heap(node data, unsigned char client_sig);

}  // namespace pststore

#endif
