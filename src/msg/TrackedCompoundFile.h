// TrackedCompoundFile.h - a compound file over a handle, announced to the kernel while it lives.
#ifndef TARN_MSG_TRACKEDCOMPOUNDFILE_H
#define TARN_MSG_TRACKEDCOMPOUNDFILE_H

#include "compound/CompoundFile.h"

namespace tarn {

// The handle stays its opener's, who closes it behind this. The end flushes nothing.
class TrackedCompoundFile {
 public:
  explicit TrackedCompoundFile(uint64_t handle) : file_(storage_, handle) {
    KernelTrackObject(KERNEL_TRACK_OBJECT, &file_, TARN_HERE);
  }
  TrackedCompoundFile(const TrackedCompoundFile&) = delete;
  TrackedCompoundFile& operator=(const TrackedCompoundFile&) = delete;
  ~TrackedCompoundFile() { KernelUntrackObject(KERNEL_TRACK_OBJECT, &file_, TARN_HERE); }

  CompoundFile& file() { return file_; }
  const CompoundStorage& storage() const { return storage_; }

 private:
  CompoundStorage storage_;
  CompoundFile file_;
};

}  // namespace tarn

#endif
