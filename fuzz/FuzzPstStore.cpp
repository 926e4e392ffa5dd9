// Whole stores: everything in them is read. The checksums of the input are made to fit first, so
// that damage gets past them. Besides what the sanitizers see, a run aborts on an exception that
// is not the store's and when a read leaves anything behind in the kernel.

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "Tarnbase/PlainKernel.h"
#include "mutators/CallScript.h"
#include "mutators/LibFuzzer.h"
#include "mutators/PstMutator.h"
#include "support/StoreReading.h"
#include "support/pst/PstDamage.h"

namespace {

// A file of this process's own.
class StoreFile {
 public:
  StoreFile() {
    const char* const temp = std::getenv("TMPDIR");
    path_ = std::string(temp != nullptr ? temp : "/tmp") + "/tarn-fuzz-XXXXXX";
    file_ = mkstemp(path_.data());
    if (file_ < 0) std::abort();
    wide_.assign(path_.begin(), path_.end());
  }
  ~StoreFile() {
    close(file_);
    unlink(path_.c_str());
  }

  const char16_t* write(const std::string& image) const {
    if (ftruncate(file_, 0) != 0 ||
        pwrite(file_, image.data(), image.size(), 0) != static_cast<ssize_t>(image.size())) {
      std::abort();
    }
    return wide_.c_str();
  }

 private:
  std::string path_;
  std::u16string wide_;
  int file_;
};

void Read(const char16_t* path, bool inEveryWay) {
  try {
    const auto store = pststore::open_database(path);
    tarn::test::ReadStore(
        store,
        {.inEveryWay = inEveryWay, .maxBytes = 1 << 22, .maxRows = 2000, .maxFailures = 2000});
  } catch (const std::exception& caught) {
    if (!tarn::test::IsStoreException(caught)) std::abort();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const StoreFile file;
  std::string image(reinterpret_cast<const char*>(data), size);
  tarn::test::RepairPstImage(image);
  const char16_t* const path = file.write(image);

  PlainKernelUsageRecord before = {};
  PlainKernelUsage(&before);
  Read(path, size % 2 != 0);
  PlainKernelUsageRecord after = {};
  PlainKernelUsage(&after);
  if (after.liveBlocks != before.liveBlocks || after.openHandles != before.openHandles) {
    std::fputs("a read left something behind\n", stderr);
    std::abort();
  }
  return 0;
}

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t most, unsigned seed) {
  return tarn::fuzz::MutateInput(data, size, most, seed, tarn::fuzz::MutatePstImage,
                                 tarn::fuzz::MutateAsLibFuzzer);
}
