#include "pststore/Heap.h"

#include <array>

#include "Common/LittleEndian.h"
#include "pststore/Blocks.h"
#include "pststore/Errors.h"
#include "pststore/HnidStream.h"

namespace pststore {

using tarn::LoadLittleEndian;

namespace {

// Where the fields are in the first header and in a page map.
constexpr size_t first_header_heap_sig = 2;
constexpr size_t first_header_client_sig = 3;
constexpr size_t first_header_root = 4;
constexpr size_t first_header_size = 12;

constexpr size_t page_map_num_allocs_size = 2;
constexpr size_t page_map_offsets = 4;
constexpr size_t offset_size = 2;

}  // namespace

heap_impl::heap_impl(node data) : node_(std::move(data)) { read_header(); }

heap_impl::heap_impl(node data, unsigned char client_sig) : node_(std::move(data)) {
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
  node_.read(header, 0);
  const unsigned char found = header[first_header_heap_sig];
  if (found != heap_sig) throw sig_mismatch("invalid heap_sig", 0, node_.get_id(), found, heap_sig);
  root_id_ = LoadLittleEndian<ulong>(&header[first_header_root]);
  return header[first_header_client_sig];
}

heap_impl::allocation heap_impl::find(ulong hid) const {
  if (hid == 0) return {};
  const size_t page_index = hid >> 16;
  const size_t page_map_offset = node_.read<ushort>(page_index, 0);

  allocation found;
  found.page = node_.get_data_block()->get_page(page_index);
  const bytes_view bytes = found.page->get_bytes();
  if (page_map_offset > bytes.size()) throw std::length_error("page_map_offset > node size");
  const bytes_view map = bytes.subspan(page_map_offset);
  if (map.size() < page_map_num_allocs_size) throw database_corrupt("heap page map cut short");

  // The index may equal the number of allocations: the allocation after the last one ends where
  // the 16 bits after the array say.
  const size_t index = ((hid >> 5) - 1) & 0x7FF;
  const size_t num_allocs = LoadLittleEndian<ushort>(map.data());
  if (index > num_allocs) throw std::length_error("index > num_allocs");
  const size_t entry = page_map_offsets + offset_size * index;
  if (map.size() < entry + 2 * offset_size) {
    throw database_corrupt("heap page map runs beyond its page");
  }

  found.start = LoadLittleEndian<ushort>(&map[entry]);
  const size_t end = LoadLittleEndian<ushort>(&map[entry + offset_size]);
  if (end < found.start) throw database_corrupt("heap allocation of negative size");
  found.size = end - found.start;
  return found;
}

size_t heap_impl::size(ulong hid) const { return find(hid).size; }

size_t heap_impl::read(std::span<unsigned char> buffer, ulong hid, size_t offset) const {
  const allocation found = find(hid);
  if (buffer.size() > found.size) throw std::length_error("buffer.size() > size()");
  if (offset > found.size) throw std::length_error("offset > size()");
  if (buffer.size() + offset > found.size) throw std::length_error("size + offset > size()");
  if (buffer.empty()) return 0;
  const size_t start = found.start + offset;
  if (start >= found.page->get_total_size()) throw std::out_of_range("offset >= size()");
  return found.page->read_raw(buffer, start);
}

byte_vector heap_impl::read(ulong hid) const {
  byte_vector bytes(size(hid));
  read(bytes, hid, 0);
  return bytes;
}

hnid_stream_device heap_impl::open_stream(ulong hid) {
  return hnid_stream_device(shared_from_this(), hid);
}

heap_ptr open_heap(node data) { return make_kernel_shared<heap_impl>(std::move(data)); }

heap_ptr open_heap(node data, unsigned char client_sig) {
  return make_kernel_shared<heap_impl>(std::move(data), client_sig);
}

}  // namespace pststore
