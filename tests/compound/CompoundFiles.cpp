#include "CompoundFiles.h"

namespace tarn::test {

const DirectoryEntry* LoadedFile::find(std::string_view path) {
  return FindEntry(file_, path, false);
}

std::string LoadedFile::stream(std::string_view path) {
  std::optional<CompoundStream> stream = file_.open(path);
  if (!stream) return "(none)";
  std::string bytes(stream->size(), '?');
  const uint64_t read = StreamRead(*stream, 0, Room(bytes));
  return bytes.substr(0, read);
}

std::string LoadedFile::names(std::string_view path) {
  std::string all;
  for (const KernelString& name : ListEntryNames(storage_, path)) {
    if (!all.empty()) all += ' ';
    all += name;
  }
  return all;
}

GrowingFile::GrowingFile() {
  KernelMemFileOpen(&handle_, &state_, KERNEL_MEMFILE_EMPTY, nullptr, 0, 0);
}

uint64_t NewFile::append(std::string_view path, std::string_view bytes) {
  std::optional<CompoundStream> stream = file_.openOrMake(path);
  return stream ? StreamWrite(*stream, stream->size(), Bytes(bytes)) : 0;
}

std::string GrowingFile::end() {
  if (state_ == nullptr) return {};
  KernelFileClose(handle_);
  void* block = nullptr;
  uint64_t length = 0;
  uint64_t capacity = 0;
  KernelMemFileClose(state_, &block, &length, &capacity);
  state_ = nullptr;
  std::string bytes;
  if (block != nullptr) {
    bytes.assign(static_cast<const char*>(block), length);
    KernelFree(block, TARN_HERE);
  }
  return bytes;
}

std::string Pattern(size_t length, unsigned seed) {
  std::string bytes(length, '\0');
  uint32_t state = 2463534242u + seed * 7919u;
  for (char& byte : bytes) {
    state ^= state << 13;
    state ^= state >> 17;
    state ^= state << 5;
    byte = static_cast<char>(state >> 11);
  }
  return bytes;
}

std::vector<uint64_t> List(const BlockList& blocks) { return {blocks.begin(), blocks.end()}; }

BlockList Blocks(const std::vector<uint64_t>& numbers) {
  return BlockList(numbers.begin(), numbers.end());
}

}  // namespace tarn::test
