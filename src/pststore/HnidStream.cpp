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
    data.read(&bytes[done], bytes.size() - done, done);
  }
  return bytes;
}

}  // namespace

hnid_stream_device::hnid_stream_device(heap_ptr heap, ulong hid)
    : hid_(hid), heap_(std::move(heap)), node_(heap_->get_node()), is_hid_(true) {}

hnid_stream_device::hnid_stream_device(node data) : node_(std::move(data)), is_hid_(false) {}

std::streamsize hnid_stream_device::read(char* destination, std::streamsize count) {
  if (is_once_) return pass(destination, count);
  if (is_hid_) return read_allocation(destination, count);
  if (count <= 0) return -1;
  return advance(node_.read(destination, static_cast<ulonglong>(count),
                            static_cast<ulonglong>(node_position_)));
}

std::streamsize hnid_stream_device::pass(char* destination, std::streamsize count) {
  if (is_hid_ && destination == nullptr) {
    std::array<char, pass_step> unwanted;
    return read_allocation(unwanted.data(), std::min(count, pass_step));
  }
  if (is_hid_) return read_allocation(destination, count);
  if (count <= 0) return -1;
  return advance(node_.pass(destination, static_cast<ulonglong>(count),
                            static_cast<ulonglong>(node_position_)));
}

std::streamsize hnid_stream_device::read_allocation(char* destination, std::streamsize count) {
  if (hid_ == 0) return -1;
  count =
      std::min<std::streamsize>(count, static_cast<std::streamsize>(heap_->size(hid_)) - position_);
  if (count <= 0) return -1;
  const size_t done =
      heap_->read(destination, static_cast<size_t>(count), hid_, static_cast<ulong>(position_));
  std::fill(destination + done, destination + count, '\0');
  position_ += count;
  return count;
}

// A place behind `done` bytes of the node.
std::streamsize hnid_stream_device::advance(size_t done) {
  if (done == 0) return -1;
  node_position_ += static_cast<int64_t>(done);
  return static_cast<std::streamsize>(done);
}

std::streampos hnid_stream_device::seek(boost::iostreams::stream_offset offset,
                                        std::ios_base::seekdir direction) {
  int64_t& position = is_hid_ ? position_ : node_position_;
  const auto size = static_cast<int64_t>(is_hid_ ? heap_->size(hid_) : node_.size());
  int64_t base = position;
  if (direction == std::ios_base::beg) base = 0;
  if (direction == std::ios_base::end) base = size;
  // Both lie between 0 and the size, so that clamping the offset is clamping the sum.
  position = base + std::clamp<int64_t>(offset, -base, size - base);
  return position;
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
