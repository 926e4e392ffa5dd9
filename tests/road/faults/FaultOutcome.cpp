#include "faults/FaultOutcome.h"

#include <algorithm>
#include <cstddef>
#include <exception>
#include <filesystem>
#include <map>

#include "Internal/Tarnclasses_.h"
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

int32_t Call(FakeHost& host, const FaultInput& input) {
  switch (input.call) {
    case FaultCall::Info:
      return host.info();
    case FaultCall::Load:
      return host.load(false);
    case FaultCall::InfoThenLoad: {
      const int32_t asked = host.info();
      return asked == StatusOk ? host.load() : asked;
    }
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
  static char kept[] = "what the sibling wants kept";
  host.calls.clear();
  host.answer.data = input.call == FaultCall::InfoThenLoad ? kept : nullptr;
  host.answer.size = sizeof kept;
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
    outcome.document += call.document;
    outcome.siblingRecords += BytesOf(call.info) + BytesOf(call.options);
  }
}

void TakeAnswers(FakeHost& host, const FaultInput& input, FaultOutcome& outcome) {
  if (input.call == FaultCall::Info && outcome.status == StatusOk) {
    outcome.hostInfo = BytesOf(*host.hostInfo.get());
    outcome.hostInfo.replace(kCountOffset, 4, 4, '\0');
    outcome.attachmentCount = Copy(host.hostInfo->attachmentCount);
    outcome.message = Copy(host.infoContext->messageNumber);
  }
  if (input.call == FaultCall::Load) outcome.loadStatus = Copy(host.loadContext->status);
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
  PlainKernelUsageRecord after = {};
  PlainKernelUsage(&after);
  std::string left;
  const auto note = [&left](const char* what, uint64_t was, uint64_t is) {
    if (was != is) left += what + std::string(" ") + std::to_string(is - was) + " ";
  };
  note("blocks", before.liveBlocks, after.liveBlocks);
  note("objects", before.liveTrackedObjects, after.liveTrackedObjects);
  note("handles", before.openHandles, after.openHandles);
  note("reported", before.reportedBytes, after.reportedBytes);
  note("temporary", before.temporaryFiles, after.temporaryFiles);
  if (after.liveBlocks > before.liveBlocks) AllowBlocksLeft(after.liveBlocks - before.liveBlocks);
  return left;
}

}  // namespace

std::string Differences(const FaultOutcome& a, const FaultOutcome& b) {
  std::string names = " ";
  const auto note = [&names](const char* name, bool differs) {
    if (differs) names += name + std::string(" ");
  };
  note("status", a.status != b.status);
  note("siblings", a.siblings != b.siblings);
  note("format", a.siblingFormat != b.siblingFormat);
  note("document", a.document != b.document);
  note("images", a.images != b.images);
  note("records", a.siblingRecords != b.siblingRecords);
  note("hostInfo", a.hostInfo != b.hostInfo);
  note("attachmentCount", a.attachmentCount != b.attachmentCount);
  note("message", a.message != b.message);
  note("loadStatus", a.loadStatus != b.loadStatus);
  note("list", a.list != b.list || a.hasList != b.hasList);
  note("extracted", a.extracted != b.extracted || a.hasExtracted != b.hasExtracted);
  note("left", a.left != b.left);
  return names;
}

FaultOutcome Perform(FakeHost& host, const FaultInput& input) {
  Ask(host, input);
  FaultOutcome outcome;
  host.answer.action = [&host, &outcome] {
    const SiblingCall& call = host.calls.back();
    if (!call.path.empty()) outcome.images += ImagesBeside(call.path);
  };
  PlainKernelUsageRecord before = {};
  PlainKernelUsage(&before);
  try {
    outcome.status = Call(host, input);
  } catch (const std::exception&) {
    outcome.status = kThrown;
  }
  host.answer.action = nullptr;
  TakeSiblings(host, outcome);
  TakeAnswers(host, input, outcome);
  host.clearSlot();
  outcome.left = TakeLeftFiles(host);
  outcome.left += LeftInKernel(before);
  return outcome;
}

}  // namespace tarn::test
