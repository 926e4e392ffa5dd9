#include "compound/CompoundFile.h"

#include "compound/CompoundOperations.h"
#include "compound/CompoundStream.h"

namespace tarn {

CompoundFile::CompoundFile(uint64_t handle) : parts_(handle), writer_(parts_) {
  KernelTrackObject(KERNEL_TRACK_OBJECT, this, TARN_HERE);
}

// An exception ends the object that the other constructor has made.
CompoundFile::CompoundFile(uint64_t handle, bool create) : CompoundFile(handle) {
  OpenCompoundFile(*this, create, create);
}

CompoundFile CompoundFile::open(uint64_t handle) { return CompoundFile(handle, false); }

CompoundFile CompoundFile::create(uint64_t handle) { return CompoundFile(handle, true); }

CompoundFile::~CompoundFile() {
  CloseCompoundFile(*this);
  KernelUntrackObject(KERNEL_TRACK_OBJECT, this, TARN_HERE);
}

bool CompoundFile::isStorage(std::string_view path) {
  const DirectoryEntry* const entry = FindEntry(parts_.directory, path);
  return entry != nullptr && entry->isDirectory;
}

std::optional<CompoundStream> CompoundFile::streamOf(const DirectoryEntry* entry,
                                                     std::string_view path) {
  if (entry == nullptr || entry->isDirectory) return std::nullopt;
  std::optional<CompoundStream> stream(std::in_place, *this, *entry);
  stream->fullName = path;
  return stream;
}

std::optional<CompoundStream> CompoundFile::open(std::string_view path) {
  return streamOf(FindEntry(*this, path, false), path);
}

std::optional<CompoundStream> CompoundFile::openOrMake(std::string_view path) {
  return streamOf(FindEntry(*this, path, true), path);
}

KernelVector<KernelString> ListEntryNames(const CompoundStorage& storage, std::string_view path) {
  return storage.file->list(path);
}

}  // namespace tarn
