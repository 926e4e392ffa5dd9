// TnefReader.h - messages as they travel inside internet mails: "winmail.dat" (MS-OXTNEF).
#ifndef TARN_ARCHIVE_TNEFREADER_H
#define TARN_ARCHIVE_TNEFREADER_H

#include <filesystem>
#include <memory>
#include <string>

#include "archive/mapi/MapiMessage.h"
#include "archive/model/ItemReader.h"

namespace tarn::archive {

// Gives one item, "1", without a folder.
//   Unreadable   the system does not give the file
//   Unsupported  it does not begin as TNEF
//   TooLarge     it is larger than such a part of a mail can be: it is read into memory
Outcome<std::unique_ptr<ItemReader>> OpenTnef(const std::filesystem::path& path);

// The same of bytes, as a message. Unsupported for bytes that do not begin as TNEF; what is damaged
// after that is one of the message's troubles.
Outcome<std::unique_ptr<mapi::MapiMessage>> ReadTnef(std::string bytes);

}  // namespace tarn::archive

#endif
