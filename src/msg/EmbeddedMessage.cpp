#include "msg/EmbeddedMessage.h"

#include <new>
#include <optional>
#include <string_view>

#include "Common/ApiUtils.h"
#include "compound/CompoundStream.h"
#include "msg/MsgStreams.h"
#include "msg/PropertyStreams.h"

namespace tarn {
namespace {

constexpr std::string_view kNamedProperties = "__nameid_version1.0/";
constexpr uint64_t kEmbeddedHeader = 24;  // of the properties stream
constexpr uint64_t kAddedHeader = 8;      // that a message of its own has more
constexpr uint32_t kDeepestStorage = 64;

// A path that ends with "/".
KernelString AsDirectory(std::string_view path) {
  KernelString text(path);
  if (!text.ends_with('/')) text += '/';
  return text;
}

// What a copy may cost. In a sound file every entry is copied once at most and all streams together
// are no larger than the file; a damaged directory may lead to the same ones for ever.
struct CopyBudget {
  explicit CopyBudget(const CompoundFile& source)
      : entries(2 * source.entryCount()), bytes(2 * source.size()) {}

  uint64_t entries;
  uint64_t bytes;
};

// Reads a stream whole; without one, nothing.
Status ReadAll(CompoundStream* stream, TrackedBuffer<char>& buffer, CopyBudget& budget) {
  buffer.clear();
  const uint64_t length = stream != nullptr ? stream->size() : 0;
  if (length == 0) return StatusOk;
  if (length > stream->file->size() || length > budget.bytes) return StatusOutOfMemory;
  budget.bytes -= length;
  if (buffer.reserve(length) == nullptr) return StatusOutOfMemory;
  auto* const bytes = reinterpret_cast<unsigned char*>(buffer.data());
  if (StreamRead(*stream, 0, {bytes, length}) != length) return StatusReadFailed;
  buffer.setLength(length);
  return StatusOk;
}

// Writes the bytes from the stream's position on; no stream takes none.
Status WriteAll(CompoundStream* stream, const TrackedBuffer<char>& buffer, bool widen) {
  const uint64_t length = buffer.length();
  const ByteView bytes(reinterpret_cast<const unsigned char*>(buffer.data()), length);
  uint64_t written = 0;
  if (stream != nullptr && widen && length >= kEmbeddedHeader) {
    // The bytes added to the header repeat its beginning.
    written = StreamWrite(*stream, stream->position, bytes.first(kEmbeddedHeader));
    StreamWrite(*stream, stream->position, bytes.first(kAddedHeader));
    written += StreamWrite(*stream, stream->position, bytes.subspan(kEmbeddedHeader));
  } else if (stream != nullptr) {
    written = StreamWrite(*stream, stream->position, bytes);
  }
  return written == length ? StatusOk : StatusWriteFailed;
}

// A storage of a file.
struct StoragePlace {
  CompoundFile& file;
  std::string_view path;
};

// Copies what is in a storage. StatusOk; kNothingToCopy; else a failure.
Status CopyStorageTree(StoragePlace target, StoragePlace source, CopyBudget& budget,
                       uint32_t depth = 0) {
  if (depth > kDeepestStorage) return StatusOutOfMemory;
  const KernelVector<KernelString> names = source.file.list(source.path);
  if (names.empty()) return kNothingToCopy;

  const bool atRoot = target.path.size() <= 1;
  const KernelString targetDirectory = AsDirectory(target.path);
  const KernelString sourceDirectory = AsDirectory(source.path);
  TrackedBuffer<char> buffer;
  for (uint64_t i = 0; i < names.size(); ++i) {
    if (budget.entries == 0) return StatusOutOfMemory;
    --budget.entries;
    const KernelString sourceChild = sourceDirectory + names[i] + "/";
    const KernelString targetChild = targetDirectory + names[i] + "/";
    Status status;
    if (source.file.isStorage(sourceChild)) {
      status = CopyStorageTree({target.file, targetChild}, {source.file, sourceChild}, budget,
                               depth + 1);
    } else {
      std::optional<CompoundStream> from = source.file.open(sourceChild);
      std::optional<CompoundStream> to = target.file.openOrMake(targetChild);
      status = ReadAll(from ? &*from : nullptr, buffer, budget);
      const bool widen = atRoot && names[i] == msg_stream::kProperties;
      if (status.ok()) status = WriteAll(to ? &*to : nullptr, buffer, widen);
      const bool flush = atRoot && i + 1 == names.size() && to;
      if (status.ok() && flush) target.file.flush();
    }
    if (status.failed()) return status;
  }
  return StatusOk;
}

Status WriteMessage(CompoundFile& source, std::string_view path, uint64_t handle) try {
  CompoundFile target = CompoundFile::create(handle);
  if (target.result() != CompoundOk) return StatusCreateFailed;
  CopyBudget budget(source);
  const Status named =
      CopyStorageTree({target, kNamedProperties}, {source, kNamedProperties}, budget);
  if (named.failed()) return named;
  const Status copied = CopyStorageTree({target, "/"}, {source, path}, budget);
  return copied.failed() ? copied : StatusOk;
} catch (const std::bad_alloc&) {
  // The memory file is ended in order all the same.
  return StatusOutOfMemory;
}

}  // namespace

Status ExportEmbeddedMessage(const CompoundStorage& source, std::string_view path,
                             TrackedBuffer<char>& data) try {
  if (ListEntryNames(source, path).empty()) return kNothingToCopy;

  uint64_t handle = KERNEL_BAD_HANDLE;
  void* state = nullptr;
  const int32_t mode = data.length() != 0 ? KERNEL_MEMFILE_FILLED : KERNEL_MEMFILE_EMPTY;
  const int32_t opened =
      KernelMemFileOpen(&handle, &state, mode, data.data(), data.length(), data.capacity());
  if (opened != StatusOk) return Status::FromCode(opened);

  void* block = data.data();
  Status status;
  {
    MemoryFileGuard memory;
    memory.open(state, &block);
    {
      const FileGuard file(FileGuard::ReadWrite, handle);
      status = WriteMessage(*source.file, path, handle);
    }
    memory.end();
    data.abandon();  // The memory file owned that block, and may have moved it.
    data.adopt(KernelBlock<char>(static_cast<char*>(block)), memory.length(), memory.capacity());
  }
  return status;
} catch (const std::bad_alloc&) {
  return StatusOutOfMemory;
}

}  // namespace tarn
