// FileKinds.h - what kind of file a handle or a record of attributes belongs to.
#ifndef TARN_KERNEL_WIN32_FILEKINDS_H
#define TARN_KERNEL_WIN32_FILEKINDS_H

#include <windows.h>

namespace tarn::kernel {

// Attributes of a file that holds its own bytes: no directory, no link or other reparse point, no
// device.
constexpr bool AreOfPlainFile(DWORD attributes) {
  constexpr DWORD kOthers =
      FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT | FILE_ATTRIBUTE_DEVICE;
  return (attributes & kOthers) == 0;
}

// The same attributes without the mark that keeps a file from being deleted. The system does not
// take an empty set.
constexpr DWORD WithoutReadOnlyMark(DWORD attributes) {
  const DWORD others = attributes & ~static_cast<DWORD>(FILE_ATTRIBUTE_READONLY);
  return others == 0 ? FILE_ATTRIBUTE_NORMAL : others;
}

inline bool IsDiskFile(HANDLE handle) { return ::GetFileType(handle) == FILE_TYPE_DISK; }

// The handle needs the right to read attributes.
inline bool IsPlainFile(HANDLE handle) {
  BY_HANDLE_FILE_INFORMATION information;
  return IsDiskFile(handle) && ::GetFileInformationByHandle(handle, &information) != 0 &&
         AreOfPlainFile(information.dwFileAttributes);
}

}  // namespace tarn::kernel

#endif
