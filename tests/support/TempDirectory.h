// TempDirectory.h - a directory of a test's own, removed with all that is in it.
#ifndef TARN_TESTS_SUPPORT_TEMPDIRECTORY_H
#define TARN_TESTS_SUPPORT_TEMPDIRECTORY_H

#include <filesystem>
#include <string>
#include <string_view>

namespace tarn::test {

class TempDirectory {
 public:
  TempDirectory();
  TempDirectory(const TempDirectory&) = delete;
  TempDirectory& operator=(const TempDirectory&) = delete;
  ~TempDirectory();

  const std::filesystem::path& path() const { return path_; }
  std::u16string wide() const { return path_.u16string(); }

  // Writes a file into the directory and returns its path.
  std::filesystem::path write(const std::string& name, std::string_view bytes) const;
  // Names of all files and directories below it, relative (with "/"), sorted and joined by blanks.
  std::string listing() const;

 private:
  std::filesystem::path path_;
};

// All bytes of a file; fails the test when there is none.
std::string ReadWholeFile(const std::filesystem::path& path);

}  // namespace tarn::test

#endif
