#include "archive/msg/StorageCopy.h"

#include <algorithm>
#include <utility>

#include "archive/msg/StorageLayout.h"

namespace tarn::archive::msg {
namespace {

// What comes before the streams, and then each stream with its padding.
class StorageSource final : public ByteSource {
 public:
  StorageSource(StorageFile& file, StorageLayout layout)
      : file_(file), head_(BytesOf(std::move(layout.head))), pieces_(std::move(layout.pieces)) {}

  Outcome<size_t> read(std::span<char> buffer) override {
    if (head_ != nullptr) {
      Outcome<size_t> count = head_->read(buffer);
      if (!count || *count != 0 || buffer.empty()) return count;
      head_.reset();
    }
    while (at_ < pieces_.size()) {
      Outcome<size_t> count = readPiece(buffer);
      if (!count || *count != 0 || buffer.empty()) return count;
      ++at_;
      isPadded_ = false;
    }
    return size_t{0};
  }

 private:
  // 0 at the end of the piece.
  Outcome<size_t> readPiece(std::span<char> buffer) {
    const CopiedStream& piece = pieces_[at_];
    if (!isPadded_ && stream_ == nullptr) {
      Outcome<std::unique_ptr<ByteSource>> opened = file_.open(piece.entry);
      if (!opened) return opened.trouble();
      stream_ = std::move(*opened);
    }
    if (!isPadded_) {
      Outcome<size_t> count = stream_->read(buffer);
      if (!count || *count != 0) return count;
      stream_.reset();
      isPadded_ = true;
      paddingLeft_ = piece.padding;
    }
    const size_t count = std::min<size_t>(buffer.size(), paddingLeft_);
    std::fill_n(buffer.begin(), count, '\0');
    paddingLeft_ -= count;
    return count;
  }

  StorageFile& file_;
  std::unique_ptr<ByteSource> head_;
  std::vector<CopiedStream> pieces_;
  size_t at_ = 0;
  std::unique_ptr<ByteSource> stream_;
  bool isPadded_ = false;  // the stream is done, and the padding follows
  size_t paddingLeft_ = 0;
};

}  // namespace

Outcome<std::unique_ptr<ByteSource>> CopyStorage(StorageFile& file, EntryNumber storage) {
  Outcome<StorageLayout> layout = LayOutStorage(file, storage);
  if (!layout) return layout.trouble();
  return std::unique_ptr<ByteSource>(std::make_unique<StorageSource>(file, std::move(*layout)));
}

}  // namespace tarn::archive::msg
