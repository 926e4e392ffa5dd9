// PeFile.h - what a Windows program or library says of itself: its exports and imports, read from
// the file. 64-bit files only. What lies outside the file, or is no such file, fails the test in
// hand and reads as nothing.
#ifndef TARN_TESTS_SUPPORT_PEFILE_H
#define TARN_TESTS_SUPPORT_PEFILE_H

#include <cstdint>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

namespace tarn::test {

struct PeExports {
  std::set<uint32_t> ordinals;  // those that are in use
  std::set<std::string> names;
};

struct PeImport {
  std::string library;
  std::set<std::string> names;
  std::set<uint32_t> ordinals;
};

class PeFile {
 public:
  explicit PeFile(const std::filesystem::path& path);

  PeExports exports() const;
  std::vector<PeImport> imports() const;

 private:
  struct Section {
    uint32_t address;  // where it lies when loaded
    uint32_t size;
    uint32_t offset;  // where it lies in the file
  };

  template <typename Number>
  Number at(size_t offset) const;
  template <typename Number>
  Number loaded(uint32_t address) const;
  std::string text(uint32_t address) const;
  size_t offsetOf(uint32_t address) const;
  // Address of a table of the optional header; 0 without one.
  uint32_t directory(size_t number) const;

  std::string bytes_;
  std::vector<Section> sections_;
  size_t optionalHeader_ = 0;
};

}  // namespace tarn::test

#endif
