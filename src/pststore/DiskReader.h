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
  // Throws what store_file throws, and
  //   invalid_format   the header has the other layout;
  //   crc_fail         the header is damaged.
  explicit disk_reader(const char16_t* path);

  // Throws what store_file throws, and
  //   unexpected_page    no page can be there, or another one is;
  //   database_corrupt   its type is not repeated;
  //   sig_mismatch       its signature is wrong.
  page_bytes read_page(const page_info& info);

  // The whole extent, padding and trailer included. Throws what store_file throws, and
  //   unexpected_block   no block can be there, or one of another id or size is;
  //   sig_mismatch       its signature is wrong.
  byte_vector read_block(const block_info& info);

  // The same for a block of references. The bytes last until the next such block is read.
  bytes_view read_references(const block_info& info);

  // How the data of an external block is encoded.
  disk::encoding get_encoding(const block_info& info) const;

  // The first byte of a block of references; nothing of the block is checked.
  unsigned char read_block_type(const block_info& info);

  page_info get_nbt_root() const;
  page_info get_bbt_root() const;

  // The next block id, counted up by 4.
  ulonglong take_next_bid();

  // Raises database_corrupt for a stream that is much larger than the whole file. Holes need no
  // room in the file, so a small file may well hold a larger stream, by a bounded amount.
  void expect_room(ulonglong total_size);

  // Counts a block made for a hole as if it had been read: it takes time and memory like any other,
  // though no room in the file.
  void count_made(ulonglong bytes) { file_.count(bytes); }

  // Not used by the filter: what store_file has counted.
  ulonglong get_bytes_taken() const { return file_.get_bytes_taken(); }

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
