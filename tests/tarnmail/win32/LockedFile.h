// LockedFile.h - a file that nobody else may open.
#ifndef TARN_TESTS_TARNMAIL_WIN32_LOCKEDFILE_H
#define TARN_TESTS_TARNMAIL_WIN32_LOCKEDFILE_H

#include <filesystem>

namespace tarn::test {

// Holds the file, which exists, open without sharing it.
class LockedFile {
 public:
  explicit LockedFile(const std::filesystem::path& path);
  LockedFile(const LockedFile&) = delete;
  LockedFile& operator=(const LockedFile&) = delete;
  ~LockedFile();

 private:
  void* handle_;
};

}  // namespace tarn::test

#endif
