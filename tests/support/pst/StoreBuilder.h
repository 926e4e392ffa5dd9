// StoreBuilder.h - writes a PST store of folders and messages from a description.
//
//   StoreBuilder store(PstLayout::Unicode, PstEncoding::Permute);
//   FolderBuilder& inbox = store.folder("Inbox");
//   inbox.message().subject(u"Hello").html("<p>Hi</p>").attachment(u"a.png", bytes);
//   std::string image = store.bytes();
//
// A store has the nodes that it needs as published, unless it is bare: then it has only what is
// described. Folders are below the top of the personal folders. Root folder, top and deleted
// items are folders like the described ones and come before them in the order of the node ids;
// their content counts are 0.
//
// A store with a path streams into that file: a message is written when the next one of any folder
// begins, so that a reference to it ends there. In memory all references last until bytes or write.
#ifndef TARN_TESTS_SUPPORT_PST_STOREBUILDER_H
#define TARN_TESTS_SUPPORT_PST_STOREBUILDER_H

#include <cstdint>
#include <deque>
#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "support/pst/MessageBuilder.h"
#include "support/pst/PstFileBuilder.h"
#include "support/pst/StoreTemplates.h"

namespace tarn::test {

struct StoreOptions {
  PstFileOptions file = {};
  // Of the property contexts. The row indexes have their own in the shape of their table.
  BthShape bags = {};
  bool isBare = false;
  // Contents tables have no columns but row id and row version.
  bool hasLeanTables = false;

  // Bare, compact and lean: a store of a few messages in 2 to 3 kB.
  static StoreOptions Smallest(PstLayout layout, PstEncoding encoding);
};

class StoreBuilder;

class FolderBuilder {
 public:
  FolderBuilder(StoreBuilder& store, uint32_t nid, uint32_t parent);

  uint32_t nid() const { return nid_; }
  // With the next free node id, or with this one.
  MessageBuilder& message();
  MessageBuilder& message(uint32_t nid);
  FolderBuilder& folder(std::u16string_view name);

  FolderBuilder& name(std::u16string_view name);
  FolderBuilder& name(std::string_view name);
  // The content count that the folder claims; else it is the number of rows.
  FolderBuilder& count(uint32_t count);
  FolderBuilder& property(uint16_t id, uint16_t type, std::string_view value);
  FolderBuilder& without(uint16_t id);
  // A row of the contents table for which no message is written, between those of the messages
  // begun before and after.
  FolderBuilder& row(uint32_t rowId);
  FolderBuilder& contentsTable(const TableShape& shape);
  FolderBuilder& withoutContentsTable();
  // The contents table is this node, whatever it is.
  FolderBuilder& contentsTable(PstNodeParts parts);
  // A row of the hierarchy table for a folder that is not below this one.
  FolderBuilder& subfolderRow(uint32_t rowId);
  // Deviating: the parent has no row for this folder.
  FolderBuilder& withoutRow();
  FolderBuilder& withoutHierarchyTable();
  // The hierarchy table is this node, whatever it is.
  FolderBuilder& hierarchyTable(PstNodeParts parts);
  // Deviating: no node of the folder's own; its tables are there.
  FolderBuilder& withoutNode();

  PropertyContextBuilder& properties() { return bag_; }

 private:
  friend class StoreBuilder;
  struct Pending {
    uint32_t nid;
    std::optional<MessageBuilder> message;
  };

  void flush();
  TableContextBuilder& contents();
  // Adds what depends on rows and children.
  void completeBag(bool hasChildren);

  StoreBuilder& store_;
  uint32_t nid_;
  uint32_t parent_;
  PropertyContextBuilder bag_;
  std::deque<Pending> pending_;
  TableShape shape_;
  std::optional<TableContextBuilder> contents_;
  std::optional<PstNodeParts> contentsNode_;
  uint32_t rows_ = 0;
  bool hasContents_ = true;
  bool hasRow_ = true;
  bool hasHierarchy_ = true;
  bool hasNode_ = true;
  std::optional<PstNodeParts> hierarchyNode_;
  std::vector<uint32_t> subfolderRows_;
  std::set<uint16_t> omitted_;
};

class StoreBuilder {
 public:
  explicit StoreBuilder(PstLayout layout, PstEncoding encoding = PstEncoding::None);
  explicit StoreBuilder(const StoreOptions& options);
  StoreBuilder(const StoreOptions& options, const std::filesystem::path& path);
  StoreBuilder(const StoreBuilder&) = delete;
  StoreBuilder& operator=(const StoreBuilder&) = delete;

  // References last as long as the store.
  FolderBuilder& folder(std::u16string_view name);
  FolderBuilder& folder(std::string_view name);
  // With this node id, whatever its type.
  FolderBuilder& folder(uint32_t nid, std::u16string_view name);
  // Below this node, whatever it is.
  FolderBuilder& folder(uint32_t nid, uint32_t parent, std::u16string_view name);
  // The usual folders.
  FolderBuilder& root() { return usual(kRootFolderNid); }
  FolderBuilder& subtree() { return usual(kSubtreeNid); }
  // In place of the usual nodes.
  StoreNodes& nodes() { return nodes_; }
  // A node of its own.
  StoreBuilder& node(uint32_t nid, const PstNodeParts& parts, uint32_t parent = 0);

  // The file below, for blocks and nodes by hand before finish.
  PstFileBuilder& file() { return file_; }
  const StoreOptions& options() const { return options_; }
  PstLayout layout() const { return options_.file.layout; }

  void finish();
  const std::string& bytes();
  // Finishes and writes the image of a store in memory.
  void write(const std::filesystem::path& path);

 private:
  friend class FolderBuilder;
  FolderBuilder& add(uint32_t nid, uint32_t parent);
  FolderBuilder& usual(uint32_t nid);
  void addUsualFolders();
  uint32_t takeMessageNid() { return nextMessage_++ << 5 | 0x04; }
  uint32_t takeFolderNid() { return nextFolder_++ << 5 | 0x02; }
  void beginMessage(FolderBuilder& folder);
  void writeHierarchy(const FolderBuilder& folder,
                      const std::vector<const FolderBuilder*>& children);
  void writeFolder(FolderBuilder& folder, const std::vector<const FolderBuilder*>& children);

  StoreOptions options_;
  bool isStreaming_;
  PstFileBuilder file_;
  std::deque<FolderBuilder> folders_;
  StoreNodes nodes_;
  FolderBuilder* open_ = nullptr;  // of the last message, in a stream
  uint32_t nextFolder_ = 0x404;
  uint32_t nextMessage_ = 0x10001;
  bool isFinished_ = false;
};

}  // namespace tarn::test

#endif
