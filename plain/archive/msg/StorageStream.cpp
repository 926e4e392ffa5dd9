#include "archive/msg/StorageStream.h"

#include <algorithm>

#include "compound/CompoundOperations.h"

namespace tarn::archive::msg {
namespace {

Trouble CutShort() { return {TroubleKind::Damaged, "blocks of the file are missing"}; }

}  // namespace

StorageStream::StorageStream(StorageFile& file, EntryNumber stream)
    : file_(file), size_(file.sizeOf(stream)) {
  const CompoundParts& parts = PartsOf(*file.file_);
  isBig_ = size_ >= parts.header.threshold;
  const BlockTable& table = isBig_ ? parts.bigTable : parts.smallTable;
  blockSize_ = table.blockSize;
  bigBlockSize_ = parts.bigTable.blockSize;
  blocks_ = FollowChain(table, parts.directory.entries()[stream].start,
                        (size_ + blockSize_ - 1) / blockSize_);
}

StorageStream::Extent StorageStream::smallExtentAt(uint64_t position) const {
  const BlockList& container = PartsOf(*file_.file_).small.container();
  const uint64_t within = position % blockSize_;
  const uint64_t place = blocks_[position / blockSize_] * blockSize_ + within;
  if (place / bigBlockSize_ >= container.size()) return {};
  const uint64_t block = container[place / bigBlockSize_];
  return {(block + 1) * bigBlockSize_ + place % bigBlockSize_, blockSize_ - within};
}

StorageStream::Extent StorageStream::extentAt(uint64_t position, uint64_t most) const {
  const uint64_t at = position / blockSize_;
  if (at >= blocks_.size()) return {};
  if (!isBig_) return smallExtentAt(position);
  const uint64_t within = position % blockSize_;
  uint64_t run = 1;
  while (at + run < blocks_.size() && blocks_[at + run] == blocks_[at] + run &&
         run * blockSize_ - within < most) {
    ++run;
  }
  return {(blocks_[at] + 1) * blockSize_ + within, run * blockSize_ - within};
}

Outcome<size_t> StorageStream::read(std::span<char> buffer) {
  size_t done = 0;
  while (done < buffer.size() && position_ < size_) {
    const uint64_t wanted = std::min<uint64_t>(buffer.size() - done, size_ - position_);
    const Extent extent = extentAt(position_, wanted);
    const uint64_t most = std::min(extent.size, wanted);
    const size_t got = file_.readAt(extent.position, buffer.subspan(done, most));
    done += got;
    position_ += got;
    if (got != 0 && got == most) continue;
    if (done == 0) return CutShort();
    break;
  }
  return done;
}

}  // namespace tarn::archive::msg
