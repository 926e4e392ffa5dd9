// EntryParsing.h - the entries of pages, subnode blocks and extended blocks, taken out of their
// bytes: as many as the count says, in the order of the file. Of a node id only the lower 32 bits
// count, which come first.
//
// An entry that ends beyond the bytes raises database_corrupt.
#ifndef TARN_PSTSTORE_ENTRYPARSING_H
#define TARN_PSTSTORE_ENTRYPARSING_H

#include <algorithm>
#include <type_traits>

#include "pststore/Blocks.h"
#include "pststore/Disk.h"
#include "pststore/Pages.h"

namespace pststore {

// `count` entries of `stride` bytes from `begin` on; `parse(at)` makes one.
template <typename Entries, typename Parse>
Entries parse_entries(bytes_view bytes, size_t count, size_t begin, size_t stride,
                      const Parse& parse) {
  Entries entries;
  entries.reserve(std::min(count, bytes.size() / stride + 1));
  for (size_t i = 0; i < count; ++i) entries.push_back(parse(begin + i * stride));
  return entries;
}

template <typename T>
nbt_leaf_page::entries parse_nbt_leaf(bytes_view page) {
  return parse_entries<nbt_leaf_page::entries>(
      page, page[disk::layout<T>::page_entry_count], 0, disk::layout<T>::nbt_leaf_entry,
      [=](size_t at) {
        node_info info;
        info.id = disk::load<ulong>(page, at);
        info.data_bid = disk::load_wide<T>(page, at + sizeof(T));
        info.subnode_bid = disk::load_wide<T>(page, at + 2 * sizeof(T));
        info.parent_id = disk::load<ulong>(page, at + 3 * sizeof(T));
        return std::make_pair(info.id, info);
      });
}

template <typename T>
bbt_leaf_page::entries parse_bbt_leaf(bytes_view page) {
  return parse_entries<bbt_leaf_page::entries>(
      page, page[disk::layout<T>::page_entry_count], 0, disk::layout<T>::bbt_leaf_entry,
      [=](size_t at) {
        block_info info;
        info.id = disk::load_wide<T>(page, at);
        info.address = disk::load_wide<T>(page, at + sizeof(T));
        info.size = disk::load<ushort>(page, at + 2 * sizeof(T));
        info.ref_count = disk::load<ushort>(page, at + 2 * sizeof(T) + 2);
        return std::make_pair(info.id, info);
      });
}

// K may be narrower than a key in the file, and then keeps its lower half.
template <typename T, typename K>
vector<std::pair<K, page_info>> parse_nonleaf(bytes_view page) {
  return parse_entries<vector<std::pair<K, page_info>>>(
      page, page[disk::layout<T>::page_entry_count], 0, disk::layout<T>::nonleaf_entry,
      [=](size_t at) {
        using stored = std::conditional_t<sizeof(K) < sizeof(T), K, T>;
        return std::make_pair(K{disk::load<stored>(page, at)},
                              disk::load_reference<T>(page, at + sizeof(T)));
      });
}

template <typename T>
subnode_leaf_block::entries parse_subnode_leaf(bytes_view block) {
  return parse_entries<subnode_leaf_block::entries>(
      block, disk::load<ushort>(block, disk::internal_count), disk::layout<T>::subnode_entries,
      disk::layout<T>::subnode_leaf_entry, [=](size_t at) {
        subnode_info info;
        info.id = disk::load<ulong>(block, at);
        info.data_bid = disk::load_wide<T>(block, at + sizeof(T));
        info.subnode_bid = disk::load_wide<T>(block, at + 2 * sizeof(T));
        return std::make_pair(info.id, info);
      });
}

template <typename T>
subnode_nonleaf_block::entries parse_subnode_nonleaf(bytes_view block) {
  return parse_entries<subnode_nonleaf_block::entries>(
      block, disk::load<ushort>(block, disk::internal_count), disk::layout<T>::subnode_entries,
      disk::layout<T>::subnode_nonleaf_entry, [=](size_t at) {
        return std::make_pair(disk::load<ulong>(block, at),
                              disk::load_wide<T>(block, at + sizeof(T)));
      });
}

template <typename T>
extended_content parse_extended(bytes_view block) {
  return {disk::load<ulong>(block, disk::extended_total_size),
          parse_entries<vector<ulonglong>>(
              block, disk::load<ushort>(block, disk::internal_count), disk::extended_ids, sizeof(T),
              [=](size_t at) { return disk::load_wide<T>(block, at); })};
}

}  // namespace pststore

#endif
