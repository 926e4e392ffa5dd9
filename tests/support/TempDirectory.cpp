#include "support/TempDirectory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <random>
#include <sstream>
#include <vector>

namespace tarn::test {

TempDirectory::TempDirectory() {
  std::random_device random;
  const std::filesystem::path base = std::filesystem::temp_directory_path();
  do {
    path_ = base / ("tarn-test-" + std::to_string(random()) + std::to_string(random()));
  } while (!std::filesystem::create_directory(path_));
}

TempDirectory::~TempDirectory() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::filesystem::path TempDirectory::write(const std::string& name, std::string_view bytes) const {
  const std::filesystem::path file = path_ / name;
  std::ofstream stream(file, std::ios::binary);
  stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  EXPECT_TRUE(stream.good()) << file;
  return file;
}

std::string TempDirectory::listing() const {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(path_)) {
    names.push_back(entry.path().lexically_relative(path_).generic_string());
  }
  std::sort(names.begin(), names.end());
  std::string joined;
  for (const std::string& name : names) joined += (joined.empty() ? "" : " ") + name;
  return joined;
}

std::string ReadWholeFile(const std::filesystem::path& path) {
  std::ifstream stream(path, std::ios::binary);
  EXPECT_TRUE(stream.good()) << path;
  std::ostringstream bytes;
  bytes << stream.rdbuf();
  return bytes.str();
}

}  // namespace tarn::test
