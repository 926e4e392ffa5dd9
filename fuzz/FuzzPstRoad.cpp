// Whole stores through the exports: documents of the first three messages, attachments listed and
// extracted.
//
// Checksums and signatures of the input are made to fit first, so that damage gets behind them; the
// checksum that stood in its header chooses the variant. Besides what the sanitizers see, a run
// aborts when a call leaves anything behind in the kernel, and when anything but a standard
// exception leaves it.

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>

#include "Internal/Tarnclasses_.h"
#include "TarnPst.h"
#include "Tarnbase/PlainKernel.h"
#include "support/pst/PstDamage.h"

namespace {

volatile uint64_t sink;

void ReadAll(const void* data, uint64_t size) {
  uint64_t sum = 0;
  for (uint64_t i = 0; i < size; ++i) sum += static_cast<const unsigned char*>(data)[i];
  sink = sum;
}

int32_t InfoByName(const char16_t* path, void* info, int32_t, int32_t, void*) {
  const uint64_t handle = KernelFileOpen(path, KERNEL_OPEN_READ, KERNEL_OPEN_MODE);
  if (handle == KERNEL_BAD_HANDLE) std::abort();
  KernelFileClose(handle);
  static_cast<HostFileInfo*>(info)->pageCount = 1;
  return StatusOk;
}

int32_t InfoFromMemory(const void* data, void* info, int32_t, uint64_t size, int32_t, void*) {
  ReadAll(data, size);
  static_cast<HostFileInfo*>(info)->pageCount = 1;
  return StatusOk;
}

// A folder of this process's own, for the store and for the kernel's temporary files.
class Workplace {
 public:
  Workplace() {
    const char* const temp = std::getenv("TMPDIR");
    folder_ = std::string(temp != nullptr ? temp : "/tmp") + "/tarn-fuzz-XXXXXX";
    if (mkdtemp(folder_.data()) == nullptr) std::abort();
    store_ = folder_ + "/store";
    wideFolder_.assign(folder_.begin(), folder_.end());
    wideStore_.assign(store_.begin(), store_.end());
    PlainKernelSetTempDirectory(wideFolder_.c_str());
  }
  ~Workplace() {
    unlink(store_.c_str());
    rmdir(folder_.c_str());
  }

  const char16_t* write(const std::string& bytes) {
    const int file = open(store_.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    if (file < 0 || ::write(file, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size()))
      std::abort();
    close(file);
    return wideStore_.c_str();
  }

 private:
  std::string folder_;
  std::string store_;
  std::u16string wideFolder_;
  std::u16string wideStore_;
};

PlainKernelUsageRecord Usage() {
  PlainKernelUsageRecord usage = {};
  PlainKernelUsage(&usage);
  return usage;
}

void ExpectNothingLeft(const PlainKernelUsageRecord& before) {
  const PlainKernelUsageRecord after = Usage();
  if (after.liveBlocks != before.liveBlocks || after.openHandles != before.openHandles ||
      after.liveTrackedObjects != before.liveTrackedObjects ||
      after.reportedBytes != before.reportedBytes ||
      after.temporaryFiles != before.temporaryFiles) {
    std::fputs("a call left something behind\n", stderr);
    std::abort();
  }
}

void Inform(const char16_t* path, int32_t number, int32_t textOnly) {
  FilterInfoContext context = {};
  HostFileInfo info = {};
  HostLoadOptions options = {};
  context.path = path;
  context.handle = KernelFileOpen(path, KERNEL_OPEN_READ, KERNEL_OPEN_MODE);
  context.info = &info;
  context.options = &options;
  context.infoByName = InfoByName;
  context.infoFromMemory = InfoFromMemory;
  context.messageNumber = number;
  context.textOnly = textOnly;
  try {
    fltInfo(&context);
  } catch (const std::exception&) {
  }
  KernelFileClose(context.handle);
}

void FreeBlock(void* block) {
  if (block != nullptr) KernelFree(block, TARN_HERE);
}

// False when the list failed half way: what its items own is left then.
bool ListAttachments(const char16_t* path, const AttachmentOptions& options) try {
  GetAttachmentInfoContext context = {};
  context.path = path;
  context.options = &options;
  if (fltGetAttachmentInfo(&context) != StatusOk) return false;
  for (uint64_t i = 0; i < context.block->itemCount; ++i) {
    const AttachmentInfoItem& item = context.block->items[i];
    FreeBlock(item.name);
    FreeBlock(item.description);
    FreeBlock(item.properties);
  }
  FreeBlock(context.block->items);
  FreeBlock(context.block);
  return true;
} catch (const std::exception&) {
  return false;
}

void Extract(const char16_t* path, const AttachmentOptions& options, int32_t number) try {
  ExtractAttachmentContext context = {};
  context.path = path;
  context.attachmentNumber = number;
  context.options = &options;
  fltExtractAttachment(&context);
  ReadAll(context.data, context.size);
  FreeBlock(context.data);
} catch (const std::exception&) {
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  constexpr size_t kHeaderChecksum = 4;
  if (size <= kHeaderChecksum) return 0;
  static Workplace workplace;
  const uint8_t variant = data[kHeaderChecksum];
  std::string store(reinterpret_cast<const char*>(data), size);
  tarn::test::RepairPstImage(store);
  PlainKernelSetLanguage((variant & 2) != 0 ? 0x0411 : 0x0409);
  PlainKernelSetIoMode((variant & 4) != 0 ? 3 : 0);
  const char16_t* const path = workplace.write(store);
  AttachmentOptions options = {};

  for (int32_t number = 1; number <= 3; ++number) {
    options.messageNumber = number;
    const PlainKernelUsageRecord before = Usage();
    Inform(path, number, (variant & 8) != 0 ? 1 : 0);
    Extract(path, options, 1 + (variant >> 6));
    ExpectNothingLeft(before);
    if ((variant & 0x30) == 0 && ListAttachments(path, options)) ExpectNothingLeft(before);
  }
  return 0;
}
