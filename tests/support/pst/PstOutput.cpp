#include "support/pst/PstOutput.h"

#include <algorithm>
#include <stdexcept>

namespace tarn::test {

PstOutput::PstOutput(const std::filesystem::path& path)
    : path_(path), file_(path, std::ios::binary | std::ios::trunc) {
  if (!file_) throw std::runtime_error("cannot create " + path.string());
}

void PstOutput::write(uint64_t offset, std::string_view bytes) {
  if (path_.empty()) {
    const size_t end = static_cast<size_t>(offset) + bytes.size();
    if (bytes_.size() < end) bytes_.resize(end);
    std::copy(bytes.begin(), bytes.end(), bytes_.begin() + static_cast<std::ptrdiff_t>(offset));
    return;
  }
  if (offset != position_) file_.seekp(static_cast<std::streamoff>(offset));
  file_.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  if (!file_) throw std::runtime_error("cannot write " + path_.string());
  position_ = offset + bytes.size();
}

void PstOutput::finish(uint64_t size) {
  if (path_.empty()) {
    bytes_.resize(static_cast<size_t>(size));
    return;
  }
  file_.close();
  if (!file_) throw std::runtime_error("cannot write " + path_.string());
  std::filesystem::resize_file(path_, size);
}

}  // namespace tarn::test
