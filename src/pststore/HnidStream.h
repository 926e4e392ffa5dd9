// HnidStream.h - one stored value: an allocation of a heap, or the data of a whole subnode. It is
// read at once, or as a seekable stream of bytes.
//
// `hnid_stream_device` is an input-seekable device of Boost.Iostreams, and a value: copies move on
// their own. `prop_stream` is the stream over a copy of it, with a buffer of 4096 bytes and 4 bytes
// of putback. Both hold the heap or subnode, and may outlive whatever made them.
//
// To read or test a value without keeping it, `pass` or `skip` it from its start to its end.
//
// An allocation may end after its page; what the page does not hold is zeros. A read that begins
// there raises what Heap.h says.
//
// What the store throws comes out of a prop_stream unchanged. Writing through its buffer fails with
// the stream library's failure "no write access".
#ifndef TARN_PSTSTORE_HNIDSTREAM_H
#define TARN_PSTSTORE_HNIDSTREAM_H

#include <boost/iostreams/categories.hpp>
#include <boost/iostreams/positioning.hpp>
#include <boost/iostreams/stream.hpp>
#include <ios>
#include <span>

#include "pststore/Heap.h"
#include "pststore/Node.h"
#include "pststore/Types.h"

namespace pststore {

class hnid_stream_device {
 public:
  // What a prop_stream asks for at once. In other steps damage may show at another place.
  static constexpr size_t pass_step = 4096;

  using char_type = char;
  struct category : boost::iostreams::input_seekable, boost::iostreams::device_tag {};

  // An allocation of the heap, which is never null; heap id 0 has no data.
  hnid_stream_device(heap_ptr heap, ulong hid);
  // The data of a node.
  explicit hnid_stream_device(node data);

  // The number of bytes delivered, or -1 at the end of the data and for a count of 0.
  std::streamsize read(char* destination, std::streamsize count);

  // From now on reads let go of what they have passed. Going back reads it anew.
  void read_once() { is_once_ = true; }

  // The number of bytes delivered, or 0 at the end of the data and without room. What has been
  // passed is let go.
  size_t pass(std::span<unsigned char> destination);
  // Passes at most pass_step bytes that nobody wants. They are read and tested all the same. Their
  // number, or 0 at the end of the data.
  size_t skip();

  // The new position: from the start (beg), the end (end) or the present position (all else), kept
  // between 0 and the size.
  std::streampos seek(boost::iostreams::stream_offset offset, std::ios_base::seekdir direction);

 private:
  size_t read_allocation(std::span<unsigned char> destination);
  size_t advance(size_t done);

  size_t position_ = 0;
  ulong hid_ = 0;
  heap_ptr heap_;  // null if a node is read
  size_t node_position_ = 0;
  node node_;  // of the heap if an allocation is read
  bool is_hid_;
  bool is_once_ = false;
};

// What a heap-or-node id refers to: an allocation of the heap, or a subnode of the heap's node.
// key_not_found<ulong> for a subnode that does not exist; an allocation is looked at when its
// stream is read.
ulonglong hnid_size(const heap_impl& heap, ulong hnid);
byte_vector read_hnid(const heap_impl& heap, ulong hnid);
hnid_stream_device open_hnid(heap_impl& heap, ulong hnid);

class prop_stream : public boost::iostreams::stream<hnid_stream_device, std::char_traits<char>,
                                                    kernel_allocator<char>> {
 public:
  explicit prop_stream(const hnid_stream_device& device)
      : boost::iostreams::stream<hnid_stream_device, std::char_traits<char>,
                                 kernel_allocator<char>>(device) {
    exceptions(std::ios_base::badbit);
  }
};

}  // namespace pststore

#endif
