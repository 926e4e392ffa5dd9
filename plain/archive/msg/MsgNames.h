// MsgNames.h - the names of an MSG file's named properties (MS-OXMSG 2.2.3), for the message and
// all that are embedded in it.
#ifndef TARN_ARCHIVE_MSGNAMES_H
#define TARN_ARCHIVE_MSGNAMES_H

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "archive/mapi/MapiMessage.h"
#include "archive/msg/StorageFile.h"

namespace tarn::archive::msg {

class MsgNames {
 public:
  // A file without such a storage has no names. What of it is damaged is passed over, and one of
  // the troubles.
  explicit MsgNames(StorageFile& file);

  std::optional<uint16_t> idOf(const mapi::PropertyName& name) const;
  std::optional<mapi::PropertyName> nameOf(uint16_t id) const;
  const std::vector<Trouble>& troubles() const { return troubles_; }

 private:
  struct Streams {
    std::string sets;
    std::string entries;
    std::string names;
  };

  std::string readStream(StorageFile& file, EntryNumber storage, std::string_view name);
  bool addEntry(const Streams& streams, size_t at);

  std::map<uint16_t, mapi::PropertyName> names_;
  std::vector<Trouble> troubles_;
};

}  // namespace tarn::archive::msg

#endif
