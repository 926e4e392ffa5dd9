// Types.h - the number types of the store, its memory, and the records that name its parts.
//
// All memory of the store comes from the kernel: containers and shared objects use
// `kernel_allocator`, which throws std::bad_alloc when the kernel has none.
#ifndef TARN_PSTSTORE_TYPES_H
#define TARN_PSTSTORE_TYPES_H

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <span>
#include <string>
#include <utility>

#include "Common/KernelAllocator.h"

namespace pststore {

// Widths are those of the file format on every platform.
using ushort = uint16_t;
using ulong = uint32_t;
using ulonglong = uint64_t;

template <typename T>
using kernel_allocator = tarn::KernelAllocator<T>;

template <typename T>
using vector = tarn::KernelVector<T>;
using byte_vector = vector<unsigned char>;
using bytes_view = std::span<const unsigned char>;
using wstring = std::basic_string<char16_t, std::char_traits<char16_t>, kernel_allocator<char16_t>>;

template <typename T, typename... Arguments>
std::shared_ptr<T> make_kernel_shared(Arguments&&... arguments) {
  return std::allocate_shared<T>(kernel_allocator<T>(), std::forward<Arguments>(arguments)...);
}

// What the block B-tree says of a block.
struct block_info {
  ulonglong id = 0;
  ulonglong address = 0;
  ushort size = 0;
  ushort ref_count = 0;
};

// What the node B-tree says of a node.
struct node_info {
  ulong id = 0;
  ulonglong data_bid = 0;
  ulonglong subnode_bid = 0;
  ulong parent_id = 0;
};

// A reference to a page.
struct page_info {
  ulonglong id = 0;
  ulonglong address = 0;
};

// What a node's subnode tree says of a subnode.
struct subnode_info {
  ulong id = 0;
  ulonglong data_bid = 0;
  ulonglong subnode_bid = 0;
};

}  // namespace pststore

#endif
