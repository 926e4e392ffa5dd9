// DiskReader.h - pages and blocks as bytes, checked against who asks for them.
//
// The header is read and checked when the reader is made. Of the header only the next block id ever
// changes, and only in memory. The checksums of pages and blocks are not looked at.
#ifndef TARN_PSTSTORE_DISKREADER_H
#define TARN_PSTSTORE_DISKREADER_H

#include <array>

#include "pststore/Codec.h"
#include "pststore/Disk.h"
#include "pststore/StoreFile.h"
#include "pststore/Types.h"

namespace pststore {

using page_bytes = std::array<unsigned char, disk::page_size>;

template <typename T>
class disk_reader {
 public:
  // invalid_format for a header of the other layout, crc_fail for a damaged one; else what
  // store_file throws.
  explicit disk_reader(const char16_t* path);

  // unexpected_page for a place that cannot be one or a page of another id, database_corrupt for a
  // type that is not repeated, sig_mismatch.
  page_bytes read_page(const page_info& info);

  // The whole extent, padding and trailer included. unexpected_block for a size or place that
  // cannot be one or a block of another id or size, sig_mismatch.
  byte_vector read_block(const block_info& info);

  // The same of a block of references, in a buffer that the next such block is read into.
  bytes_view read_references(const block_info& info);

  // How the data of an external block is encoded.
  disk::encoding get_encoding(const block_info& info) const;

  // The first byte of a block of references, of which nothing is checked.
  unsigned char read_block_type(const block_info& info);

  page_info get_nbt_root() const;
  page_info get_bbt_root() const;

  // The next block id, counted up by 4.
  ulonglong take_next_bid();

  // Raises database_corrupt for a stream that is much larger than the whole file. Holes need no
  // room in the file, so a small file may well hold a larger stream, by a bounded amount.
  void expect_room(ulonglong total_size);

  // Counts a block that was made and not read as if it had been: a hole takes no room in the file,
  // and time and memory like any other block.
  void count_made(ulonglong bytes) { file_.count(bytes); }

  // Raises database_corrupt for blocks of one tree that together take more than the size of the
  // file and 64 KiB: blocks that overlap, or one block in many places.
  void expect_tree_room(ulonglong bytes);

 private:
  using layout = disk::layout<T>;

  void validate() const;
  ulonglong get_file_eof() const;
  void read_extent(const block_info& info, byte_vector& bytes);

  store_file file_;
  byte_vector references_;  // of the block of references that was read last
  std::array<unsigned char, layout::header_size> header_{};
};

extern template class disk_reader<ulong>;
extern template class disk_reader<ulonglong>;

}  // namespace pststore

#endif
