// LongDirectory.h - a directory whose path is longer than most programs of Windows can name.
#ifndef TARN_TESTS_TARNMAIL_WIN32_LONGDIRECTORY_H
#define TARN_TESTS_TARNMAIL_WIN32_LONGDIRECTORY_H

#include <filesystem>
#include <string>
#include <string_view>

#include "support/TempDirectory.h"

namespace tarn::test {

// Three levels of 100 units each. Goes with the object, and must be empty then.
class LongDirectory {
 public:
  LongDirectory();
  LongDirectory(const LongDirectory&) = delete;
  LongDirectory& operator=(const LongDirectory&) = delete;
  ~LongDirectory();

  // Without the prefix that the system wants.
  const std::filesystem::path& path() const { return path_; }

  void write(const wchar_t* name, std::string_view bytes) const;
  std::string read(const wchar_t* name) const;
  void remove(const wchar_t* name) const;

 private:
  TempDirectory top_;
  std::filesystem::path path_;
};

}  // namespace tarn::test

#endif
