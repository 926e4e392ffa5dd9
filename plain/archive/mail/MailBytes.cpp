#include "archive/mail/MailBytes.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <fstream>
#include <limits>
#include <utility>

namespace tarn::archive::mail {
namespace {

// Two blocks of the file are kept: mails are looked at several times, from different places.
class FileBytes final : public MailBytes {
 public:
  // Null for what cannot be opened or has no length.
  static SharedBytes open(const std::filesystem::path& path) {
    auto bytes = std::make_shared<FileBytes>();
    bytes->file_.pubsetbuf(nullptr, 0);
    if (bytes->file_.open(path, std::ios::in | std::ios::binary) == nullptr) return nullptr;
    const std::streamoff end = bytes->file_.pubseekoff(0, std::ios::end);
    if (end < 0 || end == std::numeric_limits<std::streamoff>::max()) return nullptr;
    bytes->size_ = static_cast<uint64_t>(end);
    return bytes;
  }

  uint64_t size() const override { return size_; }

  Outcome<size_t> readAt(uint64_t offset, std::span<char> buffer) override {
    if (offset >= size_) return size_t{0};
    const Block* const block = blockOf(offset);
    const auto at = static_cast<size_t>(offset % kBlock);
    if (block == nullptr || at >= block->bytes.size()) {
      return Trouble{TroubleKind::Unreadable,
                     "the file cannot be read from byte " + std::to_string(offset) + " on"};
    }
    const size_t count = std::min(buffer.size(), block->bytes.size() - at);
    std::copy_n(block->bytes.data() + at, count, buffer.data());
    return count;
  }

 private:
  static constexpr size_t kBlock = 65536;

  struct Block {
    uint64_t start = std::numeric_limits<uint64_t>::max();
    std::string bytes;
  };

  // Null where it cannot be read at all.
  const Block* blockOf(uint64_t offset) {
    const uint64_t start = offset - offset % kBlock;
    if (blocks_[0].start != start) {
      std::swap(blocks_[0], blocks_[1]);
      if (blocks_[0].start != start && !read(blocks_[0], start)) return nullptr;
    }
    return &blocks_[0];
  }

  bool read(Block& block, uint64_t start) {
    block.start = std::numeric_limits<uint64_t>::max();
    block.bytes.resize(static_cast<size_t>(std::min<uint64_t>(kBlock, size_ - start)));
    std::streamsize count = -1;
    try {
      file_.pubseekoff(static_cast<std::streamoff>(start), std::ios::beg);
      count = file_.sgetn(block.bytes.data(), static_cast<std::streamsize>(block.bytes.size()));
    } catch (const std::exception&) {
      // What the system refuses, the library throws as a failure.
    }
    if (count <= 0) return false;
    block.bytes.resize(static_cast<size_t>(count));
    block.start = start;
    return true;
  }

  std::filebuf file_;
  uint64_t size_ = 0;
  std::array<Block, 2> blocks_;  // the one used last comes first
};

class MemoryBytes final : public MailBytes {
 public:
  explicit MemoryBytes(std::string bytes) : bytes_(std::move(bytes)) {}

  uint64_t size() const override { return bytes_.size(); }

  Outcome<size_t> readAt(uint64_t offset, std::span<char> buffer) override {
    if (offset >= bytes_.size()) return size_t{0};
    const size_t count = std::min(buffer.size(), bytes_.size() - static_cast<size_t>(offset));
    if (count != 0) std::memcpy(buffer.data(), bytes_.data() + offset, count);
    return count;
  }

 private:
  std::string bytes_;
};

class RangeBytes final : public MailBytes {
 public:
  RangeBytes(SharedBytes whole, uint64_t start, uint64_t end, std::vector<uint64_t> left)
      : whole_(std::move(whole)), start_(start), end_(end), left_(std::move(left)) {}

  uint64_t size() const override { return end_ - start_ - left_.size(); }

  Outcome<size_t> readAt(uint64_t offset, std::span<char> buffer) override {
    if (offset >= size()) return size_t{0};
    // How many left bytes come before it: the byte that is `offset` of the range is, in the whole,
    // as many places later.
    size_t before = 0;
    size_t after = left_.size();
    while (before < after) {
      const size_t middle = before + (after - before) / 2;
      if (left_[middle] - middle <= start_ + offset) {
        before = middle + 1;
      } else {
        after = middle;
      }
    }
    const uint64_t from = start_ + offset + before;
    const uint64_t until = before < left_.size() ? left_[before] : end_;
    const size_t count = static_cast<size_t>(std::min<uint64_t>(buffer.size(), until - from));
    return whole_->readAt(from, buffer.first(count));
  }

 private:
  SharedBytes whole_;
  uint64_t start_;
  uint64_t end_;
  std::vector<uint64_t> left_;
};

class BytesSource final : public ByteSource {
 public:
  explicit BytesSource(SharedBytes bytes) : bytes_(std::move(bytes)) {}

  Outcome<size_t> read(std::span<char> buffer) override {
    if (broken_) return size_t{0};
    Outcome<size_t> count = bytes_->readAt(position_, buffer);
    if (count) position_ += *count;
    broken_ = !count;
    return count;
  }

 private:
  SharedBytes bytes_;
  uint64_t position_ = 0;
  bool broken_ = false;
};

}  // namespace

Outcome<SharedBytes> OpenFile(const std::filesystem::path& path) {
  SharedBytes bytes = FileBytes::open(path);
  if (bytes == nullptr) return Trouble{TroubleKind::Unreadable, "the file cannot be opened"};
  return bytes;
}

SharedBytes BytesInMemory(std::string bytes) {
  return std::make_shared<MemoryBytes>(std::move(bytes));
}

SharedBytes RangeOf(SharedBytes whole, uint64_t start, uint64_t end, std::vector<uint64_t> left) {
  return std::make_shared<RangeBytes>(std::move(whole), start, end, std::move(left));
}

std::unique_ptr<ByteSource> SourceOf(SharedBytes bytes) {
  return std::make_unique<BytesSource>(std::move(bytes));
}

Outcome<std::string> ReadRange(MailBytes& bytes, uint64_t offset, size_t limit) {
  std::string all;
  std::array<char, 4096> buffer;
  while (all.size() < limit) {
    const size_t wanted = std::min(buffer.size(), limit - all.size());
    const Outcome<size_t> count =
        bytes.readAt(offset + all.size(), std::span(buffer).first(wanted));
    if (!count) return count.trouble();
    if (*count == 0) break;
    all.append(buffer.data(), *count);
  }
  return all;
}

}  // namespace tarn::archive::mail
