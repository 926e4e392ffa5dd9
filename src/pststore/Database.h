// Database.h - a store in a file: db_context over one of the two layouts.
//
// What the reader gives as bytes becomes pages and blocks here. Entries are copied out in the order
// of the file, as many as it says. Only one that ends beyond its page or its block's extent raises
// database_corrupt: padding and trailer may be read as entries.
#ifndef TARN_PSTSTORE_DATABASE_H
#define TARN_PSTSTORE_DATABASE_H

#include "pststore/DbContext.h"
#include "pststore/DiskReader.h"

namespace pststore {

template <typename T>
class database_impl final : public db_context {
 public:
  // As disk_reader. Lives under a shared pointer.
  explicit database_impl(const char16_t* path) : reader_(path) {}

  node lookup_node(ulong nid) override;
  node_info lookup_node_info(ulong nid) override;
  block_info lookup_block_info(ulonglong bid) override;

  std::shared_ptr<bbt_page> read_bbt_root() override;
  std::shared_ptr<nbt_page> read_nbt_root() override;
  std::shared_ptr<bbt_page> read_bbt_page(const page_info& info) override;
  std::shared_ptr<nbt_page> read_nbt_page(const page_info& info) override;

  std::shared_ptr<data_block> read_data_block(const context_ptr& parent,
                                              const block_info& info) override;
  std::shared_ptr<extended_block> read_extended_block(const context_ptr& parent,
                                                      const block_info& info) override;
  std::shared_ptr<external_block> read_external_block(const context_ptr& parent,
                                                      const block_info& info) override;
  std::shared_ptr<subnode_block> read_subnode_block(const context_ptr& parent,
                                                    const block_info& info) override;
  std::shared_ptr<external_block> create_external_block(const context_ptr& parent,
                                                        ulonglong size) override;
  std::shared_ptr<extended_block> create_extended_block(const context_ptr& parent,
                                                        ulonglong size) override;
  ulonglong alloc_bid(bool is_internal) override;
  void expect_tree_room(ulonglong bytes) override;

  // Not used by the filter.
  ulonglong get_bytes_taken() const override { return reader_.get_bytes_taken(); }
  std::shared_ptr<nbt_leaf_page> read_nbt_leaf_page(const page_info& info) override;
  std::shared_ptr<bbt_leaf_page> read_bbt_leaf_page(const page_info& info) override;
  std::shared_ptr<nbt_nonleaf_page> read_nbt_nonleaf_page(const page_info& info) override;
  std::shared_ptr<bbt_nonleaf_page> read_bbt_nonleaf_page(const page_info& info) override;
  std::shared_ptr<block> read_block(const context_ptr& parent, const block_info& info) override;
  std::shared_ptr<subnode_leaf_block> read_subnode_leaf_block(const context_ptr& parent,
                                                              const block_info& info) override;
  std::shared_ptr<subnode_nonleaf_block> read_subnode_nonleaf_block(
      const context_ptr& parent, const block_info& info) override;
  std::shared_ptr<extended_block> create_extended_block(
      const context_ptr& parent, const std::shared_ptr<extended_block>& child) override;
  std::shared_ptr<extended_block> create_extended_block(
      const context_ptr& parent, const std::shared_ptr<external_block>& child) override;

 private:
  using layout = disk::layout<T>;

  // A page of one of the trees; unexpected_page for one of another type.
  page_bytes read_page(const page_info& info, disk::page_type type);
  static bool is_leaf(const page_bytes& bytes) { return bytes[layout::page_level] == 0; }
  std::shared_ptr<bbt_leaf_page> make_bbt_leaf(const page_info& info, const page_bytes& bytes);
  std::shared_ptr<nbt_leaf_page> make_nbt_leaf(const page_info& info, const page_bytes& bytes);
  std::shared_ptr<bbt_nonleaf_page> make_bbt_nonleaf(const page_info& info,
                                                     const page_bytes& bytes);
  std::shared_ptr<nbt_nonleaf_page> make_nbt_nonleaf(const page_info& info,
                                                     const page_bytes& bytes);
  std::shared_ptr<subnode_leaf_block> make_subnode_leaf(const context_ptr& parent,
                                                        const block_info& info, bytes_view bytes);
  std::shared_ptr<subnode_nonleaf_block> make_subnode_nonleaf(const context_ptr& parent,
                                                              const block_info& info,
                                                              bytes_view bytes);

  disk_reader<T> reader_;
  std::shared_ptr<bbt_page> bbt_root_;
  std::shared_ptr<nbt_page> nbt_root_;
};

}  // namespace pststore

#endif
