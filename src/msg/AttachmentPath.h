// AttachmentPath.h - the path of an attachment's storage, and of the streams in it.
#ifndef TARN_MSG_ATTACHMENTPATH_H
#define TARN_MSG_ATTACHMENTPATH_H

#include "Common/FixedText.h"

namespace tarn {

// A path of a limited length, to which one name after the other is put.
class AttachmentPath {
 public:
  static constexpr size_t kCapacity = 264;

  // Whether a storage's name leaves room for what comes after it.
  static bool Holds(std::string_view name) { return name.size() + 8 < kCapacity; }

  // Of a storage whose name is held.
  explicit AttachmentPath(std::string_view name) {
    storage_.append(name);
    storage_.append("/");
  }

  // Whether the name of the data stream still fits, with one byte to spare.
  bool hasRoomForData() const { return storage_.view().size() + 21 < kCapacity; }

  // The path of a stream or a storage below; good until the next call. A name that does not fit is
  // cut, and then names nothing that a file holds.
  std::string_view of(std::string_view name) {
    path_ = storage_;
    path_.append(name.substr(0, kCapacity - storage_.view().size()));
    return path_.view();
  }

 private:
  FixedText<kCapacity> storage_;
  FixedText<kCapacity> path_;
};

}  // namespace tarn

#endif
