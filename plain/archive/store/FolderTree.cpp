#include "archive/store/FolderTree.h"

#include <algorithm>
#include <charconv>

#include "archive/store/PropertyContext.h"
#include "archive/store/StoreText.h"
#include "archive/store/StoreTrouble.h"
#include "archive/store/TableRows.h"
#include "pststore/Disk.h"
#include "pststore/Errors.h"

namespace tarn::archive::store {
namespace {

constexpr uint16_t kDisplayName = 0x3001;
constexpr uint16_t kSubtreeEntryId = 0x35E0;
constexpr uint16_t kContentCount = 0x3602;

// An entry id of a store: flags, the store's own id, a node id (MS-PST 2.4.3.2).
constexpr size_t kEntryIdSize = 24;
constexpr size_t kEntryIdNode = 20;

constexpr size_t kLongestName = 512;

FolderPath PathBelow(const FolderPath& parent, std::string name) {
  auto path = std::make_shared<std::vector<std::string>>(*parent);
  path->push_back(std::move(name));
  return path;
}

std::string NameOf(StoredProperties& properties) {
  const auto type = properties.typeOf(kDisplayName);
  if (!type) return {};
  const Outcome<std::string> bytes = properties.bytes(kDisplayName, kLongestName);
  return bytes ? TextOfStore(*type, *bytes) : std::string();
}

std::optional<uint64_t> NumberOf(StoredProperties& properties, uint16_t id) {
  const Outcome<std::string> bytes = properties.bytes(id, 8);
  if (!bytes || bytes->size() != 4) return std::nullopt;
  return pststore::disk::load<uint32_t>(
      {reinterpret_cast<const unsigned char*>(bytes->data()), bytes->size()}, 0);
}

std::string Quoted(const FolderPath& path) {
  std::string text;
  for (const std::string& name : *path) text += (text.empty() ? "" : "/") + name;
  return path->empty() ? "the root folder" : "folder \"" + text + "\"";
}

}  // namespace

FolderPath RootPath() { return std::make_shared<std::vector<std::string>>(); }

std::string IdText(uint32_t nid) {
  char text[9];
  return std::string(text, std::to_chars(text, text + sizeof text, nid, 16).ptr);
}

FolderTree::FolderTree(StoreSession& session, std::vector<PlaceTrouble>& troubles)
    : session_(session), troubles_(troubles) {
  userRoot_ = findUserRoot();
}

void FolderTree::report(std::string id, const FolderPath& path, Trouble trouble) {
  troubles_.push_back({{std::move(id), std::nullopt, path}, std::move(trouble)});
}

bool FolderTree::hasNode(uint32_t nid) {
  const auto found = Guarded("", [&] { return session_.context()->lookup_node_info(nid).id; });
  return found.ok() || found.trouble().kind != TroubleKind::Missing;
}

uint32_t FolderTree::findUserRoot() {
  const auto found = Guarded("the properties of the store cannot be read", [&]() -> uint32_t {
    PropertyContext bag(session_.context()->lookup_node(kMessageStoreNode));
    const Outcome<std::string> entry = bag.bytes(kSubtreeEntryId, kEntryIdSize);
    if (!entry || entry->size() < kEntryIdSize) return kRootFolderNode;
    const auto* const bytes = reinterpret_cast<const unsigned char*>(entry->data());
    return pststore::disk::load<uint32_t>({bytes, entry->size()}, kEntryIdNode);
  });
  if (!found) {
    report(IdText(kMessageStoreNode), RootPath(), found.trouble());
    return kRootFolderNode;
  }
  return IsNodeOf(*found, kFolderNode) && hasNode(*found) ? *found : kRootFolderNode;
}

std::optional<FolderVisit> FolderTree::next() {
  while (troubles_.empty()) {
    if (entered_) {
      enterChildren();
      continue;
    }
    while (!levels_.empty() && levels_.back().next == levels_.back().children.size()) {
      levels_.pop_back();
    }
    if (levels_.empty()) {
      if (isAtEnd()) return std::nullopt;
      beginStage();
      continue;
    }
    Level& level = levels_.back();
    const Child child = std::move(level.children[level.next++]);
    const bool isRoot = levels_.size() == 1 && stage_ != Stage::Orphans;
    const FolderPath parent = level.path;
    return visit(child, parent, isRoot);
  }
  return std::nullopt;
}

void FolderTree::beginStage() {
  const auto begin = [this](uint32_t root) {
    Level level{RootPath(), {}};
    met_.insert(root);
    level.children.push_back({root, {}});
    levels_.push_back(std::move(level));
  };
  switch (stage_) {
    case Stage::Start:
      stage_ = Stage::OfUser;
      if (hasNode(userRoot_)) {
        begin(userRoot_);
      } else {
        report(IdText(userRoot_), RootPath(),
               {TroubleKind::Missing, "the store has no root folder"});
      }
      return;
    case Stage::OfUser:
      stage_ = Stage::Rest;
      if (!met_.contains(kRootFolderNode) && hasNode(kRootFolderNode)) begin(kRootFolderNode);
      return;
    case Stage::Rest:
      stage_ = Stage::Orphans;
      if (met_.contains(kRootFolderNode)) return;
      levels_.push_back({RootPath(), {}});
      addOrphans(levels_.back().children);
      return;
    case Stage::Orphans:
    case Stage::Done:
      stage_ = Stage::Done;
  }
}

FolderVisit FolderTree::visit(const Child& child, const FolderPath& parent, bool isRoot) {
  FolderVisit visited;
  visited.nid = child.nid;
  visited.isOnlyForItems = isRoot || stage_ == Stage::Rest;
  std::string name = child.name;
  const auto read = Guarded("its properties cannot be read", [&] {
    PropertyContext bag(session_.context()->lookup_node(child.nid));
    std::string own = NameOf(bag);
    if (!own.empty()) name = std::move(own);
    visited.declaredItems = NumberOf(bag, kContentCount);
    return true;
  });
  if (name.empty()) name = "Folder " + IdText(child.nid);
  visited.path = isRoot ? parent : PathBelow(parent, std::move(name));
  if (!read) {
    visited.isReadable = false;
    report(IdText(child.nid), visited.path,
           {read.trouble().kind, Quoted(visited.path) + ": " + read.trouble().reason});
  }
  entered_.emplace(child.nid, visited.path);
  return visited;
}

void FolderTree::enterChildren() {
  const auto [nid, path] = *std::exchange(entered_, std::nullopt);
  std::vector<Child> children = readChildren(nid, path);
  if (children.empty()) return;
  if (path->size() >= kDeepestFolder) {
    report(IdText(nid), path,
           {TroubleKind::TooDeep,
            "folders are not followed more than " + std::to_string(kDeepestFolder) + " deep"});
    return;
  }
  levels_.push_back({path, std::move(children)});
}

std::vector<FolderTree::Child> FolderTree::readChildren(uint32_t nid, const FolderPath& path) {
  std::vector<Child> children;
  if (!readHierarchy(nid, path, children)) addChildrenByParent(nid, children);
  return children;
}

// Whether all of it could be read.
bool FolderTree::readHierarchy(uint32_t nid, const FolderPath& path, std::vector<Child>& children) {
  const std::string what = "the list of subfolders of " + Quoted(path) + " cannot be read";
  bool isWhole = true;
  size_t missing = 0;
  const auto read = Guarded(what, [&] {
    TableRows table(session_.context()->lookup_node(NodeBeside(nid, kHierarchyTableNode)),
                    session_.blockSize());
    for (uint64_t number = 0; number < table.rowCount(); ++number) {
      const auto row = Guarded(what, [&] { return table.row(number); });
      if (!row) {
        isWhole = false;
        number = table.nextBlock(number) - 1;
        continue;
      }
      const uint32_t child = TableRows::IdOf(*row);
      if (IsNodeOf(child, kSearchFolderNode)) continue;
      if (!IsNodeOf(child, kFolderNode) || !hasNode(child)) {
        ++missing;
        continue;
      }
      if (met_.contains(child)) continue;
      RowProperties properties(table, *row);
      addChild({child, NameOf(properties)}, children);
    }
    return true;
  });
  if (missing != 0) {
    report(IdText(nid), path,
           {TroubleKind::Missing,
            "subfolders that " + Quoted(path) +
                " names and the store does not have: " + std::to_string(missing)});
  }
  if (read && isWhole) return true;
  report(IdText(nid), path, read ? Trouble{TroubleKind::Damaged, what} : read.trouble());
  return false;
}

bool FolderTree::addChild(Child child, std::vector<Child>& children) {
  if (!met_.insert(child.nid).second) return false;
  children.push_back(std::move(child));
  return true;
}

const std::vector<std::pair<uint32_t, uint32_t>>& FolderTree::folders() {
  if (folders_) return *folders_;
  folders_.emplace();
  const auto scanned = Guarded("the index of the store cannot be read", [&] {
    return ScanNodes(session_, [&](const pststore::node_info& info) {
      if (IsNodeOf(info.id, kFolderNode)) folders_->emplace_back(info.parent_id, info.id);
    });
  });
  if (!scanned) report({}, RootPath(), scanned.trouble());
  std::sort(folders_->begin(), folders_->end());
  folders_->erase(std::unique(folders_->begin(), folders_->end()), folders_->end());
  return *folders_;
}

void FolderTree::addChildrenByParent(uint32_t nid, std::vector<Child>& children) {
  const auto& all = folders();
  for (auto at = std::lower_bound(all.begin(), all.end(), std::pair(nid, uint32_t{0}));
       at != all.end() && at->first == nid; ++at) {
    addChild({at->second, {}}, children);
  }
}

void FolderTree::addOrphans(std::vector<Child>& children) {
  std::set<uint32_t> known;
  for (const auto& [parent, nid] : folders()) known.insert(nid);
  for (const auto& [parent, nid] : folders()) {
    if (parent == nid || !known.contains(parent)) addChild({nid, {}}, children);
  }
}

FolderPath FolderTree::pathByParents(uint32_t nid) {
  std::vector<std::string> names;
  for (size_t depth = 0; depth <= kDeepestFolder; ++depth) {
    if (nid == userRoot_ || nid == kRootFolderNode || !IsNodeOf(nid, kFolderNode)) break;
    std::string name;
    const auto parent = Guarded("", [&] {
      const pststore::node_info info = session_.context()->lookup_node_info(nid);
      const auto named = Guarded("", [&] {
        PropertyContext bag(pststore::node(session_.context(), info));
        name = NameOf(bag);
        return true;
      });
      return info.parent_id;
    });
    if (!parent && parent.trouble().kind == TroubleKind::Missing) break;
    names.push_back(name.empty() ? "Folder " + IdText(nid) : std::move(name));
    if (!parent || *parent == nid) break;
    nid = *parent;
  }
  std::reverse(names.begin(), names.end());
  return std::make_shared<std::vector<std::string>>(std::move(names));
}

}  // namespace tarn::archive::store
