// Whole MSG files through the exports: document on both routes, attachments listed and extracted.
//
// The last byte of the input chooses the variant, the rest is the file; where it does not begin as
// a compound file, it is made to. Besides what the sanitizers see, a run aborts when a call leaves
// anything behind in the kernel or gives the sibling bytes that cannot be read.

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "Internal/Tarnclasses_.h"
#include "TarnPst.h"
#include "Tarnbase/PlainKernel.h"

namespace {

constexpr uint32_t kLanguages[] = {0x0409, 0x0411, 0x2C01, 0x0407};
constexpr unsigned char kMagic[] = {0xD0, 0xCF, 0x11, 0xE0, 0xA1, 0xB1, 0x1A, 0xE1};

volatile uint64_t sink;

void ReadAll(const void* data, uint64_t size) {
  uint64_t sum = 0;
  for (uint64_t i = 0; i < size; ++i) sum += static_cast<const unsigned char*>(data)[i];
  sink = sum;
}

void FillAnswer(void* info) {
  auto* const answer = static_cast<HostFileInfo*>(info);
  answer->pageCount = 1;
  answer->width = 800;
  answer->height = 1000;
  answer->xResolution = 96;
  answer->yResolution = 96;
}

int32_t InfoByName(const char16_t* path, void* info, int32_t, int32_t, void*) {
  const uint64_t handle = KernelFileOpen(path, KERNEL_OPEN_READ, KERNEL_OPEN_MODE);
  if (handle == KERNEL_BAD_HANDLE) std::abort();
  KernelFileClose(handle);
  FillAnswer(info);
  return StatusOk;
}

int32_t InfoFromMemory(const void* data, void* info, int32_t, uint64_t size, int32_t, void*) {
  ReadAll(data, size);
  FillAnswer(info);
  return StatusOk;
}

// A folder of this process's own, for the file and for the kernel's temporary files.
class Workplace {
 public:
  Workplace() {
    const char* const temp = std::getenv("TMPDIR");
    folder_ = std::string(temp != nullptr ? temp : "/tmp") + "/tarn-fuzz-XXXXXX";
    if (mkdtemp(folder_.data()) == nullptr) std::abort();
    mail_ = folder_ + "/mail";
    wideFolder_.assign(folder_.begin(), folder_.end());
    wideMail_.assign(mail_.begin(), mail_.end());
    PlainKernelSetTempDirectory(wideFolder_.c_str());
  }
  ~Workplace() {
    unlink(mail_.c_str());
    rmdir(folder_.c_str());
  }

  const char16_t* write(std::string bytes) {
    std::memcpy(bytes.data(), kMagic, sizeof kMagic);
    const int file = open(mail_.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    if (file < 0 ||
        ::write(file, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size())) {
      std::abort();
    }
    close(file);
    return wideMail_.c_str();
  }

 private:
  std::string folder_;
  std::string mail_;
  std::u16string wideFolder_;
  std::u16string wideMail_;
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

void Inform(const char16_t* path, int32_t textOnly) {
  FilterInfoContext context = {};
  HostFileInfo info = {};
  HostLoadOptions options = {};
  context.path = path;
  context.handle = KernelFileOpen(path, KERNEL_OPEN_READ, KERNEL_OPEN_MODE);
  context.info = &info;
  context.options = &options;
  context.infoByName = InfoByName;
  context.infoFromMemory = InfoFromMemory;
  context.messageNumber = 1;
  context.textOnly = textOnly;
  fltInfo(&context);
  KernelFileClose(context.handle);
}

void FreeBlock(void* block) {
  if (block != nullptr) KernelFree(block, TARN_HERE);
}

// True when the call succeeded; a list that fails half way leaves what its items own.
bool ListAttachments(const char16_t* path, const AttachmentOptions& options) {
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
}

void Extract(const char16_t* path, const AttachmentOptions& options, int32_t number) {
  ExtractAttachmentContext context = {};
  context.path = path;
  context.attachmentNumber = number;
  context.options = &options;
  fltExtractAttachment(&context);
  ReadAll(context.data, context.size);
  FreeBlock(context.data);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 1 + sizeof kMagic + 4) return 0;
  static Workplace workplace;
  const uint8_t variant = data[size - 1];
  PlainKernelSetLanguage(kLanguages[variant & 3]);
  PlainKernelSetIoMode((variant & 4) != 0 ? 3 : 0);
  const char16_t* const path =
      workplace.write(std::string(reinterpret_cast<const char*>(data), size - 1));
  AttachmentOptions options = {};
  options.messageNumber = 1;

  const PlainKernelUsageRecord before = Usage();
  Inform(path, (variant & 8) != 0 ? 1 : 0);
  Extract(path, options, 1 + (variant >> 6));
  ExpectNothingLeft(before);
  if (ListAttachments(path, options)) ExpectNothingLeft(before);
  return 0;
}
