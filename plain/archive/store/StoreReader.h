// StoreReader.h - the items of a store (MS-PST) of either layout.
//
// Folders come in the order of FolderTree.h, the items of each in the order of its contents table,
// associated contents not among them. An item that two rows name is met at the first.
//
// A table, a block of rows or a row that cannot be read is one PlaceTrouble. At the end one tells
// how many messages the store holds that no readable row names; with `recover` these come instead,
// in the order of their ids, in a folder named "Recovered".
//
// Ids are node ids in lower-case hexadecimal. A Headline comes from the row where the row has all
// of it. find() takes the id of any message of the store, and tells its folder by the parents that
// the index of the store names: of what was recovered that is the folder that it was in.
#ifndef TARN_ARCHIVE_STORE_STOREREADER_H
#define TARN_ARCHIVE_STORE_STOREREADER_H

#include <filesystem>
#include <memory>

#include "archive/model/ItemReader.h"

namespace tarn::archive {

// Unreadable, Damaged or Unsupported for a file whose header or index cannot be read. Throws
// nothing but std::bad_alloc.
Outcome<std::unique_ptr<ItemReader>> OpenStore(const std::filesystem::path& path,
                                               const ReaderOptions& options);

}  // namespace tarn::archive

#endif
