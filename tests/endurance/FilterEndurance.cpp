// FilterEndurance COUNT: so many mails, MSG files and stores, no two the same, through the filter
// in this one process: each with every call that a host can make. What the process holds after a
// tenth of them is what it holds at the end: blocks, objects, handles and temporary files of the
// kernel, files of the system, memory of the heap and of the process. Prints both, and ends with 1
// where something has grown.

#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "support/EmlBuilder.h"
#include "support/KernelUsage.h"
#include "support/RtfCompressor.h"
#include "support/msg/MsgBuilder.h"
#include "support/pst/StoreBuilder.h"
#include "support/road/AllCalls.h"

namespace {

using namespace tarn::test;
namespace fs = std::filesystem;

// The heap has half a megabyte more at one time than at another: sizes of mails come and go.
constexpr long kMostGrowthOfHeap = 1L << 20;
constexpr long kMostGrowthOfProcess = 8L << 20;

std::string Html(unsigned number) {
  return "<html><body><p>Mail " + std::to_string(number) + std::string(number % 5000, 'x') +
         "</p><img src=\"cid:i" + std::to_string(number) + "@x\"></body></html>";
}

std::u16string Wide(unsigned number) {
  const std::string digits = std::to_string(number);
  return {digits.begin(), digits.end()};
}

std::string Mail(unsigned number) {
  const std::string name = std::to_string(number);
  EmlBuilder mail = EmlBuilder::Usual();
  mail.field("Subject", "=?iso-2022-jp?B?GyRCMnE1RBsoQg==?= " + name);
  mail.body(EmlEntity::Multipart("related", "b" + name)
                .part(EmlEntity::Leaf("text/html; charset=iso-8859-1", Html(number)))
                .part(EmlEntity::Leaf("image/png; name=" + name + ".png", "\x89PNG" + name)
                          .contentId("i" + name + "@x")
                          .encoded(EmlEncoding::Base64))
                .part(EmlEntity::Leaf("application/pdf", "%PDF" + name)
                          .encoded(EmlEncoding::Base64)
                          .disposition("attachment; filename=" + name + ".pdf")));
  return mail.build();
}

std::string RichMsg(unsigned number) {
  MsgBuilder msg;
  msg.text(0x0037, u"\u4F1A\u8B70 " + Wide(number)).text(0x0C1A, u"Ann").text(0x0E04, u"Bob");
  msg.binary(0x1009, PackRtf("{\\rtf1\\ansi{\\fonttbl{\\f0 Arial;}{\\f1\\fcharset204 Times New "
                             "Roman;}}\\pard\\f0 Mail " +
                             std::to_string(number) + "\\par}"));
  MsgAttachment& attached = msg.attachment().text(0x3707, Wide(number) + u".msg");
  attached.embedded().text(0x0037, u"Inner").binary(0x1013, Html(number));
  return msg.write();
}

std::string Store(unsigned number) {
  StoreOptions options = StoreOptions::Smallest(
      number % 2 == 0 ? PstLayout::Unicode : PstLayout::Ansi, PstEncoding::Permute);
  StoreBuilder store(options);
  FolderBuilder& folder = store.folder("Folder " + std::to_string(number));
  folder.message().subject(u"Before").body(u"Text");
  MessageBuilder& message = folder.message().subject(u"Mail " + Wide(number));
  message.html(Html(number)).attachment(Wide(number) + u".txt", "content");
  message.attach().longName(u"i.png").data("\x89PNG").contentId(u"i" + Wide(number) + u"@x");
  return store.bytes();
}

struct Held {
  PlainKernelUsageRecord kernel = {};
  long files = 0;
  long heap = 0;
  long process = 0;
};

Held WhatIsHeld() {
  Held held;
  held.kernel = Usage();
  held.files = std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
  const struct mallinfo2 heap = mallinfo2();
  held.heap = static_cast<long>(heap.uordblks + heap.hblkhd);
  long pages = 0;
  std::ifstream("/proc/self/statm").ignore(64, ' ') >> pages;
  held.process = pages * sysconf(_SC_PAGESIZE);
  return held;
}

void Show(unsigned mails, const Held& held) {
  std::printf(
      "after %u: %llu blocks, %llu objects, %llu handles, %ld files, heap %ld KB, process %ld KB\n",
      mails, static_cast<unsigned long long>(held.kernel.liveBlocks),
      static_cast<unsigned long long>(held.kernel.liveTrackedObjects),
      static_cast<unsigned long long>(held.kernel.openHandles), held.files, held.heap / 1024,
      held.process / 1024);
}

// Runs mails through the filter. Its folders, beside which nothing is made, are gone with it.
class Endurance {
 public:
  Endurance() {
    std::string name = (fs::temp_directory_path() / "FilterEndurance-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder");
    work_ = name;
    options_.tempFolder = work_ / "temp";
    options_.outFolder = work_ / "out";
    fs::create_directory(options_.tempFolder);
    fs::create_directory(options_.outFolder);
    PlainKernelSetTempDirectory(options_.tempFolder.u16string().c_str());
  }
  Endurance(const Endurance&) = delete;
  Endurance& operator=(const Endurance&) = delete;
  ~Endurance() {
    std::error_code ignored;
    fs::remove_all(work_, ignored);
  }

  void mail(unsigned number) {
    const fs::path path = work_ / "mail";
    const std::string bytes = number % 16 == 7    ? RichMsg(number)
                              : number % 16 == 15 ? Store(number)
                                                  : Mail(number);
    std::ofstream(path, std::ios::binary)
        .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    PlainKernelSetIoMode(number % 3 == 0 ? 3 : 0);
    PlainKernelSetLanguage(number % 5 == 0 ? 0x0411 : 0x0409);
    options_.message = number % 16 == 15 ? 2 : 1;
    options_.textOnly = number % 7 == 0;
    MakeAllCalls(path, options_, [this](const Answer& answer) {
      ++answers_;
      if (answer.outcome == "1") ++done_;
    });
  }

  // Nothing but folders that are empty, and most of the calls answered.
  bool isSound() const {
    std::printf("%llu of %llu calls done\n", done_, answers_);
    return fs::is_empty(options_.tempFolder) && 2 * done_ > answers_;
  }

 private:
  fs::path work_;
  AllCallsOptions options_;
  unsigned long long answers_ = 0;
  unsigned long long done_ = 0;
};

bool HasGrown(const Held& before, const Held& after) {
  const std::string left = LeftBetween(before.kernel, after.kernel);
  if (!left.empty()) std::printf("the kernel holds more: %s\n", left.c_str());
  const bool hasMore = !left.empty() || after.files != before.files ||
                       after.heap - before.heap > kMostGrowthOfHeap ||
                       after.process - before.process > kMostGrowthOfProcess;
  if (hasMore) std::printf("something has grown\n");
  return hasMore;
}

bool Run(unsigned count) {
  Endurance endurance;
  const unsigned early = std::max(count / 10, 1u);
  Held before;
  for (unsigned number = 0; number < count; ++number) {
    if (number % early == 0 && number != 0) Show(number, WhatIsHeld());
    if (number == early) before = WhatIsHeld();
    endurance.mail(number);
  }
  const Held after = WhatIsHeld();
  Show(count, after);
  return endurance.isSound() && !HasGrown(before, after);
}

}  // namespace

int main(int count, char** words) {
  if (count != 2) {
    std::fputs("usage: FilterEndurance COUNT\n", stderr);
    return 2;
  }
  try {
    return Run(static_cast<unsigned>(std::strtoul(words[1], nullptr, 10))) ? 0 : 1;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "FilterEndurance: %s\n", error.what());
    return 1;
  }
}
