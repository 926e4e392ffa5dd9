// RoadFuzzing.h - one file through the exports: a document, an attachment, the list of attachments.
//
// Besides what the sanitizers see, a run aborts when a call leaves anything behind in the kernel,
// when it gives the sibling bytes that cannot be read, and when it throws what it must not.
#ifndef TARN_FUZZ_ROADFUZZING_H
#define TARN_FUZZ_ROADFUZZING_H

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <string_view>

#include "Internal/Tarnclasses_.h"
#include "TarnPst.h"
#include "Tarnbase/PlainKernel.h"

namespace tarn::fuzz {

inline volatile uint64_t sink;

inline void ReadAll(const void* data, uint64_t size) {
  uint64_t sum = 0;
  for (uint64_t i = 0; i < size; ++i) sum += static_cast<const unsigned char*>(data)[i];
  sink = sum;
}

inline void FillAnswer(void* info) {
  auto* const answer = static_cast<HostFileInfo*>(info);
  answer->pageCount = 1;
  answer->width = 800;
  answer->height = 1000;
  answer->xResolution = 96;
  answer->yResolution = 96;
}

inline int32_t InfoByName(const char16_t* path, void* info, int32_t, int32_t, void*) {
  const uint64_t handle = KernelFileOpen(path, KERNEL_OPEN_READ, KERNEL_OPEN_MODE);
  if (handle == KERNEL_BAD_HANDLE) std::abort();
  KernelFileClose(handle);
  FillAnswer(info);
  return StatusOk;
}

inline int32_t InfoFromMemory(const void* data, void* info, int32_t, uint64_t size, int32_t,
                              void*) {
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
    file_ = folder_ + "/file";
    wideFolder_.assign(folder_.begin(), folder_.end());
    wideFile_.assign(file_.begin(), file_.end());
    PlainKernelSetTempDirectory(wideFolder_.c_str());
  }
  ~Workplace() {
    unlink(file_.c_str());
    rmdir(folder_.c_str());
  }

  const char16_t* write(std::string_view bytes) {
    const int file = open(file_.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    const auto size = static_cast<ssize_t>(bytes.size());
    if (file < 0 || ::write(file, bytes.data(), bytes.size()) != size) std::abort();
    close(file);
    return wideFile_.c_str();
  }

 private:
  std::string folder_;
  std::string file_;
  std::u16string wideFolder_;
  std::u16string wideFile_;
};

inline PlainKernelUsageRecord Usage() {
  PlainKernelUsageRecord usage = {};
  PlainKernelUsage(&usage);
  return usage;
}

inline void ExpectNothingLeft(const PlainKernelUsageRecord& before) {
  const PlainKernelUsageRecord after = Usage();
  if (after.liveBlocks != before.liveBlocks || after.openHandles != before.openHandles ||
      after.liveTrackedObjects != before.liveTrackedObjects ||
      after.reportedBytes != before.reportedBytes ||
      after.temporaryFiles != before.temporaryFiles) {
    std::fputs("a call left something behind\n", stderr);
    std::abort();
  }
}

inline void Inform(const char16_t* path, int32_t message, int32_t textOnly) {
  FilterInfoContext context = {};
  HostFileInfo info = {};
  HostLoadOptions options = {};
  context.path = path;
  context.handle = KernelFileOpen(path, KERNEL_OPEN_READ, KERNEL_OPEN_MODE);
  context.info = &info;
  context.options = &options;
  context.infoByName = InfoByName;
  context.infoFromMemory = InfoFromMemory;
  context.messageNumber = message;
  context.textOnly = textOnly;
  try {
    fltInfo(&context);
  } catch (...) {
    KernelFileClose(context.handle);
    throw;
  }
  KernelFileClose(context.handle);
}

inline void FreeBlock(void* block) {
  if (block != nullptr) KernelFree(block, TARN_HERE);
}

// True when the call succeeded; a list that fails half way leaves what its items own.
inline bool ListAttachments(const char16_t* path, const AttachmentOptions& options) {
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

inline void Extract(const char16_t* path, const AttachmentOptions& options, int32_t number) {
  ExtractAttachmentContext context = {};
  context.path = path;
  context.attachmentNumber = number;
  context.options = &options;
  fltExtractAttachment(&context);
  ReadAll(context.data, context.size);
  FreeBlock(context.data);
}

// What may leave the exports: only the reader of stores throws.
enum class Throws { Nothing, StandardExceptions };

// False when the call threw what it may.
template <typename Call>
bool Run(Throws throws, Call call) {
  try {
    call();
    return true;
  } catch (const std::exception& error) {
    if (throws == Throws::StandardExceptions) return false;
    std::fprintf(stderr, "an export threw: %s\n", error.what());
    std::abort();
  }
}

// Bits of the variant: 0 and 1 the language, 2 the I/O mode, 3 the text flag, 4 and 5 whether the
// attachments are listed, 6 and 7 the attachment to extract.
inline void RunRoad(std::string_view file, uint8_t variant, int32_t message, Throws throws) {
  static constexpr uint32_t kLanguages[] = {0x0409, 0x0411, 0x2C01, 0x0407};
  static Workplace workplace;
  PlainKernelSetLanguage(kLanguages[variant & 3]);
  PlainKernelSetIoMode((variant & 4) != 0 ? 3 : 0);
  const char16_t* const path = workplace.write(file);
  AttachmentOptions options = {};
  options.messageNumber = message;

  const PlainKernelUsageRecord before = Usage();
  Run(throws, [&] { Inform(path, message, (variant & 8) != 0 ? 1 : 0); });
  Run(throws, [&] { Extract(path, options, 1 + (variant >> 6)); });
  ExpectNothingLeft(before);
  if ((variant & 0x30) != 0) return;
  bool complete = false;
  Run(throws, [&] { complete = ListAttachments(path, options); });
  if (complete) ExpectNothingLeft(before);
}

}  // namespace tarn::fuzz

#endif
