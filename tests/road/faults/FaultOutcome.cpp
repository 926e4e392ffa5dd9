#include "faults/FaultOutcome.h"

#include <algorithm>
#include <cstddef>
#include <exception>
#include <filesystem>
#include <map>
#include <new>

#include "Internal/Tarnclasses_.h"
#include "support/KernelUsage.h"
#include "support/LeakCheck.h"

namespace tarn::test {
namespace {

constexpr size_t kCountOffset = offsetof(HostFileInfo, attachmentCount);

std::filesystem::path NativePath(std::u16string path) {
  std::replace(path.begin(), path.end(), u'\\', u'/');
  return path;
}

// Files that lie beside a document, but for itself and the mail.
std::string ImagesBeside(const std::u16string& documentPath) {
  std::map<std::string, std::string> files;
  const std::filesystem::path document = NativePath(documentPath);
  for (const auto& entry : std::filesystem::directory_iterator(document.parent_path())) {
    const std::string name = entry.path().filename().string();
    if (entry.path().filename() == document.filename() || name == "mail") continue;
    files[name] = entry.is_regular_file() ? ReadWholeFile(entry.path()) : "a directory";
  }
  std::string text;
  for (const auto& [name, bytes] : files) text += name + ":" + bytes + ";";
  return text;
}

std::string Narrow(const char16_t* text) {
  if (text == nullptr) return "(null)";
  const std::u8string utf8 = std::filesystem::path(text).u8string();
  return {utf8.begin(), utf8.end()};
}

std::string ListText(const AttachmentInfoBlock& block) {
  std::string text = std::to_string(Copy(block.format)) + "\n";
  for (uint64_t i = 0; i < block.itemCount; ++i) {
    const AttachmentInfoItem& item = block.items[i];
    const std::string times =
        std::to_string(Copy(item.creationTime)) + "|" + std::to_string(Copy(item.modificationTime));
    text += std::to_string(Copy(item.number)) + "|" + Narrow(item.name) + "|" +
            Narrow(item.description) + "|" + std::to_string(Copy(item.size)) + "|" + times + "|";
    for (uint64_t k = 0; k < item.propertyCount; ++k) {
      text += Narrow(item.properties[k].name) + "=" + Narrow(item.properties[k].value) + "|";
    }
    text += "\n";
  }
  return text;
}

template <typename Record>
std::string BytesOf(const Record& record) {
  return {reinterpret_cast<const char*>(&record), sizeof record};
}

// Whether the row's call is fltInfo, alone or again: what the host gets is its answer.
bool IsInfo(const FaultInput& input) {
  return input.call == FaultCall::Info || input.call == FaultCall::InfoAgain;
}
bool IsLoad(const FaultInput& input) {
  return input.call == FaultCall::Load || input.call == FaultCall::LoadAgain;
}

bool UsesSlot(const FaultInput& input) { return input.slot != FaultSlot::None; }

// Data that is in a slot, or that a sibling wants to be there. It does not begin like a record.
char otherItem[] = "another filter's item";
char keptBefore[] = "what a sibling had kept";
char keptNow[] = "what the sibling wants kept";

const char* NameOfItem(const void* item) {
  if (item == nullptr) return "nothing";
  if (item == otherItem) return "other";
  if (item == keptBefore) return "before";
  if (item == keptNow) return "now";
  return "record";
}

FilterDataList* ListIn(const FilterDataSlot& slot) {
  if (slot.dataFormat != FILTER_DATA_LIST_FORMAT) return nullptr;
  return static_cast<FilterDataList*>(Copy(slot.data));
}

// The items with their sizes and formats.
std::string SlotText(const FilterDataSlot& slot) {
  const auto item = [](const void* data, uint64_t size, int32_t format) {
    return NameOfItem(data) + std::string(" ") + std::to_string(size) + " " +
           std::to_string(format) + "; ";
  };
  const FilterDataList* const list = ListIn(slot);
  if (list == nullptr) return item(Copy(slot.data), Copy(slot.dataSize), Copy(slot.dataFormat));
  std::string text = "list: ";
  const FilterDataEntry* const entries = list->entries;
  for (int32_t i = 0; i < list->count; ++i) {
    text += item(Copy(entries[i].data), Copy(entries[i].size), Copy(entries[i].format));
  }
  return text;
}

void FillSlot(FilterDataSlot& slot, FaultSlot what) {
  if (what == FaultSlot::None || what == FaultSlot::Empty) return;
  slot.data = otherItem;
  slot.dataSize = sizeof otherItem;
  slot.dataFormat = 12;
  if (what == FaultSlot::OtherItem) return;

  constexpr uint64_t kBytes = sizeof(FilterDataList) + sizeof(FilterDataEntry);
  auto* const list = static_cast<FilterDataList*>(KernelAllocZero(kBytes, 1, TARN_HERE));
  list->signature = FILTER_DATA_LIST_SIGNATURE;
  list->count = 2;
  list->size = kBytes;
  FilterDataEntry* const entries = list->entries;
  if (what == FaultSlot::OtherList) entries[0] = {otherItem, sizeof otherItem, 12, 0};
  entries[1] = {keptBefore, sizeof keptBefore, 13, 0};
  slot.data = list;
  slot.dataSize = 0;
  slot.dataFormat = FILTER_DATA_LIST_FORMAT;
}

// Frees the record in the slot through the filter, and takes it out of the slot.
int32_t FreeRecord(FilterDataSlot& slot) {
  FilterDataList* const list = ListIn(slot);
  void* const record = list != nullptr ? Copy(list->entries[0].data) : Copy(slot.data);
  if (list != nullptr) {
    list->entries[0].data = nullptr;
  } else {
    slot.data = nullptr;
  }
  return fltFreeData(record, 0);
}

// The calls before the faults.
void PrepareCall(FakeHost& host, const FaultInput& input) {
  if (input.call != FaultCall::InfoAgain && input.call != FaultCall::LoadAgain &&
      input.call != FaultCall::Free) {
    return;
  }
  EXPECT_EQ(host.info(UsesSlot(input)), StatusOk);
  host.calls.clear();
  host.infoContext->messageNumber = input.message;
  host.infoContext->raster.xResolution = 42;
}

int32_t Call(FakeHost& host, const FaultInput& input) {
  switch (input.call) {
    case FaultCall::Info:
    case FaultCall::InfoAgain:
      return host.info(UsesSlot(input));
    case FaultCall::Load:
    case FaultCall::LoadAgain:
      return host.load(UsesSlot(input));
    case FaultCall::InfoThenLoad: {
      const int32_t asked = host.info(UsesSlot(input));
      return asked == StatusOk ? host.load(UsesSlot(input)) : asked;
    }
    case FaultCall::Free:
      return FreeRecord(host.slot);
    case FaultCall::List:
      return host.attachmentInfo();
    case FaultCall::ExtractToMemory:
      return host.extract(input.attachment);
    case FaultCall::ExtractToFile:
      return host.extract(input.attachment, (host.directory().wide() + u"/out").c_str());
  }
  return 0;
}

// The host asks as if for the first time.
void Ask(FakeHost& host, const FaultInput& input) {
  host.calls.clear();
  host.answer.data = input.keeps ? keptNow : nullptr;
  host.answer.size = sizeof keptNow;
  host.infoContext->raster.xResolution = 0;
  host.hostInfo = PatternedRecord<HostFileInfo>();
  host.hostInfo->width = 0;
  host.hostInfo->height = 0;
  host.hostInfo->flags = 0xFFFFFFFFu;
  host.infoContext->info = host.hostInfo.get();
  host.loadContext->info = host.hostInfo.get();
  if (input.format == FaultFormat::Pst) {
    host.moreInfoOut = {{offsetof(HostFileInfo, messageCount), 4}};
  }
  host.infoContext->messageNumber = input.message;
  host.loadContext->messageNumber = input.message;
  host.attachmentOptions->messageNumber = input.message;
  host.infoContext->textOnly = input.textOnly ? 1 : 0;
  host.loadContext->textOnly = input.textOnly ? 1 : 0;
  host.loadContext->status = 1;
  host.listContext->block = nullptr;
  host.extractContext->data = nullptr;
  host.extractContext->size = 0;
  std::filesystem::remove(host.directory().path() / "out");
}

void TakeSiblings(const FakeHost& host, FaultOutcome& outcome) {
  outcome.siblings = static_cast<int32_t>(host.calls.size());
  for (const SiblingCall& call : host.calls) {
    outcome.siblingFormat = call.info.format;
    if (&call == &host.calls.front()) outcome.document = call.document;
    if (call.document != outcome.document) outcome.otherDocument = call.document;
    outcome.siblingRecords += BytesOf(call.info) + BytesOf(call.options);
  }
}

void TakeAnswers(FakeHost& host, const FaultInput& input, FaultOutcome& outcome) {
  if (IsInfo(input) && outcome.status == StatusOk) {
    outcome.hostInfo = BytesOf(*host.hostInfo.get());
    outcome.hostInfo.replace(kCountOffset, 4, 4, '\0');
    outcome.attachmentCount = Copy(host.hostInfo->attachmentCount);
    outcome.message = Copy(host.infoContext->messageNumber);
  }
  if (IsLoad(input)) outcome.loadStatus = Copy(host.loadContext->status);
  if (AttachmentInfoBlock* const block = host.listContext->block) {
    outcome.hasList = true;
    outcome.list = ListText(*block);
    FreeAttachmentBlock(block);
  }
  if (host.extractContext->data != nullptr) {
    outcome.hasExtracted = true;
    outcome.extracted.assign(static_cast<const char*>(host.extractContext->data),
                             Copy(host.extractContext->size));
    KernelFree(host.extractContext->data, TARN_HERE);
  }
  const std::filesystem::path out = host.directory().path() / "out";
  if (outcome.status == StatusOk && std::filesystem::exists(out)) {
    outcome.extracted = ReadWholeFile(out);
  }
  std::filesystem::remove(out);
}

// Deletes what the filter has left in the temporary directory; its names without the random part.
std::string TakeLeftFiles(const FakeHost& host) {
  std::string left;
  const std::filesystem::path root = host.directory().path();
  std::vector<std::filesystem::path> directories;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
    if (entry.path() == root / "mail") continue;
    if (entry.is_directory()) {
      directories.push_back(entry.path());
    } else {
      left += "file " + entry.path().filename().string() + " ";
      KernelDeleteFile(entry.path().u16string().c_str());
    }
  }
  for (const std::filesystem::path& directory : directories) {
    left += "directory ";
    std::filesystem::remove_all(directory);
  }
  return left;
}

std::string LeftInKernel(const PlainKernelUsageRecord& before) {
  const PlainKernelUsageRecord after = Usage();
  if (after.liveBlocks > before.liveBlocks) AllowBlocksLeft(after.liveBlocks - before.liveBlocks);
  return LeftBetween(before, after);
}

}  // namespace

