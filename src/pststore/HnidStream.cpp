#include "pststore/HnidStream.h"

#include <algorithm>
#include <array>

namespace pststore {

namespace {

// Memory is filled as far as there are bytes: a node may be shorter than it says.
byte_vector read_whole(const node& data) {
  constexpr ulonglong step = 65536;
  const ulonglong size = data.size();
  byte_vector bytes;
  bytes.reserve(size);
  while (bytes.size() < size) {
    const size_t done = bytes.size();
    bytes.resize(std::min(done + step, size));
    data.read(std::span(bytes).subspan(done), done);
  }
  return bytes;
}

}  // namespace

hnid_stream_device::hnid_stream_device(heap_ptr heap, ulong hid)
    : hid_(hid), heap_(std::move(heap)), node_(heap_->get_node()), is_hid_(true) {}

hnid_stream_device::hnid_stream_device(node data) : node_(std::move(data)), is_hid_(false) {}

// The stream library counts with a sign.
std::streamsize hnid_stream_device::read(char* destination, std::streamsize count) {
  const std::span room(reinterpret_cast<unsigned char*>(destination),
                       static_cast<size_t>(std::max<std::streamsize>(count, 0)));
  size_t done = 0;
  if (is_once_) {
    done = pass(room);
  } else if (is_hid_) {
    done = read_allocation(room);
  } else if (!room.empty()) {
    done = advance(node_.read(room, node_position_));
  }
  return done == 0 ? -1 : static_cast<std::streamsize>(done);
}

size_t hnid_stream_device::pass(std::span<unsigned char> destination) {
  if (is_hid_) return read_allocation(destination);
  return destination.empty() ? 0 : advance(node_.pass(destination, node_position_));
}

size_t hnid_stream_device::skip() {
  if (!is_hid_) return advance(node_.skip(pass_step, node_position_));
  std::array<unsigned char, pass_step> unwanted;
  return read_allocation(unwanted);
}

size_t hnid_stream_device::read_allocation(std::span<unsigned char> destination) {
  if (hid_ == 0) return 0;
  const size_t size = heap_->size(hid_);
  const size_t left = size - std::min(size, position_);
  destination = destination.first(std::min(destination.size(), left));
  if (destination.empty()) return 0;
  const size_t done = heap_->read(destination, hid_, position_);
  const auto missing = destination.subspan(done);
  std::fill(missing.begin(), missing.end(), '\0');
  position_ += destination.size();
  return destination.size();
}

size_t hnid_stream_device::advance(size_t done) {
  node_position_ += done;
  return done;
}

std::streampos hnid_stream_device::seek(boost::iostreams::stream_offset offset,
                                        std::ios_base::seekdir direction) {
  size_t& position = is_hid_ ? position_ : node_position_;
  const auto size = static_cast<int64_t>(is_hid_ ? heap_->size(hid_) : node_.size());
  auto base = static_cast<int64_t>(position);
  if (direction == std::ios_base::beg) base = 0;
  if (direction == std::ios_base::end) base = size;
  // Both are between 0 and the size, so that clamping the offset is clamping the sum.
  base += std::clamp<int64_t>(offset, -base, size - base);
  position = static_cast<size_t>(base);
  return base;
}

ulonglong hnid_size(const heap_impl& heap, ulong hnid) {
  return is_heap_id(hnid) ? heap.size(hnid) : heap.get_node().lookup(hnid).size();
}

byte_vector read_hnid(const heap_impl& heap, ulong hnid) {
  return is_heap_id(hnid) ? heap.read(hnid) : read_whole(heap.get_node().lookup(hnid));
}

hnid_stream_device open_hnid(heap_impl& heap, ulong hnid) {
  if (is_heap_id(hnid)) return heap.open_stream(hnid);
  return hnid_stream_device(heap.get_node().lookup(hnid));
}

}  // namespace pststore
