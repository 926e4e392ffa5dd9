// Scratch.h - a directory of a test's own, and what is in it as the system sees it.
#ifndef TARN_TESTS_KERNEL_SCRATCH_H
#define TARN_TESTS_KERNEL_SCRATCH_H

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "Tarnbase/PlainKernel.h"
#include "support/TempDirectory.h"

namespace tarn::test {

inline PlainKernelUsageRecord Usage() {
  PlainKernelUsageRecord usage = {};
  PlainKernelUsage(&usage);
  return usage;
}

// What the kernel puts between a directory and a name that it makes.
inline const std::string kSeparator(1,
                                    static_cast<char>(std::filesystem::path::preferred_separator));

// An empty directory, removed with all it holds at the end. Texts are UTF-8.
class Scratch : public ::testing::Test {
 protected:
  const std::string& Root() const { return root_; }
  std::string PathOf(const std::string& name) const { return root_ + "/" + name; }
  std::u16string WidePathOf(const std::string& name) const { return Widen(PathOf(name)); }
  std::filesystem::path NativePathOf(const std::string& name) const { return Native(PathOf(name)); }
  bool Exists(const std::string& name) const {
    return std::filesystem::exists(std::filesystem::symlink_status(NativePathOf(name)));
  }
  size_t Entries() const {
    return static_cast<size_t>(std::distance(std::filesystem::directory_iterator(Native(root_)),
                                             std::filesystem::directory_iterator()));
  }

  void Put(const std::string& name, const std::string& bytes) const {
    std::ofstream(NativePathOf(name), std::ios::binary) << bytes;
  }
  std::string Get(const std::string& name) const {
    std::ifstream file(NativePathOf(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  }

  static std::filesystem::path Native(const std::string& text) {
    return std::u8string(text.begin(), text.end());
  }
  static std::u16string Widen(const std::string& text) { return Native(text).u16string(); }
  static std::string Narrow(const std::u16string& text) {
    return Utf8(std::filesystem::path(text));
  }

 private:
  static std::string Utf8(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
  }

  TempDirectory directory_;
  std::string root_ = Utf8(directory_.path());
};

}  // namespace tarn::test

#endif
