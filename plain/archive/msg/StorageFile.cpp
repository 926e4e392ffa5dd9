#include "archive/msg/StorageFile.h"

#include <Tarnbase/Kernel.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

#include "Internal/Tarnclasses_.h"
#include "archive/msg/StorageStream.h"
#include "compound/CompoundOperations.h"

namespace tarn::archive::msg {
namespace {

// Streams that lie in the file side by side fill no more than it; this much is forgiven.
constexpr uint64_t kMostBeyondFile = uint64_t{1} << 20;

Trouble NoSuchEntry() { return {TroubleKind::Missing, "the stream is not there"}; }

// As UTF-16; none for a path that is no UTF-8, which the kernel does not open.
std::optional<std::u16string> WidePath(const std::filesystem::path& path) {
  const std::string narrow = path.string();
  std::u16string wide(narrow.size(), u'\0');
  const int64_t units = KernelUtf8ToWide(narrow.data(), static_cast<int64_t>(narrow.size()),
                                         wide.data(), static_cast<int64_t>(wide.size()));
  if (units <= 0) return std::nullopt;
  wide.resize(static_cast<size_t>(units));
  return wide;
}

}  // namespace

StorageFile::Handle::~Handle() {
  if (number != UINT64_MAX) KernelFileClose(number);
  if (memory == nullptr) return;
  void* block = nullptr;
  uint64_t length = 0;
  uint64_t capacity = 0;
  KernelMemFileClose(memory, &block, &length, &capacity);
  KernelFree(block, TARN_HERE);
}

StorageFile::~StorageFile() = default;

Outcome<std::unique_ptr<StorageFile>> StorageFile::Open(const std::filesystem::path& path) {
  const std::optional<std::u16string> wide = WidePath(path);
  auto handle = std::make_unique<Handle>();
  if (wide) handle->number = KernelFileOpen(wide->c_str(), KERNEL_OPEN_READ, KERNEL_OPEN_MODE);
  if (handle->number == UINT64_MAX) {
    return Trouble{TroubleKind::Unreadable, "the file cannot be opened"};
  }
  return OfHandle(std::move(handle));
}

Outcome<std::unique_ptr<StorageFile>> StorageFile::OfBytes(std::string_view bytes) {
  auto handle = std::make_unique<Handle>();
  void* const block = KernelAlloc(std::max<size_t>(bytes.size(), 1), 1, TARN_HERE);
  if (block == nullptr) throw std::bad_alloc();
  if (!bytes.empty()) std::memcpy(block, bytes.data(), bytes.size());
  const int32_t opened = KernelMemFileOpen(&handle->number, &handle->memory, KERNEL_MEMFILE_FILLED,
                                           block, bytes.size(), std::max<size_t>(bytes.size(), 1));
  if (opened != StatusOk) {
    KernelFree(block, TARN_HERE);
    throw std::bad_alloc();
  }
  return OfHandle(std::move(handle));
}

Outcome<std::unique_ptr<StorageFile>> StorageFile::OfHandle(std::unique_ptr<Handle> handle) {
  std::unique_ptr<StorageFile> opened(new StorageFile(std::move(handle)));
  opened->file_.reset(new CompoundFile(CompoundFile::open(opened->handle_->number)));
  switch (opened->file_->result()) {
    case CompoundOk:
      break;
    case CompoundNotCompound:
      return Trouble{TroubleKind::Unsupported, "the file is no compound file"};
    case CompoundOpenFailed:
      return Trouble{TroubleKind::Unreadable, "the file cannot be read"};
    default:
      return Trouble{TroubleKind::Damaged, "the tables of the compound file are damaged"};
  }
  if (opened->file_->entryCount() == 0) {
    return Trouble{TroubleKind::Damaged, "the directory of the compound file is damaged"};
  }
  opened->sortEntries();
  return opened;
}

void StorageFile::sortEntries() {
  const DirectoryTree::Entries& entries = PartsOf(*file_).directory.entries();
  childrenOf_.resize(entries.size());
  isClaimed_.assign(entries.size(), false);
  isBeyondFile_.assign(entries.size(), false);
  isClaimed_[kRootEntry] = true;
  collectChildren(kRootEntry);
  // Children that are added are storages that are still to be met.
  const uint64_t most = 2 * size() + kMostBeyondFile;
  uint64_t total = 0;
  for (size_t at = 0; at < children_.size(); ++at) {
    const EntryNumber entry = children_[at];
    if (isStorage(entry)) {
      collectChildren(entry);
      continue;
    }
    const uint64_t claimed = std::min(sizeOf(entry), size());
    isBeyondFile_[entry] = claimed > most - total;
    if (!isBeyondFile_[entry]) total += claimed;
  }
}

void StorageFile::collectChildren(EntryNumber storage) {
  const DirectoryTree::Entries& entries = PartsOf(*file_).directory.entries();
  Range& range = childrenOf_[storage];
  range.first = static_cast<uint32_t>(children_.size());
  std::vector<EntryNumber> above;
  const auto goDown = [&](uint64_t entry) {
    while (entry != kNoEntry) {
      if (entry >= entries.size() || isClaimed_[entry] || !entries[entry].valid) {
        isDirectoryDamaged_ = true;
        return;
      }
      isClaimed_[entry] = true;
      above.push_back(static_cast<EntryNumber>(entry));
      entry = entries[entry].prev;
    }
  };
  goDown(entries[storage].child);
  while (!above.empty()) {
    const EntryNumber entry = above.back();
    above.pop_back();
    children_.push_back(entry);
    goDown(entries[entry].next);
  }
  range.count = static_cast<uint32_t>(children_.size()) - range.first;
}

std::span<const EntryNumber> StorageFile::children(EntryNumber storage) const {
  const Range& range = childrenOf_[storage];
  return std::span<const EntryNumber>(children_).subspan(range.first, range.count);
}

std::string_view StorageFile::name(EntryNumber entry) const {
  return PartsOf(*file_).directory.entries()[entry].name;
}

bool StorageFile::isStorage(EntryNumber entry) const {
  return PartsOf(*file_).directory.entries()[entry].isDirectory;
}

uint64_t StorageFile::sizeOf(EntryNumber entry) const {
  return isStorage(entry) ? 0 : PartsOf(*file_).directory.entries()[entry].size;
}

std::optional<EntryNumber> StorageFile::find(EntryNumber storage, std::string_view wanted) const {
  for (const EntryNumber entry : children(storage)) {
    if (name(entry) == wanted) return entry;
  }
  return std::nullopt;
}

size_t StorageFile::readAt(uint64_t position, std::span<char> buffer) {
  if (position >= size() || buffer.empty()) return 0;
  if (KernelFileSeek(handle_->number, static_cast<int64_t>(position), KERNEL_SEEK_START) !=
      position) {
    return 0;
  }
  const uint64_t most = std::min<uint64_t>(buffer.size(), size() - position);
  return KernelFileReadLarge(handle_->number, buffer.data(), most);
}

Outcome<EntryRecord> StorageFile::record(EntryNumber entry) {
  const CompoundParts& parts = PartsOf(*file_);
  const uint64_t place = uint64_t{entry} * kDirectoryRecordSize;
  const uint64_t blockSize = parts.bigTable.blockSize;
  if (directoryBlocks_.empty()) {
    directoryBlocks_ = FollowChain(parts.bigTable, parts.header.directoryStart);
  }
  EntryRecord record{};
  std::array<char, sizeof(EntryRecord)> bytes;
  if (directoryBlocks_.size() > place / blockSize) {
    const uint64_t block = directoryBlocks_[place / blockSize];
    const uint64_t position = (block + 1) * blockSize + place % blockSize;
    if (readAt(position, bytes) == bytes.size()) {
      std::memcpy(record.data(), bytes.data(), bytes.size());
      return record;
    }
  }
  return Trouble{TroubleKind::Damaged, "the directory of the compound file is damaged"};
}

Outcome<std::unique_ptr<ByteSource>> StorageFile::open(EntryNumber stream) {
  if (isStorage(stream)) return NoSuchEntry();
  if (isBeyondFile_[stream]) {
    return Trouble{TroubleKind::Damaged, "the streams of the file are larger than the file"};
  }
  return std::unique_ptr<ByteSource>(std::make_unique<StorageStream>(*this, stream));
}

Outcome<std::string> StorageFile::read(EntryNumber stream, size_t limit) {
  if (sizeOf(stream) > limit) {
    return Trouble{TroubleKind::TooLarge, "more than " + std::to_string(limit) + " bytes"};
  }
  Outcome<std::unique_ptr<ByteSource>> source = open(stream);
  if (!source) return source.trouble();
  return ReadAll(**source, limit);
}

}  // namespace tarn::archive::msg
