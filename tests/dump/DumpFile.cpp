#include "DumpFile.h"

#include <algorithm>
#include <iterator>

#include "Tarnbase/PlainKernel.h"
#include "support/KernelUsage.h"
#include "support/road/AllCalls.h"

namespace tarn::test {
namespace {

struct Language {
  uint32_t id;
  const char* name;
};

constexpr Language kLanguages[] = {{0x0409, "en"},
                                   {0x0411, "ja"},
                                   {0x2C01, "ar"},  // from right to left
                                   {0x0407, "de"},
                                   {0x0418, "ro"}};

// A store that gives no document for any number may still have attachments.
constexpr int32_t kMessagesOfSilentStore = 3;

std::string UsageText(const PlainKernelUsageRecord& before, const PlainKernelUsageRecord& after) {
  return "allocations " + std::to_string(after.allocationCalls - before.allocationCalls) +
         " peak " + std::to_string(after.peakBytes);
}

// Removes what lies in the folder: how many files and folders, which have names by chance.
std::string TakeStrayFiles(const std::filesystem::path& folder) {
  int files = 0;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    std::filesystem::remove_all(entry.path());
    ++files;
  }
  return files == 0 ? "" : "files " + std::to_string(files) + " ";
}

// The last number to ask for: one beyond the last message of a store with several.
int32_t MessagesToAsk(const std::filesystem::path& file, int32_t most) {
  PlainKernelSetIoMode(KERNEL_IO_IN_MEMORY);
  const int32_t count = CountMessages(file, most);
  if (count == 0) return std::min(most, kMessagesOfSilentStore);
  return std::min(most, count == 1 ? 1 : count + 1);
}

}  // namespace

void DumpFile(const std::filesystem::path& file, const std::string& name,
              const DumpOptions& options, DumpLines& lines) {
  AllCallsOptions calls;
  calls.tempFolder = options.tempFolder;
  calls.outFolder = options.outFolder;
  PlainKernelSetTempDirectory(options.tempFolder.u16string().c_str());
  const int32_t messages = MessagesToAsk(file, options.messages);
  const auto languages =
      std::min<size_t>(static_cast<size_t>(options.languages), std::size(kLanguages));
  const auto dump = [&](int32_t mode, const Language& language) {
    PlainKernelSetIoMode(mode);
    PlainKernelSetLanguage(language.id);
    const std::string variant = std::to_string(calls.message) +
                                (mode == KERNEL_IO_IN_MEMORY ? " memory " : " files ") +
                                language.name + (calls.textOnly ? " text" : " rich");
    const PlainKernelUsageRecord before = Usage();
    MakeAllCalls(file, calls, [&](const Answer& answer) { lines.answer(name, variant, answer); });
    const PlainKernelUsageRecord after = Usage();
    lines.note("usage", name, variant, UsageText(before, after));
    const std::string left = LeftBetween(before, after) + TakeStrayFiles(options.tempFolder);
    if (!left.empty()) lines.note("left", name, variant, left);
  };
  for (calls.message = 1; calls.message <= messages; ++calls.message) {
    for (const int32_t mode : {0, KERNEL_IO_IN_MEMORY}) {
      for (size_t i = 0; i < languages; ++i) {
        for (const bool textOnly : {false, true}) {
          calls.textOnly = textOnly;
          calls.asksForAttachments = !textOnly;
          dump(mode, kLanguages[i]);
        }
      }
    }
  }
}

}  // namespace tarn::test
