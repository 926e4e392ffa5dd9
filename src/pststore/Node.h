// Node.h - a node: an id, a stream of bytes, and a small tree of subnodes.
//
// The stream is in one block or in a tree of blocks; it is read flat, or page by page, a page
// being one block of data. Everything is loaded at the first need and kept. A copy of a node shares
// what was loaded when it was made and goes on loading for itself. A node keeps its context, and a
// subnode its container, alive.
//
// Offsets and sizes count bytes. Damage is found at the first touch of the data, not when the node
// is made. Operations throw
//   database_corrupt           the data is damaged;
//   key_not_found<ulonglong>   the store has no such block;
//   std::out_of_range          a place is outside of a page, a tree or the file;
//   std::bad_alloc             there is no memory.
#ifndef TARN_PSTSTORE_NODE_H
#define TARN_PSTSTORE_NODE_H

#include <memory>
#include <span>

#include "pststore/Types.h"

namespace pststore {

class data_block;
class db_context;
class node_impl;
class subnode_block;

class node {
 public:
  node(const std::shared_ptr<db_context>& context, const node_info& info);
  explicit node(std::shared_ptr<node_impl> impl);
  node(const node& other);
  node& operator=(const node& other);
  node(node&&) noexcept = default;
  node& operator=(node&&) noexcept = default;
  ~node();

  ulong get_id() const;
  ulonglong size() const;
  size_t get_page_count() const;
  ulonglong get_page_size(size_t page) const;

  // One little-endian value that lies wholly in one page, else std::out_of_range. T is a ushort,
  // ulong, ulonglong or unsigned char.
  template <typename T>
  T read(size_t page, size_t offset) const;

  // A flat read, clipped at the end of the stream. The result is the number of bytes read.
  size_t read(std::span<unsigned char> destination, ulonglong offset) const;

  // The same, for going from the start of the stream to its end once: what has been passed is let
  // go.
  size_t pass(std::span<unsigned char> destination, ulonglong offset) const;
  // Passes `count` bytes that nobody wants. They are read and tested all the same.
  size_t skip(size_t count, ulonglong offset) const;

  // The subnode as a node of its own; key_not_found<ulong> when there is none.
  node lookup(ulong sub_id) const;
  // Whether there is such a subnode.
  bool has(ulong sub_id) const;

  // The data block, loaded at the first need.
  std::shared_ptr<data_block> get_data_block() const;
  const std::shared_ptr<db_context>& get_context() const;

  // Not used by the filter: the root of the tree of subnodes, loaded at the first need.
  std::shared_ptr<subnode_block> get_subnode_block() const;

  // Not used by the filter: a read from one page, clipped at its end. An empty buffer reads
  // nothing.
  size_t read(std::span<unsigned char> buffer, size_t page, size_t offset) const;

 private:
  std::shared_ptr<node_impl> impl_;
};

}  // namespace pststore

#endif
