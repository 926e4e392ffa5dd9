#include "RecordingSiblings.h"

#include <exception>

#include "KernelFile.h"

namespace tarn::host {
namespace {

constexpr int32_t kResolution = 96;

int32_t AnswerWithoutLayout(void* info) {
  auto* const answer = static_cast<HostFileInfo*>(info);
  answer->xResolution = kResolution;
  answer->yResolution = kResolution;
  return StatusOk;
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
    const int32_t status = ReadWholeFile(path, document.bytes);
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
