// AttachmentPath.h - the path of an attachment's storage, and of the streams in it.
#ifndef TARN_MSG_ATTACHMENTPATH_H
#define TARN_MSG_ATTACHMENTPATH_H

#include <cstdint>
#include <string_view>

namespace tarn {

// A path in a buffer of a fixed size, to which one name after the other is put.
class AttachmentPath {
 public:
  static constexpr uint64_t kCapacity = 264;

  // Whether a storage's name leaves room for what comes behind it.
  static bool Holds(std::string_view name) { return name.size() + 8 < kCapacity; }

  // Of a storage whose name is held.
  explicit AttachmentPath(std::string_view name) : length_(name.size()) {
    name.copy(path_, name.size());
    path_[length_++] = '/';
  }

  // Whether the name of the data stream still fits, with one byte to spare.
  bool hasRoomForData() const { return length_ + 21 < kCapacity; }

  // The path of a stream or a storage below; good until the next call. A name that does not fit is
  // cut where the buffer ends, and then stands for nothing that a file holds.
  std::string_view of(std::string_view name) {
    const uint64_t size = name.copy(path_ + length_, kCapacity - length_);
    return {path_, length_ + size};
  }

 private:
  char path_[kCapacity];
  uint64_t length_;
};

}  // namespace tarn

#endif
