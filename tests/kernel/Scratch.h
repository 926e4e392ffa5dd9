// Scratch.h - a directory of a test's own, and what stands in it as the system sees it.
#ifndef TARN_TESTS_KERNEL_SCRATCH_H
#define TARN_TESTS_KERNEL_SCRATCH_H

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "Tarnbase/PlainKernel.h"

namespace tarn::test {

inline PlainKernelUsageRecord Usage() {
  PlainKernelUsageRecord usage = {};
  PlainKernelUsage(&usage);
  return usage;
}

// An empty directory, removed with all it holds at the end.
class Scratch : public ::testing::Test {
 protected:
  Scratch() {
    std::string pattern = (std::filesystem::temp_directory_path() / "tarnXXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) ADD_FAILURE() << "no scratch directory";
    root_ = pattern;
  }
  ~Scratch() override {
    std::error_code ignored;
    std::filesystem::remove_all(root_, ignored);
  }

  const std::string& Root() const { return root_; }
  std::string PathOf(const std::string& name) const { return root_ + "/" + name; }
  std::u16string WidePathOf(const std::string& name) const { return Widen(PathOf(name)); }
  bool Exists(const std::string& name) const {
    return std::filesystem::exists(std::filesystem::symlink_status(PathOf(name)));
  }
  size_t Entries() const {
    return static_cast<size_t>(std::distance(std::filesystem::directory_iterator(root_),
                                             std::filesystem::directory_iterator()));
  }

  void Put(const std::string& name, const std::string& bytes) const {
    std::ofstream(PathOf(name), std::ios::binary) << bytes;
  }
  std::string Get(const std::string& name) const {
    std::ifstream file(PathOf(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  }

  static std::u16string Widen(const std::string& text) {
    return std::filesystem::path(text).u16string();
  }
  static std::string Narrow(const std::u16string& text) {
    return std::filesystem::path(text).string();
  }

 private:
  std::string root_;
};

}  // namespace tarn::test

#endif
