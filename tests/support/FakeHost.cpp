#include "support/FakeHost.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "Internal/Tarnclasses_.h"

namespace tarn::test {
namespace {

FakeHost* activeHost = nullptr;

// Records the call and gives the answer; `info` is the sibling's to fill.
int32_t Answer(SiblingCall call, void* info, const void* options) {
  std::memcpy(&call.info, info, sizeof call.info);
  std::memcpy(&call.options, options, sizeof call.options);
  call.ioMode = KernelIoModeGet();
  FakeHost& host = *activeHost;
  host.calls.push_back(call);

  const SiblingAnswer& answer = host.answer;
  if (answer.action) answer.action();
  auto* const out = static_cast<HostFileInfo*>(info);
  if (answer.format != 0) out->format = answer.format;
  out->pageNumber = answer.pageNumber;
  out->pageCount = answer.pageCount;
  out->width = answer.width;
  out->height = answer.height;
  out->xResolution = answer.xResolution;
  out->yResolution = answer.yResolution;
  out->dataSize = answer.dataSize;
  out->siblingData = answer.data;
  out->siblingDataSize = answer.size;
  out->siblingDataFormat = answer.dataFormat;
  return answer.result;
}

// Not through the kernel: a fault that a test injects is meant for the filter.
std::string FileText(const char16_t* path) {
  std::u16string native = path;
  std::replace(native.begin(), native.end(), u'\\', u'/');
  return ReadWholeFile(native);
}

SiblingCall ByName(Route route, const char16_t* path) {
  SiblingCall call = {};
  call.route = route;
  call.path = path;
  call.document = FileText(path);
  call.besideFiles = activeHost->directory().listing();
  return call;
}

SiblingCall FromMemory(Route route, const void* data, uint64_t size) {
  SiblingCall call = {};
  call.route = route;
  call.document.assign(static_cast<const char*>(data), size);
  return call;
}

int32_t InfoByName(const char16_t* path, void* info, int32_t infoSize, int32_t mode,
                   void* options) {
  EXPECT_EQ(infoSize, 2316);
  SiblingCall call = ByName(Route::InfoByName, path);
  call.mode = mode;
  return Answer(std::move(call), info, options);
}

int32_t InfoFromMemory(const void* data, void* info, int32_t infoSize, uint64_t size, int32_t mode,
                       void* options) {
  EXPECT_EQ(infoSize, 2316);
  SiblingCall call = FromMemory(Route::InfoFromMemory, data, size);
  call.mode = mode;
  return Answer(std::move(call), info, options);
}

void NoteBitmap(SiblingCall& call, void* bitmap, int32_t bitmapSize, int32_t depth, int32_t order,
                int32_t flag, void* callback, uint64_t userValue) {
  call.bitmap = bitmap;
  call.bitmapSize = bitmapSize;
  call.depth = depth;
  call.order = order;
  call.flag = flag;
  call.callback = callback;
  call.userValue = userValue;
}

int32_t LoadByName(const char16_t* path, void* bitmap, int32_t bitmapSize, int32_t depth,
                   int32_t order, int32_t flag, void* callback, uint64_t userValue, void* options,
                   void* info) {
  SiblingCall call = ByName(Route::LoadByName, path);
  NoteBitmap(call, bitmap, bitmapSize, depth, order, flag, callback, userValue);
  return Answer(std::move(call), info, options);
}

int32_t LoadFromMemory(const void* data, void* bitmap, int32_t bitmapSize, int32_t depth,
                       int32_t order, int32_t flag, void* callback, uint64_t userValue,
                       uint64_t size, void* options, void* info) {
  SiblingCall call = FromMemory(Route::LoadFromMemory, data, size);
  NoteBitmap(call, bitmap, bitmapSize, depth, order, flag, callback, userValue);
  return Answer(std::move(call), info, options);
}

int32_t TargetByName(const char16_t* path, uint64_t opaque, void* options, void* info) {
  SiblingCall call = ByName(Route::TargetByName, path);
  call.opaque = opaque;
  return Answer(std::move(call), info, options);
}

int32_t TargetFromMemory(const void* data, uint64_t opaque, uint64_t size, void* options,
                         void* info) {
  SiblingCall call = FromMemory(Route::TargetFromMemory, data, size);
  call.opaque = opaque;
  return Answer(std::move(call), info, options);
}

// Bytes that a call may change; all else in the records is the host's.
const std::vector<ByteRange> kNothing = {};
const std::vector<ByteRange> kMessageIndexOut = {{1124, 4}};
const std::vector<ByteRange> kSiblingResultOut = {{1368, 4}};
const std::vector<ByteRange> kHostInfoOut = {{4, 4},    {1032, 4}, {1036, 4}, {1040, 4}, {1052, 8},
                                             {1104, 4}, {1108, 4}, {1112, 4}, {1116, 4}, {1120, 4},
                                             {2188, 4}, {2192, 8}, {2200, 8}, {2208, 4}, {2312, 4}};
const std::vector<ByteRange> kLoadContextOut = {{2028, 4}};
const std::vector<ByteRange> kListContextOut = {{40, 8}};
const std::vector<ByteRange> kExtractContextOut = {{56, 8}, {64, 8}};

}  // namespace

FakeHost::FakeHost(std::string_view mail) {
  activeHost = this;
  path_ = directory_.write("mail", mail).u16string();
  handle_ = KernelFileOpen(path_.c_str(), KERNEL_OPEN_READ, KERNEL_OPEN_MODE);
  EXPECT_NE(handle_, KERNEL_BAD_HANDLE);
  // The kernel's temp files land beside the mail, where the test can see them.
  PlainKernelSetTempDirectory(directory_.wide().c_str());

  options->pageNumber = 1;
  options->flags = 0;
  hostInfo->width = 0;
  hostInfo->height = 0;
  hostInfo->flags = 0xFFFFFFFFu;
  slot.defaultFormat = 4242;

  infoContext->path = path_.c_str();
  infoContext->handle = handle_;
  infoContext->info = hostInfo.get();
  infoContext->options = options.get();
  infoContext->infoByName = InfoByName;
  infoContext->infoFromMemory = InfoFromMemory;
  infoContext->raster.xResolution = 0;
  infoContext->raster.yResolution = 0;
  infoContext->messageNumber = 1;
  infoContext->textOnly = 0;

  loadContext->path = path_.c_str();
  loadContext->info = hostInfo.get();
  loadContext->options = options.get();
  loadContext->status = 1;
  loadContext->messageNumber = 1;
  loadContext->textOnly = 0;
  loadContext->target = nullptr;
  loadContext->loadByName = LoadByName;
  loadContext->loadFromMemory = LoadFromMemory;
  loadContext->targetByName = TargetByName;
  loadContext->targetFromMemory = TargetFromMemory;

  attachmentOptions->messageNumber = 1;
  listContext->path = path_.c_str();
  listContext->block = nullptr;
  listContext->options = attachmentOptions.get();
  extractContext->path = path_.c_str();
  extractContext->data = nullptr;
  extractContext->size = 0;
  extractContext->options = attachmentOptions.get();
}

FakeHost::~FakeHost() {
  clearSlot();
  KernelFileClose(handle_);
  PlainKernelSetTempDirectory(nullptr);
  activeHost = nullptr;
}

int32_t FakeHost::info(bool useSlot) {
  infoContext->slot = useSlot ? &slot : nullptr;
  infoContext.remember();
  hostInfo.remember();
  options.remember();
  const int32_t result = fltInfo(infoContext.get());
  EXPECT_EQ(infoContext.changesOutside(result == StatusOk               ? kMessageIndexOut
                                       : result == StatusSiblingRefused ? kSiblingResultOut
                                                                        : kNothing),
            "");
  std::vector<ByteRange> infoOut = result == StatusOk ? kHostInfoOut : kNothing;
  infoOut.insert(infoOut.end(), moreInfoOut.begin(), moreInfoOut.end());
  EXPECT_EQ(hostInfo.changesOutside(infoOut), "");
  EXPECT_EQ(options.changesOutside(kNothing), "");
  return result;
}

int32_t FakeHost::load(bool useSlot) {
  loadContext->slot = useSlot ? &slot : nullptr;
  const FilterDataSlot before = slot;
  loadContext.remember();
  hostInfo.remember();
  options.remember();
  const int32_t result = fltLoad(loadContext.get());
  EXPECT_EQ(loadContext.changesOutside(kLoadContextOut), "");
  EXPECT_EQ(hostInfo.changesOutside(kNothing), "");
  EXPECT_EQ(options.changesOutside(kNothing), "");
  EXPECT_EQ(std::memcmp(&before, &slot, sizeof slot), 0);
  return result;
}

int32_t FakeHost::attachmentInfo() {
  listContext.remember();
  attachmentOptions.remember();
  const int32_t result = fltGetAttachmentInfo(listContext.get());
  EXPECT_EQ(listContext.changesOutside(result == StatusOk ? kListContextOut : kNothing), "");
  EXPECT_EQ(attachmentOptions.changesOutside(kNothing), "");
  return result;
}

int32_t FakeHost::extract(int32_t number, const char16_t* outputPath) {
  extractContext->attachmentNumber = number;
  extractContext->outputPath = outputPath;
  extractContext.remember();
  const int32_t result = fltExtractAttachment(extractContext.get());
  EXPECT_EQ(extractContext.changesOutside(outputPath == nullptr ? kExtractContextOut : kNothing),
            "");
  return result;
}

void FakeHost::clearSlot() {
  if (slot.data != nullptr && slot.dataFormat == FILTER_DATA_LIST_FORMAT) {
    auto* const list = static_cast<FilterDataList*>(slot.data);
    if (list->entries[0].data != nullptr) fltFreeData(list->entries[0].data, 0);
    KernelFree(list, TARN_HERE);
  } else if (slot.data != nullptr) {
    fltFreeData(slot.data, 0);
  }
  slot.data = nullptr;
  slot.dataSize = 0;
  slot.dataFormat = 0;
}

void FakeHost::rewriteFile(std::string_view bytes) { directory_.write("mail", bytes); }

}  // namespace tarn::test
