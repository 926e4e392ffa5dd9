#include "RecordingSiblings.h"

#include <exception>

#include "KernelBytes.h"
#include "Tarnbase/Kernel.h"

namespace tarn::host {
namespace {

constexpr int32_t kResolution = 96;

int32_t AnswerWithoutLayout(void* info) {
  auto* const answer = static_cast<HostFileInfo*>(info);
  answer->xResolution = kResolution;
  answer->yResolution = kResolution;
  return StatusOk;
}

int32_t ReadDocumentFile(const char16_t* path, std::string& bytes) {
  const KernelFile file(path);
  if (!file.isOpen()) return StatusOpenFailed;
  const uint64_t size = KernelFileSeek(file.handle(), 0, KERNEL_SEEK_END);
  if (size == UINT64_MAX || KernelFileSeek(file.handle(), 0, KERNEL_SEEK_START) != 0) {
    return StatusSeekFailed;
  }
  bytes.resize(size);
  const bool whole = KernelFileReadLarge(file.handle(), bytes.data(), size) == size;
  return whole ? StatusOk : StatusReadFailed;
}

}  // namespace

RecordingSiblings* RecordingSiblings::active_ = nullptr;

RecordingSiblings::RecordingSiblings() { active_ = this; }

RecordingSiblings::~RecordingSiblings() { active_ = nullptr; }

void RecordingSiblings::attachTo(FilterInfoContext& context) const {
  context.infoByName = InfoByName;
  context.infoFromMemory = InfoFromMemory;
}

int32_t RecordingSiblings::InfoByName(const char16_t* path, void* info, int32_t, int32_t, void*) {
  try {
    RecordedDocument document;
    document.sibling = static_cast<HostFileInfo*>(info)->format;
    const int32_t status = ReadDocumentFile(path, document.bytes);
    if (status != StatusOk) return status;
    active_->document_ = std::move(document);
    return AnswerWithoutLayout(info);
  } catch (const std::exception&) {
    return StatusOutOfMemory;
  }
}

int32_t RecordingSiblings::InfoFromMemory(const void* data, void* info, int32_t, uint64_t size,
                                          int32_t, void*) {
  try {
    RecordedDocument document;
    document.sibling = static_cast<HostFileInfo*>(info)->format;
    if (size != 0) document.bytes.assign(static_cast<const char*>(data), size);
    active_->document_ = std::move(document);
    return AnswerWithoutLayout(info);
  } catch (const std::exception&) {
    return StatusOutOfMemory;
  }
}

}  // namespace tarn::host
