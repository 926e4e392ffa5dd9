// PstOutput.h - where a PST file is written to: memory, or a file that is never held in memory.
//
// Writing after the end fills the gap with zeros. A file that cannot be written throws
// std::runtime_error.
#ifndef TARN_TESTS_SUPPORT_PST_PSTOUTPUT_H
#define TARN_TESTS_SUPPORT_PST_PSTOUTPUT_H

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

namespace tarn::test {

class PstOutput {
 public:
  PstOutput() = default;
  explicit PstOutput(const std::filesystem::path& path);

  void write(uint64_t offset, std::string_view bytes);
  // Makes the output exactly this long and writes everything out.
  void finish(uint64_t size);

  // All bytes of an output in memory; empty for a file.
  const std::string& bytes() const { return bytes_; }

 private:
  std::string bytes_;
  std::filesystem::path path_;
  std::ofstream file_;
  uint64_t position_ = 0;
};

}  // namespace tarn::test

#endif
