// DbContext.h - an open store: the one object through which everything above reaches the file.
//
// A store is read only, by one thread at a time. It is open as long as a shared pointer to it
// lives; nodes hold one, pages and blocks do not. Objects that the operations make refer to the
// context given as `parent`, which is this one but for contexts that are put before others.
//
// Every operation checks what it reads and throws what Errors.h lists. A failure changes nothing,
// and the store stays usable, with one exception: a context that has read 1 GiB and 64 times the
// size of its file gives up and throws database_corrupt at every further read (StoreFile.h). Only
// the two root pages are kept here; all else is kept by those who asked for it.
#ifndef TARN_PSTSTORE_DBCONTEXT_H
#define TARN_PSTSTORE_DBCONTEXT_H

#include <memory>

#include "pststore/Blocks.h"
#include "pststore/Errors.h"
#include "pststore/Node.h"
#include "pststore/Pages.h"
#include "pststore/Types.h"

namespace pststore {

class db_context : public std::enable_shared_from_this<db_context> {
 public:
  using context_ptr = std::shared_ptr<db_context>;

  db_context() = default;
  db_context(const db_context&) = delete;
  db_context& operator=(const db_context&) = delete;
  virtual ~db_context() = default;

  // key_not_found<ulong> when there is no such node.
  virtual node lookup_node(ulong nid) = 0;
  virtual node_info lookup_node_info(ulong nid) = 0;
  // Bit 0 of the id does not count. Id 0 is the empty block, all zeros; key_not_found<ulonglong>
  // when there is no such block.
  virtual block_info lookup_block_info(ulonglong bid) = 0;

  // Both are read once and kept.
  virtual std::shared_ptr<bbt_page> read_bbt_root() = 0;
  virtual std::shared_ptr<nbt_page> read_nbt_root() = 0;

  // unexpected_page for a page of another type.
  virtual std::shared_ptr<bbt_page> read_bbt_page(const page_info& info) = 0;
  virtual std::shared_ptr<nbt_page> read_nbt_page(const page_info& info) = 0;

  // unexpected_block for a block of another kind.
  virtual std::shared_ptr<data_block> read_data_block(const context_ptr& parent,
                                                      const block_info& info) = 0;
  virtual std::shared_ptr<extended_block> read_extended_block(const context_ptr& parent,
                                                              const block_info& info) = 0;
  virtual std::shared_ptr<external_block> read_external_block(const context_ptr& parent,
                                                              const block_info& info) = 0;
  virtual std::shared_ptr<subnode_block> read_subnode_block(const context_ptr& parent,
                                                            const block_info& info) = 0;

  // The same after lookup_block_info, for objects that refer to this context.
  std::shared_ptr<data_block> read_data_block(ulonglong bid) {
    return read_data_block(shared_from_this(), bid);
  }
  std::shared_ptr<subnode_block> read_subnode_block(ulonglong bid) {
    return read_subnode_block(shared_from_this(), bid);
  }

  // New blocks of zeros in memory, for holes. They count like blocks of the file for what may be
  // read.
  virtual std::shared_ptr<external_block> create_external_block(const context_ptr& parent,
                                                                ulonglong size) = 0;
  virtual std::shared_ptr<extended_block> create_extended_block(const context_ptr& parent,
                                                                ulonglong size) = 0;

  // The next id for a block in memory. Of an internal block's id only the bit that says so is left:
  // such blocks are never looked up by it.
  virtual ulonglong alloc_bid(bool is_internal) = 0;

  // database_corrupt when the blocks of one tree take more bytes than the file can give them.
  virtual void expect_tree_room(ulonglong bytes) = 0;

  // Not used by the filter: what has been read so far, as StoreFile.h counts it. What is kept of it
  // in memory is in proportion.
  virtual ulonglong get_bytes_taken() const = 0;

  // Not used by the filter, but by tests: the rest of what a store offers.

  // unexpected_page also for a page of another level.
  virtual std::shared_ptr<nbt_leaf_page> read_nbt_leaf_page(const page_info& info) = 0;
  virtual std::shared_ptr<bbt_leaf_page> read_bbt_leaf_page(const page_info& info) = 0;
  virtual std::shared_ptr<nbt_nonleaf_page> read_nbt_nonleaf_page(const page_info& info) = 0;
  virtual std::shared_ptr<bbt_nonleaf_page> read_bbt_nonleaf_page(const page_info& info) = 0;

  // A block of data, or of subnodes when it is not one.
  virtual std::shared_ptr<block> read_block(const context_ptr& parent, const block_info& info) = 0;
  virtual std::shared_ptr<subnode_leaf_block> read_subnode_leaf_block(const context_ptr& parent,
                                                                      const block_info& info) = 0;
  virtual std::shared_ptr<subnode_nonleaf_block> read_subnode_nonleaf_block(
      const context_ptr& parent, const block_info& info) = 0;

  // The reads of blocks after lookup_block_info.
  std::shared_ptr<block> read_block(const context_ptr& parent, ulonglong bid) {
    return read_block(parent, lookup_block_info(bid));
  }
  std::shared_ptr<data_block> read_data_block(const context_ptr& parent, ulonglong bid) {
    return read_data_block(parent, lookup_block_info(bid));
  }
  std::shared_ptr<extended_block> read_extended_block(const context_ptr& parent, ulonglong bid) {
    return read_extended_block(parent, lookup_block_info(bid));
  }
  std::shared_ptr<external_block> read_external_block(const context_ptr& parent, ulonglong bid) {
    return read_external_block(parent, lookup_block_info(bid));
  }
  std::shared_ptr<subnode_block> read_subnode_block(const context_ptr& parent, ulonglong bid) {
    return read_subnode_block(parent, lookup_block_info(bid));
  }
  std::shared_ptr<subnode_leaf_block> read_subnode_leaf_block(const context_ptr& parent,
                                                              ulonglong bid) {
    return read_subnode_leaf_block(parent, lookup_block_info(bid));
  }
  std::shared_ptr<subnode_nonleaf_block> read_subnode_nonleaf_block(const context_ptr& parent,
                                                                    ulonglong bid) {
    return read_subnode_nonleaf_block(parent, lookup_block_info(bid));
  }

  // New blocks in memory over one child, for streams that grow.
  virtual std::shared_ptr<extended_block> create_extended_block(
      const context_ptr& parent, const std::shared_ptr<extended_block>& child) = 0;
  virtual std::shared_ptr<extended_block> create_extended_block(
      const context_ptr& parent, const std::shared_ptr<external_block>& child) = 0;
};

// Opens the file, which may have either layout. The path is NUL-terminated. Throws
//   std::runtime_error   "fopen failed";
//   std::out_of_range    "fseek failed" or "fread failed", also for less than a header;
//   crc_fail             the header is damaged.
std::shared_ptr<db_context> open_database(const char16_t* path);

}  // namespace pststore

#endif
