// Embedded messages of damaged files: each is exported, and what came out is loaded again.
//
// A run aborts when an export leaves anything behind in the kernel, when an exported file with a
// header does not load, or when a stream of the embedded message is not in it as it was.

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <optional>
#include <string>
#include <string_view>

#include "Internal/Tarnclasses_.h"
#include "Tarnbase/PlainKernel.h"
#include "compound/CompoundOperations.h"
#include "compound/CompoundStream.h"
#include "msg/EmbeddedMessage.h"
#include "mutators/CallScript.h"
#include "mutators/CompoundMutator.h"
#include "mutators/LibFuzzer.h"

namespace {

using tarn::CompoundOk;
using tarn::CompoundStorage;
using tarn::CompoundStream;

constexpr std::string_view kEmbedded = "__substg1.0_3701000D";
constexpr std::string_view kProperties = "__properties_version1.0";

// A compound file over a copy of the bytes, in a memory file.
class File {
 public:
  explicit File(std::string_view bytes) : block_(KernelAlloc(bytes.size() + 1, 1, TARN_HERE)) {
    std::memcpy(block_, bytes.data(), bytes.size());
    if (KernelMemFileOpen(&handle_, &state_, KERNEL_MEMFILE_FILLED, block_, bytes.size(),
                          bytes.size() + 1) != StatusOk) {
      std::abort();
    }
    file_.emplace(handle_);
    LoadCompoundFile(*file_);
    storage_.file = &*file_;
  }
  File(const File&) = delete;
  File& operator=(const File&) = delete;
  ~File() {
    file_.reset();
    KernelFileClose(handle_);
    KernelMemFileClose(state_, nullptr, nullptr, nullptr);
    KernelFree(block_, TARN_HERE);
  }

  const CompoundStorage& storage() const { return storage_; }
  bool isLoaded() const { return file_->result() == CompoundOk; }

 private:
  void* block_;
  uint64_t handle_ = 0;
  void* state_ = nullptr;
  CompoundStorage storage_;
  std::optional<tarn::CompoundFile> file_;
};

// What can be read of a stream.
std::string Read(CompoundStream& stream) {
  if (stream.size() > stream.file->size()) return {};
  std::string bytes(stream.size(), '\0');
  bytes.resize(
      StreamRead(stream, 0, {reinterpret_cast<unsigned char*>(bytes.data()), bytes.size()}));
  return bytes;
}

void Fail(const char* what) {
  std::fprintf(stderr, "%s\n", what);
  std::abort();
}

bool IsPlain(std::string_view name) {
  return !name.empty() && name.size() <= 31 && name.find('/') == std::string_view::npos;
}

// A path that ends with "/". One more "/" would lead into a storage that has no name.
std::string AsDirectory(std::string path) {
  if (!path.ends_with('/')) path += '/';
  return path;
}

// A control character that begins a name is written, and left out when the copy is loaded. So the
// name is another there and may be out of order, and no name beside it need be found.
bool BeginsWithControl(std::string_view name) {
  return !name.empty() && static_cast<unsigned char>(name.front()) < 32;
}

// Whether the reads of a file have cost all that they may: what an export could still read whole
// may come out shorter now.
bool IsSpent(tarn::CompoundFile& file) {
  return PartsOf(file).big.bytesLeft() < tarn::kChainBlockCost;
}

// Compares the streams of the root with those of the embedded message. Names that a file cannot
// have, or has twice, are nobody's concern.
void Compare(const CompoundStorage& source, const std::string& path, const CompoundStorage& copy) {
  const std::string directory = AsDirectory(path);
  const auto names = ListEntryNames(source, path);
  for (const auto& name : names) {
    if (BeginsWithControl(name)) return;
  }
  for (size_t i = 0; i < names.size(); ++i) {
    const std::string name(names[i]);
    size_t count = 0;
    for (const auto& other : names) count += other == names[i] ? 1 : 0;
    if (!IsPlain(name) || count != 1 || name == kProperties || name == "__nameid_version1.0")
      continue;
    std::optional<CompoundStream> from = source.file->open(directory + name);
    if (!from) continue;
    const std::string bytes = Read(*from);
    if (bytes.size() != from->size() && IsSpent(*source.file)) return;
    std::optional<CompoundStream> to = copy.file->open(name);
    if (bytes != (to ? Read(*to) : std::string())) Fail("a stream has changed");
  }
}

void Export(const CompoundStorage& source, const std::string& path) {
  tarn::TrackedBuffer<char> data(0, 1024, 1);
  const tarn::Status status = ExportEmbeddedMessage(source, path, data);
  if (status != StatusOk || data.length() < 512 || data.data()[0] != '\xD0') return;
  const File copy({data.data(), data.length()});
  if (!copy.isLoaded()) Fail("the exported file does not load");
  Compare(source, path, copy.storage());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) try {
  PlainKernelUsageRecord before = {};
  PlainKernelUsage(&before);
  {
    const File file({reinterpret_cast<const char*>(data), size});
    if (!file.isLoaded()) return 0;
    Export(file.storage(), "/");
    for (const auto& name : ListEntryNames(file.storage(), "/")) {
      Export(file.storage(), std::string(name) + "/" + std::string(kEmbedded));
    }
  }
  PlainKernelUsageRecord after = {};
  PlainKernelUsage(&after);
  if (after.liveBlocks != before.liveBlocks || after.openHandles != before.openHandles ||
      after.liveTrackedObjects != before.liveTrackedObjects) {
    Fail("an export left something behind");
  }
  return 0;
} catch (const std::bad_alloc&) {
  return 0;
}

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t most, unsigned seed) {
  return tarn::fuzz::MutateInput(data, size, most, seed, tarn::fuzz::MutateCompoundFile,
                                 tarn::fuzz::MutateAsLibFuzzer);
}
