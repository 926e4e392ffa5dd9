#include "msg/EmbeddedMessage.h"

#include <new>

#include "Common/ApiUtils.h"
#include "compound/CompoundStream.h"
#include "msg/MsgStreams.h"

namespace tarn {
namespace {

constexpr std::string_view kNamedProperties = "__nameid_version1.0/";
constexpr uint64_t kEmbeddedHeader = 24;  // of the properties stream
constexpr uint64_t kAddedHeader = 8;      // that a message of its own has more
constexpr int32_t kNothingToCopy = 2;
constexpr uint32_t kDeepestStorage = 64;

// A path that ends with "/".
KernelString AsDirectory(std::string_view path) {
  KernelString text(path);
  if (!text.ends_with('/')) text += '/';
  return text;
}

bool IsStorage(const CompoundStorage& storage, std::string_view path) {
  CompoundFile& file = *storage.file;
  const DirectoryEntry* const entry =
      FindEntry(file.directory, path, false, file.bigBlockSize(), nullptr);
  return entry != nullptr && entry->isDirectory;
}

// Copies trees of storages. In a sound file every entry is copied once at most and all streams
// together are no larger than the file; a damaged directory may lead to the same ones for ever.
class TreeCopy {
 public:
  TreeCopy(CompoundStorage& target, const CompoundStorage& source)
      : target_(target),
        source_(source),
        entriesLeft_(2 * source.file->directory.entries.size()),
        bytesLeft_(2 * source.file->fileSize) {}

  int32_t copy(std::string_view targetPath, std::string_view sourcePath, uint32_t depth);

 private:
  int32_t copyStream(const KernelString& targetPath, const KernelString& sourcePath,
                     TrackedBuffer<char>& buffer, bool widen, bool flush);
  int32_t read(CompoundStream* stream, TrackedBuffer<char>& buffer);

  CompoundStorage& target_;
  const CompoundStorage& source_;
  uint64_t entriesLeft_;
  uint64_t bytesLeft_;
};

int32_t TreeCopy::copy(std::string_view targetPath, std::string_view sourcePath, uint32_t depth) {
  if (depth > kDeepestStorage) return StatusOutOfMemory;
  const KernelVector<KernelString> names = ListEntryNames(source_, sourcePath);
  if (names.empty()) return kNothingToCopy;

  const bool atRoot = targetPath.size() <= 1;
  const KernelString targetDirectory = AsDirectory(targetPath);
  const KernelString sourceDirectory = AsDirectory(sourcePath);
  TrackedBuffer<char> buffer;
  for (uint64_t i = 0; i < names.size(); ++i) {
    if (entriesLeft_ == 0) return StatusOutOfMemory;
    --entriesLeft_;
    const KernelString sourceChild = sourceDirectory + names[i] + "/";
    const KernelString targetChild = targetDirectory + names[i] + "/";
    int32_t status = StatusOk;
    if (IsStorage(source_, sourceChild)) {
      status = copy(targetChild, sourceChild, depth + 1);
    } else {
      const bool widen = atRoot && names[i] == kPropertiesStream;
      status = copyStream(targetChild, sourceChild, buffer, widen, atRoot && i + 1 == names.size());
    }
    if (status < StatusOk) return status;
  }
  return StatusOk;
}

int32_t TreeCopy::read(CompoundStream* stream, TrackedBuffer<char>& buffer) {
  buffer.length = 0;
  const uint64_t length = stream != nullptr ? stream->size() : 0;
  if (length == 0) return StatusOk;
  if (length > source_.file->fileSize || length > bytesLeft_) return StatusOutOfMemory;
  bytesLeft_ -= length;
  if (buffer.reserve(length) == nullptr) return StatusOutOfMemory;
  auto* const bytes = reinterpret_cast<unsigned char*>(buffer.data);
  if (StreamRead(*stream, 0, bytes, length) != length) return StatusReadFailed;
  buffer.length = length;
  return StatusOk;
}

int32_t TreeCopy::copyStream(const KernelString& targetPath, const KernelString& sourcePath,
                             TrackedBuffer<char>& buffer, bool widen, bool flush) {
  std::optional<CompoundStream> from = OpenStream(source_, sourcePath);
  std::optional<CompoundStream> to = OpenStream(target_, targetPath, true);
  const int32_t status = read(from ? &*from : nullptr, buffer);
  if (status != StatusOk) return status;

  const auto* const bytes = reinterpret_cast<const unsigned char*>(buffer.data);
  const uint64_t length = buffer.length;
  uint64_t written = 0;
  if (to && widen && length >= kEmbeddedHeader) {
    // The bytes added to the header repeat its beginning.
    written = StreamWrite(*to, to->position, bytes, kEmbeddedHeader);
    StreamWrite(*to, to->position, bytes, kAddedHeader);
    written += StreamWrite(*to, to->position, bytes + kEmbeddedHeader, length - kEmbeddedHeader);
  } else if (to) {
    written = StreamWrite(*to, to->position, bytes, length);
  }
  if (written != length) return StatusWriteFailed;
  if (flush && to) FlushCompoundFile(*target_.file);
  return StatusOk;
}

// Ends a compound file before its memory file is.
class TargetFile {
 public:
  explicit TargetFile(uint64_t handle) : file_(storage_, handle) {
    KernelTrackObject(KERNEL_TRACK_OBJECT, &file_, TARN_HERE);
  }
  TargetFile(const TargetFile&) = delete;
  TargetFile& operator=(const TargetFile&) = delete;
  ~TargetFile() { KernelUntrackObject(KERNEL_TRACK_OBJECT, &file_, TARN_HERE); }

  CompoundFile& file() { return file_; }
  CompoundStorage& storage() { return storage_; }

 private:
  CompoundStorage storage_;
  CompoundFile file_;
};

int32_t WriteMessage(const CompoundStorage& source, std::string_view path, uint64_t handle) try {
  TargetFile target(handle);
  if (!OpenCompoundFile(target.file(), true, true)) return StatusCreateFailed;
  TreeCopy copying(target.storage(), source);
  int32_t status = copying.copy(kNamedProperties, kNamedProperties, 0);
  if (status < StatusOk) return status;
  status = copying.copy("/", path, 0);
  if (status < StatusOk) return status;
  CloseCompoundFile(target.file());
  return StatusOk;
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
  const int32_t mode = data.length != 0 ? KERNEL_MEMFILE_FILLED : KERNEL_MEMFILE_EMPTY;
  const int32_t opened =
      KernelMemFileOpen(&handle, &state, mode, data.data, data.length, data.capacity);
  if (opened != StatusOk) return opened;

  void* block = data.data;
  int32_t status = StatusOk;
  {
    MemoryFileGuard memory;
    memory.open(state, &block);
    {
      const FileGuard file(FileGuard::ReadWrite, handle);
      status = WriteMessage(source, path, handle);
    }
    memory.end();
    data.data = static_cast<char*>(block);
    data.length = memory.length();
    data.capacity = memory.capacity();
  }
  return status;
} catch (const std::bad_alloc&) {
  return StatusOutOfMemory;
}

}  // namespace tarn
