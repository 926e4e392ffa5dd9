// StoreObjects.h - folders, messages and attachments, and the iterators over them.
//
// The folders of a store are all nodes of folder type, in the order of their ids; there is no
// hierarchy here. A folder's contents table is the node with the folder's id and another type; the
// row ids of that table are the node ids of the messages. A message has its attachment table as a
// subnode, whose row ids are the ids of the attachments among the message's subnodes.
//
// All are values. Each holds what it needs and keeps the store open; they may be destroyed in any
// order. Tables are loaded at the first need, once for each object. Everything that the store
// throws passes, but for what get_filename and get_attachment_count say.
#ifndef TARN_PSTSTORE_STOREOBJECTS_H
#define TARN_PSTSTORE_STOREOBJECTS_H

#include <array>
#include <memory>

#include "pststore/BtreeNode.h"
#include "pststore/DbContext.h"
#include "pststore/Node.h"
#include "pststore/PropertyBag.h"
#include "pststore/Table.h"
#include "pststore/Types.h"

namespace pststore {

class folder {
 public:
  folder(std::shared_ptr<db_context> context, property_bag&& bag)
      : context_(std::move(context)), bag_(std::move(bag)) {}
  folder(const folder& other);
  folder& operator=(const folder& other);
  folder(folder&&) noexcept = default;
  folder& operator=(folder&&) noexcept = default;
  ~folder() = default;

  const property_bag& get_property_bag() const { return bag_; }
  ulong get_id() const { return bag_.get_node().get_id(); }

 private:
  friend const std::shared_ptr<table>& get_contents_table(const folder& owner);

  std::shared_ptr<db_context> context_;
  property_bag bag_;
  // The contents table, and two that are never filled.
  mutable std::array<std::shared_ptr<table>, 3> tables_;
};

class message {
 public:
  explicit message(property_bag&& bag) : bag_(std::move(bag)) {}
  message(const message& other);
  message& operator=(const message& other);
  message(message&&) noexcept = default;
  message& operator=(message&&) noexcept = default;
  ~message() = default;

  const property_bag& get_property_bag() const { return bag_; }
  ulong get_id() const { return bag_.get_node().get_id(); }

 private:
  friend const std::shared_ptr<table>& get_attachment_table(const message& owner);
  friend ulong get_attachment_count(const message& owner);

  property_bag bag_;
  // The attachment table, and one that is never filled.
  mutable std::array<std::shared_ptr<table>, 2> tables_;
};

class attachment {
 public:
  explicit attachment(property_bag&& bag) : bag_(std::move(bag)) {}

  const property_bag& get_property_bag() const { return bag_; }

 private:
  property_bag bag_;
};

// Over the nodes of folder type. A step that fails leaves the iterator where it was.
class folder_iterator {
 public:
  folder_iterator& operator++();
  friend bool operator==(const folder_iterator& left, const folder_iterator& right) {
    return left.current_ == right.current_;
  }

 private:
  using position = btree_iter_impl<ulong, node_info>;

  friend folder_iterator folder_begin(const std::shared_ptr<db_context>& context);
  friend folder_iterator folder_end(const std::shared_ptr<db_context>& context);
  friend folder make_folder(const folder_iterator& at);

  folder_iterator(position current, position end, std::shared_ptr<db_context> context)
      : current_(std::move(current)), end_(std::move(end)), context_(std::move(context)) {}
  bool is_end(const position& at) const;
  void skip_others(position& at) const;

  position current_;
  position end_;
  std::shared_ptr<db_context> context_;
};

// Over the rows of a contents table. Two are equal when their rows are.
class message_iterator {
 public:
  message_iterator(const_table_row_iter row, std::shared_ptr<db_context> context)
      : row_(std::move(row)), context_(std::move(context)) {}

  message_iterator& operator++() {
    ++row_;
    return *this;
  }
  friend bool operator==(const message_iterator& left, const message_iterator& right) {
    return left.row_.row == right.row_.row;
  }

 private:
  friend property_bag make_message_bag(const message_iterator& at);

  const_table_row_iter row_;
  std::shared_ptr<db_context> context_;
};

// Over the rows of an attachment table. Two are equal when their rows are.
class attachment_iterator {
 public:
  attachment_iterator(const_table_row_iter row, const node& owner)
      : row_(std::move(row)), message_node_(owner) {}

  attachment_iterator& operator++() {
    ++row_;
    return *this;
  }
  friend bool operator==(const attachment_iterator& left, const attachment_iterator& right) {
    return left.row_.row == right.row_.row;
  }

 private:
  friend attachment make_attachment(const attachment_iterator& at);

  const_table_row_iter row_;
  node message_node_;
};

folder_iterator folder_begin(const std::shared_ptr<db_context>& context);
folder_iterator folder_end(const std::shared_ptr<db_context>& context);

// std::out_of_range at the end.
folder make_folder(const folder_iterator& at);

// key_not_found<ulong> for a folder without a contents table.
const std::shared_ptr<table>& get_contents_table(const folder& owner);

message make_message(const message_iterator& at);
// Only the properties of the message.
property_bag make_message_bag(const message_iterator& at);

// key_not_found<ulong> for a message without attachments.
const std::shared_ptr<table>& get_attachment_table(const message& owner);
// 0 for any key_not_found<ulong> while the table is loaded.
ulong get_attachment_count(const message& owner);
attachment_iterator attachment_begin(const message& owner);
attachment_iterator attachment_end(const message& owner);
attachment make_attachment(const attachment_iterator& at);

// The long name, or the short one when there is no long one.
wstring get_filename(const attachment& source);

}  // namespace pststore

#endif
