// FolderTree.h - the folders of a store, one after the other, each once.
//
// First the user's root and all below it: a folder before its subfolders, these in the order of its
// hierarchy table. Its names are not part of the paths. Then the folders of the store that are not
// below the user's root, by names from the store's root; of these only such as hold items matter.
// Searches are no folders: what they find is in folders.
//
// Where a hierarchy table cannot be read, the folders that name the folder as their parent are
// taken instead of its rows. A store without a root folder has at its top the folders whose parent
// is no folder.
#ifndef TARN_ARCHIVE_STORE_FOLDERTREE_H
#define TARN_ARCHIVE_STORE_FOLDERTREE_H

#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "archive/model/ItemReader.h"
#include "archive/store/NodeScan.h"
#include "archive/store/StoreSession.h"

namespace tarn::archive::store {

using FolderPath = std::shared_ptr<const std::vector<std::string>>;

// Without a name.
FolderPath RootPath();

// A folder within a folder within ... : those below are met by --recover alone.
inline constexpr size_t kDeepestFolder = 128;

struct FolderVisit {
  uint32_t nid = 0;
  FolderPath path;
  std::optional<uint64_t> declaredItems;
  bool isReadable = true;  // its properties are
  // It is shown only when it holds items: the user's root, and what is not below it.
  bool isOnlyForItems = false;
};

class FolderTree {
 public:
  // Troubles are added to the list, whose owner takes them out.
  FolderTree(StoreSession& session, std::vector<PlaceTrouble>& troubles);

  // The next folder. None as long as there are troubles, and none after the last.
  std::optional<FolderVisit> next();
  bool isAtEnd() const { return stage_ == Stage::Done; }

  // Where a folder is, by the parents that the node index names.
  FolderPath pathByParents(uint32_t nid);

 private:
  struct Child {
    uint32_t nid = 0;
    std::string name;  // as the table has it
  };
  struct Level {
    FolderPath path;  // of the parent
    std::vector<Child> children;
    size_t next = 0;
  };
  enum class Stage : uint8_t { Start, OfUser, Rest, Orphans, Done };

  void beginStage();
  FolderVisit visit(const Child& child, const FolderPath& parent, bool isRoot);
  void enterChildren();
  std::vector<Child> readChildren(uint32_t nid, const FolderPath& path);
  bool readHierarchy(uint32_t nid, const FolderPath& path, std::vector<Child>& children);
  bool addChild(Child child, std::vector<Child>& children);
  void addChildrenByParent(uint32_t nid, std::vector<Child>& children);
  void addOrphans(std::vector<Child>& children);
  const std::vector<std::pair<uint32_t, uint32_t>>& folders();
  uint32_t findUserRoot();
  bool hasNode(uint32_t nid);
  void report(std::string id, const FolderPath& path, Trouble trouble);

  StoreSession& session_;
  std::vector<PlaceTrouble>& troubles_;
  uint32_t userRoot_ = 0;
  Stage stage_ = Stage::Start;
  std::vector<Level> levels_;
  // The folder that was given last: its children come next.
  std::optional<std::pair<uint32_t, FolderPath>> entered_;
  std::set<uint32_t> met_;
  std::optional<std::vector<std::pair<uint32_t, uint32_t>>> folders_;  // parent, folder; sorted
};

// "8022": a node id in lower-case hexadecimal.
std::string IdText(uint32_t nid);

}  // namespace tarn::archive::store

#endif
