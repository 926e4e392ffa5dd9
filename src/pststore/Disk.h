// Disk.h - the bytes of a store: where the fields of its structures are, and how numbers are taken
// out of them (MS-PST, 2.2).
//
// A store has one of two layouts. T names it everywhere: `ulong` is the ANSI layout, with block ids
// and file offsets of 32 bits, `ulonglong` the Unicode layout, with 64 bits. In memory both are 64
// bits wide. All numbers are little-endian; offsets and sizes count bytes.
//
//   header, 512 or 568 bytes at the start of the file
//   page    512 bytes at a multiple of 512: entries, counters, trailer
//   block   the data, padding, and a trailer that ends the extent, a multiple of 64 bytes
//   BREF    a block or page id, then its file offset
//
// Nothing here trusts a count or an offset that comes from the file: a number that lies outside of
// the bytes given raises database_corrupt.
#ifndef TARN_PSTSTORE_DISK_H
#define TARN_PSTSTORE_DISK_H

#include "Common/Crc32.h"
#include "Common/LittleEndian.h"
#include "pststore/Errors.h"
#include "pststore/Types.h"

namespace pststore::disk {

inline constexpr size_t page_size = 512;
inline constexpr size_t block_align = 64;
inline constexpr size_t max_block_extent = 8192;

enum page_type : unsigned char { page_type_bbt = 0x80, page_type_nbt = 0x81 };

inline constexpr unsigned char block_type_extended = 1;

// A block id with this bit names a block of references; without it, a block of data.
inline constexpr ulonglong bid_internal_bit = 2;
// This bit of a block id is ignored: it is cleared before the id is looked up.
inline constexpr ulonglong bid_ignored_bit = 1;

inline constexpr ushort first_unicode_version = 20;

// Fields that are at one place in both layouts. Fields that nothing reads (dwMagic and others) have
// no name here.
inline constexpr size_t header_crc_partial = 4;
inline constexpr size_t header_version = 10;
inline constexpr size_t header_crc_begin = 8;
inline constexpr size_t header_crc_partial_size = 471;
inline constexpr size_t header_crc_full_size = 516;

// A block of block ids, and the beginning of a block of subnodes.
inline constexpr size_t extended_type = 0;
inline constexpr size_t internal_level = 1;
inline constexpr size_t internal_count = 2;
inline constexpr size_t extended_total_size = 4;
inline constexpr size_t extended_ids = 8;

template <typename T>
struct layout;

template <>
struct layout<ulong> {
  static constexpr size_t header_size = 512;
  static constexpr size_t header_next_bid = 24;
  static constexpr size_t header_file_eof = 168;
  static constexpr size_t header_nbt_root = 184;
  static constexpr size_t header_bbt_root = 192;
  static constexpr size_t header_crypt_method = 461;

  static constexpr size_t page_entry_count = 496;
  static constexpr size_t page_level = 499;
  static constexpr size_t page_type = 500;
  static constexpr size_t page_type_repeat = 501;
  static constexpr size_t page_signature = 502;
  static constexpr size_t page_bid = 504;

  // Counted back from the end of the extent.
  static constexpr size_t block_trailer_size = 12;
  static constexpr size_t block_size_back = 12;
  static constexpr size_t block_signature_back = 10;
  static constexpr size_t block_bid_back = 8;

  static constexpr size_t nbt_leaf_entry = 16;
  static constexpr size_t bbt_leaf_entry = 12;
  static constexpr size_t nonleaf_entry = 12;
  static constexpr size_t subnode_entries = 4;
  static constexpr size_t subnode_leaf_entry = 12;
  static constexpr size_t subnode_nonleaf_entry = 8;

  static constexpr ulonglong max_block_data = 8180;
  // The published format has room for more ids; places in the second level are computed with this.
  static constexpr ulong max_extended_children = 1019;
};

template <>
struct layout<ulonglong> {
  static constexpr size_t header_size = 568;
  static constexpr size_t header_next_bid = 516;
  static constexpr size_t header_file_eof = 184;
  static constexpr size_t header_nbt_root = 216;
  static constexpr size_t header_bbt_root = 232;
  static constexpr size_t header_crypt_method = 513;
  static constexpr size_t header_crc_full = 524;

  static constexpr size_t page_entry_count = 488;
  static constexpr size_t page_level = 491;
  static constexpr size_t page_type = 496;
  static constexpr size_t page_type_repeat = 497;
  static constexpr size_t page_signature = 498;
  static constexpr size_t page_bid = 504;

  static constexpr size_t block_trailer_size = 16;
  static constexpr size_t block_size_back = 16;
  static constexpr size_t block_signature_back = 14;
  static constexpr size_t block_bid_back = 8;

  static constexpr size_t nbt_leaf_entry = 32;
  static constexpr size_t bbt_leaf_entry = 24;
  static constexpr size_t nonleaf_entry = 24;
  static constexpr size_t subnode_entries = 8;
  static constexpr size_t subnode_leaf_entry = 24;
  static constexpr size_t subnode_nonleaf_entry = 16;

  static constexpr ulonglong max_block_data = 8176;
  static constexpr ulong max_extended_children = 1021;
};

// The number at `offset`. V is an unsigned integer.
template <typename V>
V load(bytes_view bytes, size_t offset) {
  if (offset > bytes.size() || bytes.size() - offset < sizeof(V)) {
    throw database_corrupt("entry beyond its page or block");
  }
  return tarn::LoadLittleEndian<V>(bytes.data() + offset);
}

// A block id or file offset, 4 or 8 bytes by layout.
template <typename T>
ulonglong load_wide(bytes_view bytes, size_t offset) {
  return load<T>(bytes, offset);
}

// A BREF.
template <typename T>
page_info load_reference(bytes_view bytes, size_t offset) {
  return {load_wide<T>(bytes, offset), load_wide<T>(bytes, offset + sizeof(T))};
}

// The extent of a block of `size` bytes.
template <typename T>
constexpr ulonglong align_disk(ulonglong size) {
  return (size + layout<T>::block_trailer_size + block_align - 1) & ~ulonglong{block_align - 1};
}

// The signature that a page or block of this id carries at this place.
constexpr ushort compute_signature(ulonglong id, ulonglong address) {
  const ulonglong mixed = id ^ address;
  return static_cast<ushort>(mixed ^ (mixed >> 16));
}

// The checksum of the header (MS-PST, 5.3): CRC-32, started at 0 and without a final complement.
inline ulong compute_crc(bytes_view bytes) { return tarn::Crc32(bytes.data(), bytes.size()); }

}  // namespace pststore::disk

#endif
