#include "pststore/Heap.h"

#include <array>

#include "Common/LittleEndian.h"
#include "pststore/Blocks.h"
#include "pststore/Errors.h"
#include "pststore/HnidStream.h"

namespace pststore {

using tarn::LoadLittleEndian;

namespace {

constexpr size_t first_header_size = 12;
constexpr ulong page_map_header_size = 4;

}  // namespace

heap_impl::heap_impl(const node& data) : node_(data) { read_header(); }

heap_impl::heap_impl(const node& data, unsigned char client_sig) : node_(data) {
  const unsigned char found = read_header();
  if (found != client_sig) {
    throw sig_mismatch("invalid client_sig", 0, node_.get_id(), found, client_sig);
  }
}

// The client signature.
unsigned char heap_impl::read_header() {
  const ulonglong size = node_.size();
  if (size == 0) throw std::out_of_range("offset >= size()");
  if (size < first_header_size) throw std::out_of_range("sizeof(T) + offset >= size()");

  std::array<unsigned char, first_header_size> header = {};
  if (node_.read(header.data(), header.size(), 0) != header.size()) {
    throw database_corrupt("heap header cut short");
  }
  if (header[2] != heap_sig) {
    throw sig_mismatch("invalid heap_sig", 0, node_.get_id(), header[2], heap_sig);
  }
  root_id_ = LoadLittleEndian<ulong>(&header[4]);
  return header[3];
}

heap_impl::allocation heap_impl::find(ulong hid) const {
  if (hid == 0) return {};
  const ulong page_index = hid >> 16;
  const ulong map_offset = node_.read<ushort>(page_index, 0);

  allocation found;
  found.page = node_.get_data_block()->get_page(page_index);
  const std::span<const unsigned char> bytes = found.page->get_bytes();
  if (map_offset > bytes.size()) throw std::length_error("page_map_offset > node size");
  const std::span<const unsigned char> map = bytes.subspan(map_offset);
  if (map.size() < page_map_header_size) throw database_corrupt("heap page map cut short");

  // The index may equal the number of allocations: the allocation behind the last one ends where
  // the 16 bits behind the array say.
  const ulong index = ((hid >> 5) - 1) & 0x7FF;
  if (index > LoadLittleEndian<ushort>(map.data())) throw std::length_error("index > num_allocs");
  const size_t entry = page_map_header_size + size_t{2} * index;
  if (map.size() < entry + 4) throw database_corrupt("heap page map runs beyond its page");

  found.start = LoadLittleEndian<ushort>(&map[entry]);
  const ulong end = LoadLittleEndian<ushort>(&map[entry + 2]);
  if (end < found.start) throw database_corrupt("heap allocation of negative size");
  found.size = end - found.start;
  return found;
}

size_t heap_impl::size(ulong hid) const { return find(hid).size; }

size_t heap_impl::read(void* destination, size_t count, ulong hid, ulong offset) const {
  const allocation found = find(hid);
  if (count > found.size) throw std::length_error("buffer.size() > size()");
  if (offset > found.size) throw std::length_error("offset > size()");
  if (count + offset > found.size) throw std::length_error("size + offset > size()");
  if (count == 0) return 0;
  const ulong start = found.start + offset;
  if (start >= found.page->get_total_size()) throw std::out_of_range("offset >= size()");
  return found.page->read_raw(destination, count, start);
}

size_t heap_impl::read(byte_vector& buffer, ulong hid, ulong offset) const {
  return read(buffer.data(), buffer.size(), hid, offset);
}

byte_vector heap_impl::read(ulong hid) const {
  byte_vector bytes(size(hid));
  read(bytes, hid, 0);
  return bytes;
}

hnid_stream_device heap_impl::open_stream(ulong hid) {
  return hnid_stream_device(shared_from_this(), hid);
}

heap_ptr open_heap(const node& data) { return make_tracked<heap_impl>(data); }

heap_ptr open_heap(const node& data, unsigned char client_sig) {
  return make_tracked<heap_impl>(data, client_sig);
}

}  // namespace pststore
