// AttachmentPath.h - the path of an attachment's storage, and of the streams in it.
#ifndef TARN_MSG_ATTACHMENTPATH_H
#define TARN_MSG_ATTACHMENTPATH_H

#include <string_view>

#include "compound/CompoundFile.h"

namespace tarn {

// A path in a buffer of a fixed size, to which one name after the other is put.
class AttachmentPath {
 public:
  static constexpr uint64_t kCapacity = 264;

  // Whether a storage's name leaves room for what comes behind it.
  static bool Holds(std::string_view name) { return name.size() + 8 < kCapacity; }

  explicit AttachmentPath(std::string_view name) : length_(name.size()) {
    name.copy(path_, name.size());
    path_[length_++] = '/';
  }

  // The storage's path with its "/".
  std::string_view storage() const { return {path_, length_}; }

  // Whether the name of the data stream still fits.
  bool hasRoomForData() const { return length_ + 21 < kCapacity; }

  // The path of a stream or a storage below; good until the next call.
  std::string_view of(std::string_view name) {
    const uint64_t size = name.copy(path_ + length_, kCapacity - length_);
    return {path_, length_ + size};
  }

 private:
  char path_[kCapacity];
  uint64_t length_;
};

// The names of the attachments' storages, in the order of the listing.
KernelVector<KernelString> ListAttachments(const CompoundStorage& storage);

}  // namespace tarn

#endif