std::string Differences(const FaultOutcome& a, const FaultOutcome& b) {
  std::string names = " ";
  const auto note = [&names](const char* name, bool differs) {
    if (differs) names += name + std::string(" ");
  };
  note("status", a.status != b.status || a.thrown != b.thrown);
  note("siblings", a.siblings != b.siblings);
  note("format", a.siblingFormat != b.siblingFormat);
  note("document", a.document != b.document);
  note("otherDocument", a.otherDocument != b.otherDocument);
  note("images", a.images != b.images);
  note("records", a.siblingRecords != b.siblingRecords);
  note("hostInfo", a.hostInfo != b.hostInfo);
  note("attachmentCount", a.attachmentCount != b.attachmentCount);
  note("message", a.message != b.message);
  note("loadStatus", a.loadStatus != b.loadStatus);
  note("list", a.list != b.list || a.hasList != b.hasList);
  note("extracted", a.extracted != b.extracted || a.hasExtracted != b.hasExtracted);
  note("slot", a.slot != b.slot || a.slotBefore != b.slotBefore);
  note("left", a.left != b.left);
  return names;
}

FaultOutcome Perform(FakeHost& host, const FaultInput& input,
                     const std::function<void()>& setFault) {
  PlainKernelUsageRecord before = {};
  PlainKernelUsage(&before);
  const int32_t mode = KernelIoModeGet();
  Ask(host, input);
  FillSlot(host.slot, input.slot);
  PrepareCall(host, input);
  FaultOutcome outcome;
  outcome.slotBefore = SlotText(host.slot);
  host.answer.action = [&host, &outcome] {
    const SiblingCall& call = host.calls.back();
    if (!call.path.empty()) outcome.images += ImagesBeside(call.path);
  };
  setFault();
  try {
    outcome.status = Call(host, input);
  } catch (const std::exception& caught) {
    outcome.status = kThrown;
    outcome.thrown = caught.what();
    outcome.isBadAlloc = dynamic_cast<const std::bad_alloc*>(&caught) != nullptr;
  }
  host.answer.action = nullptr;
  TakeSiblings(host, outcome);
  TakeAnswers(host, input, outcome);
  outcome.slot = SlotText(host.slot);
  host.clearSlot();
  outcome.left = TakeLeftFiles(host);
  outcome.left += LeftInKernel(before);
  if (KernelIoModeGet() != mode) outcome.left += "I/O mode ";
  return outcome;
}

}  // namespace tarn::test
