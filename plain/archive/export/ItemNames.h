// ItemNames.h - where the folders of a source and its items are in the tree of an export.
//
// Every name is a safe one (SafeName.h), and none depends on what is exported beside it: only on
// what the source holds.
#ifndef TARN_ARCHIVE_ITEMNAMES_H
#define TARN_ARCHIVE_ITEMNAMES_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "archive/common/SafeName.h"
#include "archive/model/Item.h"

namespace tarn::archive {

// "2024-05-01 Subject": the day by the sender's clock, else in UTC.
std::string ItemName(const ItemFields& fields);

// "2024-05-01 Subject [200024]", as long as a safe name may be; the subject gives way to the id. Of
// two ids never the same, also where case does not tell names apart.
std::string ItemNameWithId(std::string_view name, std::string_view id);

// Whether an item of that name gets its id in any case: it could be taken for another item's name
// with its id.
bool NeedsId(std::string_view name);

// "2_1 Subject": of an item embedded in another, whose ids are "200024/2/1" and "200024".
std::string EmbeddedName(std::string_view id, std::string_view outermostId,
                         const ItemFields& fields);

// The same for names that a file system may take for one: in another case, or composed otherwise.
uint64_t NameHash(std::string_view folderPath, std::string_view name);

// The folders of a source as paths: safe names joined by "/". Two folders never share one: where
// names would be the same, those met later get a number. So all folders are to be asked for in the
// order of the source.
class FolderPaths {
 public:
  // "" for the root.
  const std::string& pathOf(const std::vector<std::string>& folder);

 private:
  // Beyond this a folder's path is cut short, so that the system takes the paths below it.
  static constexpr size_t kLongestPath = 1200;

  std::map<std::vector<std::string>, std::string> paths_;
  std::map<std::string, UniqueNames> taken_;  // by the path that they are below
};

}  // namespace tarn::archive

#endif
