#include "support/road/AttachmentCalls.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "Internal/Tarnclasses_.h"
#include "support/road/AttachmentBlock.h"
#include "support/road/CatchingCall.h"
#include "support/road/WholeFile.h"

namespace tarn::test {
namespace {

constexpr std::array<size_t, 3> kListAddresses = {offsetof(GetAttachmentInfoContext, path),
                                                  offsetof(GetAttachmentInfoContext, block),
                                                  offsetof(GetAttachmentInfoContext, options)};
constexpr std::array<size_t, 4> kExtractAddresses = {
    offsetof(ExtractAttachmentContext, path), offsetof(ExtractAttachmentContext, outputPath),
    offsetof(ExtractAttachmentContext, data), offsetof(ExtractAttachmentContext, options)};
constexpr std::array<size_t, 1> kBlockAddresses = {offsetof(AttachmentInfoBlock, items)};
constexpr std::array<size_t, 4> kItemAddresses = {
    offsetof(AttachmentInfoItem, name), offsetof(AttachmentInfoItem, reserved0),
    offsetof(AttachmentInfoItem, description), offsetof(AttachmentInfoItem, properties)};

// The bytes of a record in a block of the filter's, without its addresses.
template <typename Record, size_t count>
std::string BlockBytes(const Record& record, const std::array<size_t, count>& addresses) {
  const std::string none(sizeof record, '\x5A');
  return BytesBut({reinterpret_cast<const char*>(&record), sizeof record}, none, addresses);
}

void Add(Answer& answer, const AttachmentInfoBlock& block) {
  answer.add("block", BlockBytes(block, kBlockAddresses));
  for (uint64_t i = 0; i < block.itemCount; ++i) {
    const AttachmentInfoItem& item = block.items[i];
    answer.add("item", BlockBytes(item, kItemAddresses));
    answer.add("name", TextOf(item.name));
    answer.add("description", TextOf(item.description));
    for (uint64_t k = 0; k < item.propertyCount; ++k) {
      const AttachmentProperty& property = item.properties[k];
      answer.add("property", TextOf(property.name) + " " + TextOf(property.value));
      answer.add("its bytes", {reinterpret_cast<const char*>(&property), sizeof property});
    }
  }
}

}  // namespace

AttachmentCalls::AttachmentCalls(const std::filesystem::path& file, const AllCallsOptions& options,
                                 const TakeAnswer& take)
    : options_(options), take_(take), path_(file.u16string()) {
  attachmentOptions_->messageNumber = options.message;
  listContext_->path = path_.c_str();
  listContext_->options = attachmentOptions_.get();
  extractContext_->path = path_.c_str();
  extractContext_->options = attachmentOptions_.get();
}

void AttachmentCalls::run() {
  const uint64_t listed = std::min(list(), options_.mostAttachments);
  for (int32_t number = 1; number <= static_cast<int32_t>(listed) + 1; ++number) {
    extract(number);
    extractToFile(number);
  }
}

uint64_t AttachmentCalls::list() {
  Answer answer;
  answer.call = "list";
  listContext_->block = nullptr;
  listContext_.remember();
  Perform(answer, [this] { return fltGetAttachmentInfo(listContext_.get()); });
  answer.add("context", BytesBut(listContext_, kListAddresses));
  AttachmentInfoBlock* const block = listContext_->block;
  uint64_t count = 0;
  if (block != nullptr) {
    Add(answer, *block);
    count = block->itemCount;
    FreeAttachmentBlock(block);
  }
  take_(answer);
  return count;
}

void AttachmentCalls::extract(int32_t number) {
  Answer answer;
  answer.call = "extract " + std::to_string(number);
  extractContext_->attachmentNumber = number;
  extractContext_->outputPath = nullptr;
  extractContext_->data = nullptr;
  extractContext_->size = UINT64_MAX;
  extractContext_.remember();
  Perform(answer, [this] { return fltExtractAttachment(extractContext_.get()); });
  answer.add("context", BytesBut(extractContext_, kExtractAddresses));
  void* const data = extractContext_->data;
  if (data != nullptr) {
    answer.add("data",
               {static_cast<const char*>(data), static_cast<size_t>(extractContext_->size)});
    KernelFree(data, TARN_HERE);
  }
  take_(answer);
}

void AttachmentCalls::extractToFile(int32_t number) {
  const std::filesystem::path out = options_.outFolder / "extracted";
  const std::u16string outPath = out.u16string();
  Answer answer;
  answer.call = "extract " + std::to_string(number) + " to file";
  extractContext_->attachmentNumber = number;
  extractContext_->outputPath = outPath.c_str();
  extractContext_->data = nullptr;
  extractContext_->size = UINT64_MAX;
  extractContext_.remember();
  Perform(answer, [this] { return fltExtractAttachment(extractContext_.get()); });
  answer.add("context", BytesBut(extractContext_, kExtractAddresses));
  const std::optional<std::string> bytes = WholeFile(outPath.c_str());
  answer.add(bytes ? "file" : "no file", bytes.value_or(""));
  std::error_code ignored;
  std::filesystem::remove(out, ignored);
  take_(answer);
}

}  // namespace tarn::test
