// Whole compound files: loaded, everything listed, every stream read.
//
// Besides what the sanitizers see, a run aborts when a read gives more than was asked for, when
// opening and reading again gives something else, and when anything stays behind in the kernel.

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "Tarnbase/PlainKernel.h"
#include "compound/CompoundStream.h"
#include "mutators/CallScript.h"
#include "mutators/CompoundMutator.h"
#include "mutators/LibFuzzer.h"

namespace {

constexpr uint64_t kMostEntries = 200;  // that one run looks at
constexpr uint64_t kMostBytes = 20000;  // of each stream
constexpr int kDeepest = 8;

[[noreturn]] void Fail(const char* what) {
  std::fprintf(stderr, "%s\n", what);
  std::abort();
}

void Expect(bool holds, const char* what) {
  if (!holds) Fail(what);
}

class Reader {
 public:
  explicit Reader(tarn::CompoundFile& file) : file_(file) {}

  std::string all() {
    readBelow("/", 0);
    return text_;
  }

 private:
  void readBelow(const std::string& path, int depth) {
    for (const tarn::KernelString& name : file_.list(path)) {
      if (++entries_ > kMostEntries) return;
      const std::string child = path + std::string(name);
      std::optional<tarn::CompoundStream> stream = file_.open(child);
      if (stream) {
        readStream(*stream);
      } else if (depth < kDeepest) {
        readBelow(child + "/", depth + 1);
      }
    }
  }

  void readStream(tarn::CompoundStream& stream) {
    const uint64_t length = std::min(stream.size(), kMostBytes);
    std::string bytes(length + 1, '?');
    const uint64_t read =
        tarn::StreamRead(stream, 0, {reinterpret_cast<unsigned char*>(bytes.data()), length});
    Expect(read <= length && bytes[length] == '?', "a read gave more than was asked for");
    text_ += bytes.substr(0, read);
    unsigned char byte = 0;
    tarn::StreamRead(stream, length / 2, {&byte, 1});
    text_.push_back(static_cast<char>(byte));
  }

  tarn::CompoundFile& file_;
  std::string text_;
  uint64_t entries_ = 0;
};

std::string ReadFile(uint64_t handle) {
  tarn::CompoundFile file = tarn::CompoundFile::open(handle);
  Expect(file.isOpened() == (file.result() == tarn::CompoundOk), "a result that does not fit");
  return file.isOpened() ? Reader(file).all() : std::string();
}

PlainKernelUsageRecord Usage() {
  PlainKernelUsageRecord usage = {};
  PlainKernelUsage(&usage);
  return usage;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const PlainKernelUsageRecord before = Usage();
  auto* const block = static_cast<unsigned char*>(KernelAlloc(size, 1, TARN_HERE));
  if (size != 0) std::memcpy(block, data, size);
  uint64_t handle = 0;
  void* state = nullptr;
  Expect(KernelMemFileOpen(&handle, &state, KERNEL_MEMFILE_FILLED, block, size, size) == StatusOk,
         "no memory file");
  Expect(ReadFile(handle) == ReadFile(handle), "a file read otherwise the second time");
  KernelFileClose(handle);
  KernelMemFileClose(state, nullptr, nullptr, nullptr);
  KernelFree(block, TARN_HERE);
  Expect(Usage().liveBlocks == before.liveBlocks, "something was left behind");
  return 0;
}

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t most, unsigned seed) {
  return tarn::fuzz::MutateInput(data, size, most, seed, tarn::fuzz::MutateCompoundFile,
                                 tarn::fuzz::MutateAsLibFuzzer);
}
