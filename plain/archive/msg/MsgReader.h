// MsgReader.h - MSG files (MS-OXMSG): one item each.
#ifndef TARN_ARCHIVE_MSGREADER_H
#define TARN_ARCHIVE_MSGREADER_H

#include <filesystem>
#include <memory>
#include <string_view>

#include "archive/model/ItemReader.h"

namespace tarn::archive {

// Gives one item, "1", without a folder.
//   Unreadable   the system does not give the file
//   Unsupported  it is no compound file, or one that is no message
//   Damaged      it is a compound file, and its tables cannot be read
Outcome<std::unique_ptr<ItemReader>> OpenMsg(const std::filesystem::path& path);

// The same of a file in memory.
Outcome<std::unique_ptr<ItemReader>> ReadMsg(std::string_view bytes);

}  // namespace tarn::archive

#endif
