#include "msg/EmbeddedMessage.h"

#include <new>
#include <optional>
#include <string_view>

#include "Common/ApiUtils.h"
#include "compound/CompoundStream.h"
#include "msg/MsgStreams.h"

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
int32_t ReadAll(CompoundStream* stream, TrackedBuffer<char>& buffer, CopyBudget& budget) {
  buffer.setLength(0);
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
int32_t WriteAll(CompoundStream* stream, const TrackedBuffer<char>& buffer, bool widen) {
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
  return written == length ? int32_t{StatusOk} : int32_t{StatusWriteFailed};
}

// Copies the tree of a storage to the target's path. Returns what ExportEmbeddedMessage does.
int32_t CopyStorageTree(const CompoundStorage& target, std::string_view targetPath,
                        const CompoundStorage& source, std::string_view sourcePath,
                        CopyBudget& budget, uint32_t depth = 0) {
  if (depth > kDeepestStorage) return StatusOutOfMemory;
  const KernelVector<KernelString> names = ListEntryNames(source, sourcePath);
  if (names.empty()) return kNothingToCopy;

  const bool atRoot = targetPath.size() <= 1;
  const KernelString targetDirectory = AsDirectory(targetPath);
  const KernelString sourceDirectory = AsDirectory(sourcePath);
  TrackedBuffer<char> buffer;
  for (uint64_t i = 0; i < names.size(); ++i) {
    if (budget.entries == 0) return StatusOutOfMemory;
    --budget.entries;
    const KernelString sourceChild = sourceDirectory + names[i] + "/";
    const KernelString targetChild = targetDirectory + names[i] + "/";
    int32_t status = StatusOk;
    if (source.file->isStorage(sourceChild)) {
      status = CopyStorageTree(target, targetChild, source, sourceChild, budget, depth + 1);
    } else {
      std::optional<CompoundStream> from = source.file->open(sourceChild);
      std::optional<CompoundStream> to = target.file->openOrMake(targetChild);
      status = ReadAll(from ? &*from : nullptr, buffer, budget);
      const bool widen = atRoot && names[i] == kPropertiesStream;
      if (status == StatusOk) status = WriteAll(to ? &*to : nullptr, buffer, widen);
      const bool flush = atRoot && i + 1 == names.size() && to;
      if (status == StatusOk && flush) target.file->flush();
    }
    if (status < StatusOk) return status;
  }
  return StatusOk;
}

int32_t WriteMessage(const CompoundStorage& source, std::string_view path, uint64_t handle) try {
  CompoundFile target = CompoundFile::create(handle);
  if (target.result() != CompoundOk) return StatusCreateFailed;
  const CompoundStorage storage{&target};
  CopyBudget budget(*source.file);
  const int32_t named =
      CopyStorageTree(storage, kNamedProperties, source, kNamedProperties, budget);
  if (named < StatusOk) return named;
  const int32_t copied = CopyStorageTree(storage, "/", source, path, budget);
  return copied < StatusOk ? copied : int32_t{StatusOk};
} catch (const std::bad_alloc&) {
  // The memory file is ended in order all the same.
  return StatusOutOfMemory;
}

}  // namespace

int32_t ExportEmbeddedMessage(const CompoundStorage& source, std::string_view path,
                              TrackedBuffer<char>& data) try {
  if (ListEntryNames(source, path).empty()) return kNothingToCopy;

  uint64_t handle = KERNEL_BAD_HANDLE;
  void* state = nullptr;
  const int32_t mode = data.length() != 0 ? KERNEL_MEMFILE_FILLED : KERNEL_MEMFILE_EMPTY;
  const int32_t opened =
      KernelMemFileOpen(&handle, &state, mode, data.data(), data.length(), data.capacity());
  if (opened != StatusOk) return opened;

  void* block = data.data();
  int32_t status = StatusOk;
  {
    MemoryFileGuard memory;
    memory.open(state, &block);
    {
      const FileGuard file(FileGuard::ReadWrite, handle);
      status = WriteMessage(source, path, handle);
    }
    memory.end();
    data.take().take();  // The memory file owns that block, or has moved it.
    data.replaceBlock(KernelBlock<char>(static_cast<char*>(block)), memory.length(),
                      memory.capacity());
  }
  return status;
} catch (const std::bad_alloc&) {
  return StatusOutOfMemory;
}

}  // namespace tarn
