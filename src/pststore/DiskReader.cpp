#include "pststore/DiskReader.h"

namespace pststore {

namespace {

// What holes may add to a stream beyond the size of the file: two of the largest there are.
constexpr ulonglong hole_allowance = 16u << 20;

// What repeated blocks may add to a tree beyond the size of the file: eight of the largest.
constexpr ulonglong tree_allowance = 64u << 10;

void expect_crc(bytes_view header, size_t count, size_t stored_at, const char* message) {
  const ulong computed = disk::compute_crc(header.subspan(disk::header_crc_begin, count));
  const ulong stored = disk::load<ulong>(header, stored_at);
  if (computed != stored) throw crc_fail(message, 0, 0, computed, stored);
}

void expect_signature(const char* message, ulonglong address, ulonglong id, ushort stored) {
  const ushort computed = disk::compute_signature(id, address);
  if (computed != stored) throw sig_mismatch(message, address, id, computed, stored);
}

}  // namespace

template <typename T>
disk_reader<T>::disk_reader(const char16_t* path) : file_(path) {
  file_.read(header_, 0);
  validate();
}

template <typename T>
void disk_reader<T>::validate() const {
  constexpr bool is_unicode = sizeof(T) == sizeof(ulonglong);
  const ushort version = disk::load<ushort>(header_, disk::header_version);
  if ((version >= disk::first_unicode_version) != is_unicode) throw invalid_format();
  expect_crc(header_, disk::header_crc_partial_size, disk::header_crc_partial,
             "header dwCRCPartial failure");
  if constexpr (is_unicode) {
    expect_crc(header_, disk::header_crc_full_size, layout::header_crc_full,
               "header dwCRCFull failure");
  }
}

template <typename T>
ulonglong disk_reader<T>::get_file_eof() const {
  return disk::load_wide<T>(header_, layout::header_file_eof);
}

template <typename T>
page_bytes disk_reader<T>::read_page(const page_info& info) {
  // The sum may wrap; then the seek fails.
  if (info.address + disk::page_size > get_file_eof()) {
    throw unexpected_page("nonsensical page location; past eof");
  }
  if (info.address % disk::page_size != 0) {
    throw unexpected_page("nonsensical page location; not sector aligned");
  }
  page_bytes bytes{};
  file_.read(bytes, info.address);

  if (disk::load_wide<T>(bytes, layout::page_bid) != info.id) {
    throw unexpected_page("wrong page id");
  }
  if (bytes[layout::page_type] != bytes[layout::page_type_repeat]) {
    throw database_corrupt("ptype != ptype repeat?");
  }
  expect_signature("page sig mismatch", info.address, info.id,
                   disk::load<ushort>(bytes, layout::page_signature));
  return bytes;
}

template <typename T>
byte_vector disk_reader<T>::read_block(const block_info& info) {
  byte_vector bytes;
  read_extent(info, bytes);
  return bytes;
}

template <typename T>
bytes_view disk_reader<T>::read_references(const block_info& info) {
  read_extent(info, references_);
  return references_;
}

template <typename T>
void disk_reader<T>::read_extent(const block_info& info, byte_vector& bytes) {
  const ulonglong extent = disk::align_disk<T>(info.size);
  if (extent > disk::max_block_extent) throw unexpected_block("nonsensical block size");
  // The sum may wrap; then the seek fails.
  if (info.address + extent > get_file_eof()) {
    throw unexpected_block("nonsensical block location; past eof");
  }
  bytes.resize(extent);
  file_.read(bytes, info.address);

  if (disk::load_wide<T>(bytes, extent - layout::block_bid_back) != info.id) {
    throw unexpected_block("wrong block id");
  }
  if (disk::load<ushort>(bytes, extent - layout::block_size_back) != info.size) {
    throw unexpected_block("wrong block size");
  }
  expect_signature("block sig mismatch", info.address, info.id,
                   disk::load<ushort>(bytes, extent - layout::block_signature_back));
}

template <typename T>
disk::encoding disk_reader<T>::get_encoding(const block_info& info) const {
  return {disk::crypt_method{header_[layout::header_crypt_method]}, static_cast<ulong>(info.id)};
}

template <typename T>
unsigned char disk_reader<T>::read_block_type(const block_info& info) {
  std::array<unsigned char, disk::extended_ids + sizeof(T)> beginning{};
  file_.read(beginning, info.address);
  return beginning[disk::extended_type];
}

template <typename T>
page_info disk_reader<T>::get_nbt_root() const {
  return disk::load_reference<T>(header_, layout::header_nbt_root);
}

template <typename T>
page_info disk_reader<T>::get_bbt_root() const {
  return disk::load_reference<T>(header_, layout::header_bbt_root);
}

template <typename T>
ulonglong disk_reader<T>::take_next_bid() {
  const T next = disk::load<T>(header_, layout::header_next_bid);
  tarn::StoreLittleEndian<T>(&header_[layout::header_next_bid], ulonglong{next} + 4);
  return next;
}

template <typename T>
void disk_reader<T>::expect_room(ulonglong total_size) {
  if (total_size <= hole_allowance) return;
  if (total_size - hole_allowance > file_.get_size()) {
    throw database_corrupt("stream larger than the file");
  }
}

template <typename T>
void disk_reader<T>::expect_tree_room(ulonglong bytes) {
  if (bytes <= tree_allowance) return;
  if (bytes - tree_allowance > file_.get_size()) {
    throw database_corrupt("blocks of a tree larger than the file");
  }
}

template class disk_reader<ulong>;
template class disk_reader<ulonglong>;

}  // namespace pststore
