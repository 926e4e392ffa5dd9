// fltInfo: read the message unless the slot has it, ask the sibling, keep the record, answer.

#include "Common/FilterData.h"
#include "FileFormats/Pst/DetectFormat.h"
#include "FileFormats/Pst/DocumentRecord.h"
#include "FileFormats/Pst/Frame.h"
#include "FileFormats/Pst/IoScope.h"
#include "FileFormats/Pst/MessageDriver.h"
#include "FileFormats/Pst/SiblingCall.h"

namespace tarn {
namespace {

constexpr uint32_t kInfoFlags = 4096;
constexpr int32_t kModeWithSlot = 3;
constexpr int32_t kModeWithoutSlot = 1;

// One call of fltInfo, step by step.
class InfoCall {
 public:
  explicit InfoCall(FilterInfoContext& context)
      : context_(context), index_(MessageIndex(context.messageNumber)) {}

  Status run();

 private:
  Status findOrRead();
  bool siblingKnowsRaster() const;
  Status askSibling();
  void keepAnswer(const HostFileInfo& answer);
  void answerHost();
  void answerSize(int32_t HostFileInfo::*size, int32_t HostFileInfo::*resolution, uint32_t wanted,
                  int32_t& recordSize, int32_t& recordResolution);

  FilterInfoContext& context_;
  int32_t index_;
  TarnFormat format_ = FormatNone;
  int32_t sibling_ = 0;
  bool isNew_ = false;
  RecordHolder record_;
  FilterIoScope scope_;
};

Status InfoCall::run() {
  const Status detected = DetectFormat(context_.handle, format_);
  if (!detected.ok()) return detected;

  const Status found = findOrRead();
  if (!found.ok()) return found;

  if (!siblingKnowsRaster()) {
    const Status asked = askSibling();
    if (!asked.ok()) return asked;
  }
  answerHost();
  return StatusOk;
}

// The record of the slot, whatever message it is of, or a new one with the message read into it.
Status InfoCall::findOrRead() {
  PstFilterData* cached = nullptr;
  if (FindFilterData(context_.slot, 0, &cached).ok()) {
    if (cached->readerFormat == FormatNone || cached->readerFormat != format_) {
      return StatusNotSupported;
    }
    record_.borrow(cached);
    sibling_ = cached->siblingFormat;
    return StatusOk;
  }

  isNew_ = true;
  const Status made = record_.make();
  if (!made.ok()) return made;
  const DocumentRequest request = {context_.path,          format_,         index_,
                                   context_.textOnly == 1, context_.handle, nullptr};
  DocumentResult result;
  const Status read = ReadMessageDocument(request, *record_, result);
  if (!read.ok()) return read;
  index_ = result.index;
  sibling_ = SiblingForKind(result.kind, request.textOnly);
  return StatusOk;
}

bool InfoCall::siblingKnowsRaster() const {
  return !isNew_ &&
         std::memcmp(&record_->rasterOptions, &context_.raster, sizeof(HostRasterOptions)) == 0;
}

Status InfoCall::askSibling() {
  HostFileInfo info = {};
  info.size = sizeof info;
  info.flags = kInfoFlags;
  info.format = sibling_;
  HostLoadOptions options = CopyOptions(context_.options);
  PassSiblingData(context_.slot, SiblingPosition(index_), options);
  options.lastWord = 0;

  const bool byFile = GoesByTempFile(*record_, sibling_);
  if (byFile) {
    if (isNew_) {
      const Status written = WriteDocumentToTemp(*record_);
      if (!written.ok()) return written;
    }
    scope_.enter();
  }

  const int32_t mode = context_.slot != nullptr ? kModeWithSlot : kModeWithoutSlot;
  int32_t result = StatusFailed;
  if (byFile && context_.infoByName != nullptr) {
    result = context_.infoByName(record_->tempHtmlPath, &info, sizeof info, mode, &options);
  } else if (!byFile && context_.infoFromMemory != nullptr) {
    result = context_.infoFromMemory(record_->document.data(), &info, sizeof info,
                                     record_->document.length(), mode, &options);
  }
  if (result != StatusOk) {
    context_.siblingResult = result;
    return StatusSiblingRefused;
  }
  keepAnswer(info);
  scope_.leave();
  return StatusOk;
}

void InfoCall::keepAnswer(const HostFileInfo& answer) {
  FilterDataSlot* const slot = context_.slot;
  std::memcpy(&record_->rasterOptions, &context_.raster, sizeof(HostRasterOptions));
  if (answer.siblingData != nullptr) {
    SetFilterDataEntry(slot, SiblingPosition(index_), answer.siblingData, answer.siblingDataSize,
                       answer.siblingDataFormat)
        .ignore();
  }
  record_->siblingFormat = answer.format;
  if (isNew_) record_->sniffedFormat = format_;
  record_->pageNumber = answer.pageNumber;
  record_->pageCount = answer.pageCount;
  record_->width = answer.width;
  record_->height = answer.height;
  record_->xResolution = answer.xResolution;
  record_->yResolution = answer.yResolution;
  record_->dataSize = answer.dataSize;
  if (slot != nullptr && StoreRecord(*slot, record_.get())) record_.disown();
}

// A quotient that the sibling's resolution of 0 would leave undefined is 0.
double WholeInches(int32_t pixels, int32_t resolution) {
  if (resolution == 0) return 0.0;
  const int64_t whole = pixels / static_cast<int64_t>(static_cast<uint32_t>(resolution));
  return static_cast<double>(whole);
}

void InfoCall::answerHost() {
  context_.messageNumber = index_;
  HostFileInfo& info = *context_.info;
  info.format = record_->sniffedFormat;
  info.answered2188 = 1;
  info.answered2208 = 1;
  // From the width and height that the host's record came in with: they are rewritten below.
  info.widthInches = WholeInches(info.width, record_->xResolution);
  info.heightInches = WholeInches(info.height, record_->yResolution);

  int32_t page = context_.options != nullptr ? context_.options->pageNumber : 0;
  if (page <= 0) page = 1;
  if (page > record_->pageCount) page = record_->pageCount;
  info.pageNumber = page;
  info.pageCount = record_->pageCount;
  if (record_->sniffedFormat == FormatPst) info.messageCount = record_->messageCount;
  info.answered1104 = 1;
  info.depth = 24;

  answerSize(&HostFileInfo::width, &HostFileInfo::xResolution, context_.raster.xResolution,
             record_->width, record_->xResolution);
  answerSize(&HostFileInfo::height, &HostFileInfo::yResolution, context_.raster.yResolution,
             record_->height, record_->yResolution);
  info.dataSize = record_->dataSize;
  info.attachmentCount = static_cast<int32_t>(record_->inlineCount + record_->attachmentCount);
}

// Hosts rely on the asymmetry: a scaled size leaves the answer's resolution field untouched.
void InfoCall::answerSize(int32_t HostFileInfo::*size, int32_t HostFileInfo::*resolution,
                          uint32_t wanted, int32_t& recordSize, int32_t& recordResolution) {
  HostFileInfo& info = *context_.info;
  const auto current = static_cast<uint32_t>(recordResolution);
  if (wanted != 0 && wanted != current) {
    if (current != 0) {
      const uint64_t scaled = static_cast<uint64_t>(static_cast<int64_t>(recordSize)) * wanted;
      recordSize = static_cast<int32_t>((scaled + current / 2) / current);
    }
    info.*size = recordSize;
    recordResolution = static_cast<int32_t>(wanted);
  } else {
    info.*size = recordSize;
    info.*resolution = recordResolution;
  }
}

}  // namespace

Status FilterInfo(FilterInfoContext* context) {
  if (context == nullptr || context->info == nullptr) return StatusBadArgument;
  return InfoCall(*context).run();
}

}  // namespace tarn
