// ParentDirectory.h - the directory that a temporary file is in, opened in such a way that no link
// leads elsewhere that somebody may have put there.
//
//   /tmp / app / pstk4uw2x / _a.png
//   trusted      no link     the file's name: whoever uses it passes O_NOFOLLOW or its like
//
// The trusted directory may be reached through links (on some systems /tmp itself is one): it was
// chosen by the host or by the system. What comes after it is a matter of names that others can
// take in a shared directory, so that each component is opened by itself, and a link among them is
// an error. The directory of a path that is not below the trusted one is the caller's own choice.
#ifndef TARN_KERNEL_POSIX_PARENTDIRECTORY_H
#define TARN_KERNEL_POSIX_PARENTDIRECTORY_H

#include <string>

#include "SystemFiles.h"

namespace tarn::kernel {

class ParentDirectory {
 public:
  // May throw std::bad_alloc, and then holds nothing open.
  explicit ParentDirectory(const TemporaryPlace& file);
  ParentDirectory(const ParentDirectory&) = delete;
  ParentDirectory& operator=(const ParentDirectory&) = delete;
  ~ParentDirectory();

  // When it is not, errno tells why until the next call of the system: ENOTDIR for a link.
  bool IsOpen() const { return descriptor_ >= 0; }

  // For the calls of the system whose names end in "at".
  int descriptor() const { return descriptor_; }
  const char* name() const { return name_.c_str(); }

 private:
  void Enter(const std::string& directory, int flags);

  int descriptor_;
  std::string name_;
};

}  // namespace tarn::kernel

#endif
