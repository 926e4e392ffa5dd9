#include "host/AttachmentCalls.h"

#include <cstring>
#include <unordered_set>

#include "Internal/Tarnclasses_.h"
#include "host/BlockLedger.h"
#include "host/Expect.h"

namespace tarn::fuzz {
namespace {

// Reads a text with its terminator and frees it.
void TakeText(char16_t* text) {
  if (text == nullptr) return;
  const std::u16string_view whole(text);
  ReadAll(whole.data(), (whole.size() + 1) * sizeof(char16_t));
  KernelFree(text, TARN_HERE);
}

void TakeItem(const AttachmentInfoItem& item, uint64_t number) {
  Expect(item.number == number && item.reserved0 == nullptr && item.reserved1 == 0 &&
             item.reserved2 == 0,
         "an item of a list is not as the header says");
  Expect((item.propertyCount != 0) == (item.properties != nullptr), "properties without a count");
  TakeText(item.name);
  TakeText(item.description);
  constexpr std::u16string_view kEnd(u"\0", 1);
  for (uint64_t i = 0; i < item.propertyCount; ++i) {
    const AttachmentProperty& property = item.properties[i];
    Expect(std::u16string_view(property.name, 128).find(kEnd) != std::u16string_view::npos &&
               std::u16string_view(property.value, 128).find(kEnd) != std::u16string_view::npos,
           "a property without an end");
  }
  if (item.properties != nullptr) KernelFree(item.properties, TARN_HERE);
}

ExtractAttachmentContext Extraction(const char16_t* path, const AttachmentOptions& options,
                                    int32_t number) {
  ExtractAttachmentContext context = {};
  context.path = path;
  context.attachmentNumber = number;
  context.options = &options;
  return context;
}

}  // namespace

int32_t ListAttachments(const char16_t* path, int32_t message) {
  AttachmentOptions options = {};
  options.messageNumber = message;
  GetAttachmentInfoContext context = {};
  context.path = path;
  context.options = &options;
  const int32_t status = fltGetAttachmentInfo(&context);
  AttachmentInfoBlock* const block = context.block;
  Expect((status == StatusOk) == (block != nullptr), "a list without success, or none with it");
  if (block == nullptr) return status;

  Expect(block->itemSize == sizeof(AttachmentInfoItem) && block->reserved0 == 0 &&
             block->reserved1 == 0 && block->format >= FormatPst && block->format <= FormatEml &&
             (block->itemCount != 0) == (block->items != nullptr),
         "the head of a list is not as the header says");
  for (uint64_t i = 0; i < block->itemCount; ++i) TakeItem(block->items[i], i + 1);
  if (block->items != nullptr) KernelFree(block->items, TARN_HERE);
  KernelFree(block, TARN_HERE);
  return status;
}

// Every freed block that may be an array of items is read as one: a false hit has no pointer to a
// block of the call, or only to one that an item could own as well.
struct FailingListCheck::State {
  State() : watch([this](const void* block, uint64_t bytes) { note(block, bytes); }) {}

  void note(const void* block, uint64_t bytes) {
    if (bytes == 0 || bytes % sizeof(AttachmentInfoItem) != 0) return;
    for (uint64_t at = 0; at < bytes; at += sizeof(AttachmentInfoItem)) {
      AttachmentInfoItem item;
      std::memcpy(&item, static_cast<const char*>(block) + at, sizeof item);
      for (const void* owned :
           {static_cast<const void*>(item.name), static_cast<const void*>(item.description),
            static_cast<const void*>(item.properties)}) {
        if (owned != nullptr) owners.insert(owned);
      }
    }
  }

  std::unordered_set<const void*> owners;
  BlockWatch watch;
};

FailingListCheck::FailingListCheck() : state_(std::make_unique<State>()) {}

FailingListCheck::~FailingListCheck() = default;

uint64_t FailingListCheck::peakBytes() const { return state_->watch.peakBytes(); }

void FailingListCheck::freeWhatItemsOwn() const {
  for (const LedgerBlock& left : state_->watch.left()) {
    Expect(state_->owners.contains(left.block), "a failing list left what no item owns");
    KernelFree(left.block, TARN_HERE);
  }
}

Extracted ExtractToMemory(const char16_t* path, int32_t message, int32_t number) {
  AttachmentOptions options = {};
  options.messageNumber = message;
  ExtractAttachmentContext context = Extraction(path, options, number);
  Extracted result;
  result.status = fltExtractAttachment(&context);
  result.hasBytes = context.data != nullptr;
  Expect(result.hasBytes || context.size == 0, "a size without bytes");
  if (!result.hasBytes) return result;
  ReadAll(context.data, context.size);
  result.bytes.assign(static_cast<const char*>(context.data), context.size);
  KernelFree(context.data, TARN_HERE);
  return result;
}

Extracted ExtractToFile(const Workplace& place, const char16_t* output, int32_t message,
                        int32_t number) {
  AttachmentOptions options = {};
  options.messageNumber = message;
  ExtractAttachmentContext context = Extraction(place.file(), options, number);
  context.outputPath = output;
  Extracted result;
  result.status = fltExtractAttachment(&context);
  Expect(context.data == nullptr && context.size == 0, "bytes in memory beside those in a file");
  result.bytes = place.takeOutput();
  result.hasBytes = !result.bytes.empty();
  return result;
}

}  // namespace tarn::fuzz
