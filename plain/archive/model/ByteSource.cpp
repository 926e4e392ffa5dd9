#include "archive/model/ByteSource.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

namespace tarn::archive {
namespace {

class MemorySource final : public ByteSource {
 public:
  explicit MemorySource(std::string bytes) : bytes_(std::move(bytes)) {}

  Outcome<size_t> read(std::span<char> buffer) override {
    const size_t count = std::min(buffer.size(), bytes_.size() - position_);
    if (count != 0) std::memcpy(buffer.data(), bytes_.data() + position_, count);
    position_ += count;
    return count;
  }

 private:
  std::string bytes_;
  size_t position_ = 0;
};

}  // namespace

std::unique_ptr<ByteSource> BytesOf(std::string bytes) {
  return std::make_unique<MemorySource>(std::move(bytes));
}

Outcome<std::string> ReadAll(ByteSource& source, size_t limit) {
  std::string all;
  std::array<char, 16384> buffer;
  for (;;) {
    const Outcome<size_t> count = source.read(buffer);
    if (!count) return count.trouble();
    if (*count == 0) return all;
    if (*count > limit - all.size()) {
      return Trouble{TroubleKind::TooLarge, "more than " + std::to_string(limit) + " bytes"};
    }
    all.append(buffer.data(), *count);
  }
}

}  // namespace tarn::archive
