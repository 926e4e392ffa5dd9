// FolderCounts.h - the folders of a source, with the number of items in each.
#ifndef TARN_ARCHIVE_FOLDERCOUNTS_H
#define TARN_ARCHIVE_FOLDERCOUNTS_H

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "archive/commands/ListLines.h"

namespace tarn::archive {

class FolderCounts {
 public:
  using Folder = std::shared_ptr<const std::vector<std::string>>;

  // A folder that there is, perhaps without items.
  void meet(const Folder& folder) { (void)countOf(folder); }
  void add(const Folder& folder) { ++countOf(folder); }

  // Objects with source, folder and items.
  std::string asJson(const ListedSource& from) const;
  // Folder and number with a tab between them; of several sources also the source.
  std::string asTabbed(const ListedSource& from) const;
  // Indented as folders are in folders, below the name of the source where there are several.
  std::string asTree(const ListedSource& from) const;

 private:
  struct Count {
    Folder folder;
    uint64_t items = 0;
  };

  uint64_t& countOf(const Folder& folder);

  std::vector<Count> counts_;  // in the order in which they were met
  std::map<std::vector<std::string>, size_t> indexes_;
  Folder last_;
  size_t lastIndex_ = 0;
};

}  // namespace tarn::archive

#endif
