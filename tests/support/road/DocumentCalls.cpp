#include "support/road/DocumentCalls.h"

#include <array>
#include <cstddef>

#include "Internal/Tarnclasses_.h"
#include "support/road/CatchingCall.h"

namespace tarn::test {
namespace {

constexpr std::array<size_t, 5> kInfoAddresses = {
    offsetof(FilterInfoContext, path), offsetof(FilterInfoContext, handle),
    offsetof(FilterInfoContext, info), offsetof(FilterInfoContext, slot),
    offsetof(FilterInfoContext, options)};
constexpr std::array<size_t, 2> kInfoSiblings = {offsetof(FilterInfoContext, infoByName),
                                                 offsetof(FilterInfoContext, infoFromMemory)};
constexpr std::array<size_t, 9> kLoadAddresses = {offsetof(FilterLoadContext, path),
                                                  offsetof(FilterLoadContext, info),
                                                  offsetof(FilterLoadContext, slot),
                                                  offsetof(FilterLoadContext, options),
                                                  offsetof(FilterLoadContext, target),
                                                  offsetof(FilterLoadContext, loadByName),
                                                  offsetof(FilterLoadContext, loadFromMemory),
                                                  offsetof(FilterLoadContext, targetByName),
                                                  offsetof(FilterLoadContext, targetFromMemory)};
constexpr std::array<size_t, 1> kSlotData = {offsetof(FilterDataSlot, data)};
// The filter's own record; what siblings leave is no address.
constexpr std::array<size_t, 1> kListRecord = {offsetof(FilterDataList, entries)};

constexpr int32_t kRefusal = -77;

}  // namespace

DocumentCalls::DocumentCalls(const std::filesystem::path& file, const AllCallsOptions& options,
                             const TakeAnswer& take)
    : options_(options),
      take_(take),
      path_(file.u16string()),
      handle_(KernelFileOpen(path_.c_str(), KERNEL_OPEN_READ, KERNEL_OPEN_MODE)),
      siblings_(options.tempFolder) {
  siblings_.inside = options.inSibling;
  slot_.defaultFormat = 4242;
  fillRecords();
}

DocumentCalls::~DocumentCalls() {
  forgetSlot();
  KernelFileClose(handle_);
}

void DocumentCalls::fillRecords() {
  loadOptions_->pageNumber = 2;
  loadOptions_->flags = 0;

  infoContext_->path = path_.c_str();
  infoContext_->handle = handle_;
  infoContext_->info = hostInfo_.get();
  Siblings::set(*infoContext_.get());

  loadContext_->path = path_.c_str();
  loadContext_->info = hostInfo_.get();
  loadContext_->target = nullptr;
  Siblings::set(*loadContext_.get());
}

void DocumentCalls::run() {
  siblings_.keepsData = true;
  info("info", UseSlot::Yes);
  load("load", UseSlot::Yes);
  info("info again", UseSlot::Yes);
  infoContext_->raster.xResolution = 72;
  infoContext_->raster.yResolution = 72;
  info("info at 72 dpi", UseSlot::Yes);
  infoContext_->raster.xResolution = 144;
  siblings_.result = kRefusal;
  info("info refused", UseSlot::Yes);
  siblings_.result = StatusOk;
  loadContext_->target = Siblings::directTarget();
  load("load to a target", UseSlot::Yes);
  loadContext_->target = nullptr;
  free("free with a value", 1);
  free("free", 0);
  siblings_.keepsData = false;
  info("info bare", UseSlot::Yes);
  load("load bare", UseSlot::Yes);
  free("free bare", 0);
  info("info anew", UseSlot::No);
  load("load anew", UseSlot::No);
}

std::optional<int32_t> DocumentCalls::messageCount() {
  if (info("info", UseSlot::No) != StatusOk) return std::nullopt;
  return format_ == FormatPst ? Copy(hostInfo_->messageCount) : 1;
}

int32_t DocumentCalls::info(const char* name, UseSlot useSlot) {
  Answer answer;
  answer.call = name;
  siblings_.answer = &answer;
  hostInfo_.fill();
  hostInfo_->width = 1234;
  hostInfo_->height = 567;
  infoContext_->slot = useSlot == UseSlot::Yes ? &slot_ : nullptr;
  infoContext_->options = useSlot == UseSlot::Yes ? loadOptions_.get() : nullptr;
  infoContext_->messageNumber = options_.message;
  infoContext_->textOnly = options_.textOnly ? 1 : 0;
  infoContext_.remember();
  const std::optional<int32_t> status =
      Perform(answer, [this] { return fltInfo(infoContext_.get()); });
  if (status == StatusOk) {
    format_ = hostInfo_->format;
    siblings_.marksItsText = format_ == FormatPst || format_ == FormatMsg;
  }
  answer.add("host info", hostInfo_.bytes());
  std::string context = BytesBut(infoContext_, kInfoAddresses);
  context = BytesBut(std::move(context), infoContext_.remembered(), kInfoSiblings);
  answer.add("context", context);
  addSlot(answer);
  siblings_.answer = nullptr;
  take_(answer);
  return status.value_or(StatusFailed);
}

void DocumentCalls::load(const char* name, UseSlot useSlot) {
  Answer answer;
  answer.call = name;
  siblings_.answer = &answer;
  loadContext_->slot = useSlot == UseSlot::Yes ? &slot_ : nullptr;
  loadContext_->options = loadOptions_.get();
  loadContext_->status = 1;
  loadContext_->messageNumber = options_.message;
  loadContext_->textOnly = options_.textOnly ? 1 : 0;
  loadContext_.remember();
  Perform(answer, [this] { return fltLoad(loadContext_.get()); });
  answer.add("host info", hostInfo_.bytes());
  answer.add("context", BytesBut(loadContext_, kLoadAddresses));
  addSlot(answer);
  siblings_.answer = nullptr;
  take_(answer);
}

void DocumentCalls::free(const char* name, int32_t value) {
  if (slotRecord() == nullptr) return;
  Answer answer;
  answer.call = name;
  Perform(answer, [&] { return fltFreeData(slotRecord(), value); });
  if (value == 0) {
    if (slot_.dataFormat == FILTER_DATA_LIST_FORMAT) {
      static_cast<FilterDataList*>(slot_.data)->entries[0].data = nullptr;
    } else {
      slot_.data = nullptr;
    }
    forgetSlot();
  }
  take_(answer);
}

void* DocumentCalls::slotRecord() const {
  if (slot_.data == nullptr || slot_.dataFormat != FILTER_DATA_LIST_FORMAT) return slot_.data;
  return static_cast<const FilterDataList*>(slot_.data)->entries[0].data;
}

void DocumentCalls::addSlot(Answer& answer) const {
  const std::string slot(reinterpret_cast<const char*>(&slot_), sizeof slot_);
  // Nothing to compare with: an address is null or other.
  const std::string none(sizeof(FilterDataSlot), '\x5A');
  answer.add("slot", BytesBut(slot, none, kSlotData));
  if (slot_.data == nullptr || slot_.dataFormat != FILTER_DATA_LIST_FORMAT) return;
  const auto* const list = static_cast<const FilterDataList*>(slot_.data);
  const std::string bytes(reinterpret_cast<const char*>(list), static_cast<size_t>(list->size));
  answer.add("list", BytesBut(bytes, none, kListRecord));
}

// Frees what the slot still holds, and leaves it as it was when the file was opened.
void DocumentCalls::forgetSlot() {
  if (slotRecord() != nullptr) fltFreeData(slotRecord(), 0);
  if (slot_.data != nullptr && slot_.dataFormat == FILTER_DATA_LIST_FORMAT) {
    KernelFree(slot_.data, TARN_HERE);
  }
  slot_ = {};
  slot_.defaultFormat = 4242;
}

}  // namespace tarn::test
