#include "support/pst/StoreBuilder.h"

#include <fstream>
#include <map>
#include <stdexcept>

#include "support/pst/PstBytes.h"
#include "support/pst/StoreTemplates.h"

namespace tarn::test {

StoreOptions StoreOptions::Smallest(PstLayout layout, PstEncoding encoding) {
  StoreOptions options;
  options.file.layout = layout;
  options.file.encoding = encoding;
  options.file.isCompact = true;
  options.isBare = true;
  options.hasLeanTables = true;
  return options;
}

FolderBuilder::FolderBuilder(StoreBuilder& store, uint32_t nid, uint32_t parent)
    : store_(store),
      nid_(nid),
      parent_(parent),
      bag_(store.options().file.layout, store.options().bags) {
  bag_.number(kPropContentUnreadCount, kTypeInt32, 0);
}

MessageBuilder& FolderBuilder::message() { return message(store_.takeMessageNid()); }

MessageBuilder& FolderBuilder::message(uint32_t nid) {
  store_.beginMessage(*this);
  Pending& pending = pending_.emplace_back(
      Pending{nid, MessageBuilder(store_.layout(), store_.options().bags, nid)});
  if (!store_.options().isBare) pending.message->withRecipientTable();
  return *pending.message;
}

FolderBuilder& FolderBuilder::folder(std::u16string_view name) {
  return store_.add(store_.takeFolderNid(), nid_).name(name);
}

FolderBuilder& FolderBuilder::name(std::u16string_view name) {
  bag_.text(kPropDisplayName, name);
  return *this;
}

FolderBuilder& FolderBuilder::name(std::string_view name) {
  bag_.text(kPropDisplayName, name);
  return *this;
}

FolderBuilder& FolderBuilder::count(uint32_t count) {
  bag_.number(kPropContentCount, kTypeInt32, count);
  return *this;
}

FolderBuilder& FolderBuilder::property(uint16_t id, uint16_t type, std::string_view value) {
  bag_.value(id, type, value);
  return *this;
}

FolderBuilder& FolderBuilder::without(uint16_t id) {
  omitted_.insert(id);
  bag_.without(id);
  return *this;
}

FolderBuilder& FolderBuilder::row(uint32_t rowId) {
  pending_.push_back({rowId, {}});
  return *this;
}

FolderBuilder& FolderBuilder::contentsTable(const TableShape& shape) {
  if (contents_) throw std::logic_error("shape after rows that were written");
  shape_ = shape;
  return *this;
}

FolderBuilder& FolderBuilder::contentsTable(PstNodeParts parts) {
  contentsNode_ = std::move(parts);
  return *this;
}

FolderBuilder& FolderBuilder::subfolderRow(uint32_t rowId) {
  subfolderRows_.push_back(rowId);
  return *this;
}

FolderBuilder& FolderBuilder::withoutRow() {
  hasRow_ = false;
  return *this;
}

FolderBuilder& FolderBuilder::withoutHierarchyTable() {
  hasHierarchy_ = false;
  return *this;
}

FolderBuilder& FolderBuilder::hierarchyTable(PstNodeParts parts) {
  hierarchyNode_ = std::move(parts);
  return *this;
}

FolderBuilder& FolderBuilder::withoutNode() {
  hasNode_ = false;
  return *this;
}

FolderBuilder& FolderBuilder::withoutContentsTable() {
  hasContents_ = false;
  return *this;
}

TableContextBuilder& FolderBuilder::contents() {
  if (!contents_) {
    contents_.emplace(store_.layout(), shape_);
    if (!store_.options().hasLeanTables) AddContentsColumns(*contents_);
  }
  return *contents_;
}

void FolderBuilder::flush() {
  for (Pending& pending : pending_) {
    TableContextBuilder::Row row = contents().row(pending.nid);
    ++rows_;
    if (!pending.message) continue;
    CopyToRow(pending.message->properties(), contents(), row);
    store_.file_.node(pending.nid, pending.message->build(), nid_);
  }
  pending_.clear();
}

void FolderBuilder::completeBag(bool hasChildren) {
  if (!bag_.has(kPropContentCount) && !omitted_.contains(kPropContentCount)) count(rows_);
  if (!bag_.has(kPropSubfolders) && !omitted_.contains(kPropSubfolders)) {
    bag_.number(kPropSubfolders, kTypeBoolean, hasChildren ? 1 : 0);
  }
}

StoreBuilder::StoreBuilder(PstLayout layout, PstEncoding encoding)
    : StoreBuilder(StoreOptions{.file = {.layout = layout, .encoding = encoding}}) {}

StoreBuilder::StoreBuilder(const StoreOptions& options)
    : options_(options), isStreaming_(false), file_(options.file) {
  addUsualFolders();
}

StoreBuilder::StoreBuilder(const StoreOptions& options, const std::filesystem::path& path)
    : options_(options), isStreaming_(true), file_(options.file, path) {
  addUsualFolders();
}

void StoreBuilder::addUsualFolders() {
  if (options_.isBare) return;
  // The root folder is its own parent.
  add(kRootFolderNid, kRootFolderNid).name(u"");
  add(kSubtreeNid, kRootFolderNid).name(u"Top of Personal Folders");
  add(kWastebasketNid, kSubtreeNid).name(u"Deleted Items");
}

FolderBuilder& StoreBuilder::add(uint32_t nid, uint32_t parent) {
  return folders_.emplace_back(*this, nid, parent);
}

FolderBuilder& StoreBuilder::folder(std::u16string_view name) {
  return folder(takeFolderNid(), name);
}

FolderBuilder& StoreBuilder::folder(std::string_view name) {
  return add(takeFolderNid(), options_.isBare ? 0 : kSubtreeNid).name(name);
}

FolderBuilder& StoreBuilder::folder(uint32_t nid, std::u16string_view name) {
  return add(nid, options_.isBare ? 0 : kSubtreeNid).name(name);
}

StoreBuilder& StoreBuilder::node(uint32_t nid, const PstNodeParts& parts, uint32_t parent) {
  file_.node(nid, parts, parent);
  return *this;
}

FolderBuilder& StoreBuilder::folder(uint32_t nid, uint32_t parent, std::u16string_view name) {
  return add(nid, parent).name(name);
}

FolderBuilder& StoreBuilder::usual(uint32_t nid) {
  for (FolderBuilder& folder : folders_) {
    if (folder.nid_ == nid) return folder;
  }
  throw std::logic_error("a bare store has no usual folders");
}

void StoreBuilder::beginMessage(FolderBuilder& folder) {
  if (!isStreaming_) return;
  if (open_ != nullptr) open_->flush();
  open_ = &folder;
}

void StoreBuilder::writeHierarchy(const FolderBuilder& folder,
                                  const std::vector<const FolderBuilder*>& children) {
  TableContextBuilder hierarchy(layout());
  AddHierarchyColumns(hierarchy);
  for (const FolderBuilder* child : children) {
    if (!child->hasRow_) continue;
    TableContextBuilder::Row row = hierarchy.row(child->nid_);
    CopyToRow(child->bag_, hierarchy, row);
  }
  for (const uint32_t rowId : folder.subfolderRows_) hierarchy.row(rowId);
  file_.node(HierarchyTableOf(folder.nid_),
             folder.hierarchyNode_ ? *folder.hierarchyNode_ : hierarchy.build());
}

void StoreBuilder::writeFolder(FolderBuilder& folder,
                               const std::vector<const FolderBuilder*>& children) {
  if (folder.hasNode_) file_.node(folder.nid_, folder.bag_.build(), folder.parent_);
  if (!options_.isBare) {
    if (folder.hasHierarchy_) writeHierarchy(folder, children);
    TableContextBuilder associated(layout());
    AddAssociatedColumns(associated);
    file_.node(AssociatedTableOf(folder.nid_), associated.build());
  }
  if (!folder.hasContents_) return;
  file_.node(ContentsTableOf(folder.nid_),
             folder.contentsNode_ ? *folder.contentsNode_ : folder.contents().build());
}

void StoreBuilder::finish() {
  if (isFinished_) return;
  isFinished_ = true;
  if (!options_.isBare) {
    WriteStoreNodes(file_, options_.bags, nodes_);
    PropertyContextBuilder finder(layout(), options_.bags);
    finder.text(kPropDisplayName, u"Search Root");
    finder.number(kPropContentCount, kTypeInt32, 0);
    finder.number(kPropContentUnreadCount, kTypeInt32, 0);
    finder.number(kPropSubfolders, kTypeBoolean, 0);
    file_.node(kFinderNid, finder.build(), kRootFolderNid);
  }
  std::map<uint32_t, std::vector<const FolderBuilder*>> children;
  for (const FolderBuilder& folder : folders_) {
    if (folder.parent_ != folder.nid_) children[folder.parent_].push_back(&folder);
  }
  for (FolderBuilder& folder : folders_) {
    folder.flush();
    folder.completeBag(children.contains(folder.nid_));
  }
  for (FolderBuilder& folder : folders_) writeFolder(folder, children[folder.nid_]);
  file_.finish();
}

const std::string& StoreBuilder::bytes() {
  finish();
  return file_.bytes();
}

void StoreBuilder::write(const std::filesystem::path& path) {
  if (isStreaming_) throw std::logic_error("the store streams into a file of its own");
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  const std::string& image = bytes();
  out.write(image.data(), static_cast<std::streamsize>(image.size()));
  out.close();
  if (!out) throw std::runtime_error("cannot write " + path.string());
}

}  // namespace tarn::test
