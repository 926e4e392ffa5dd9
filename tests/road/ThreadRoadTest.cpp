// Many calls at once: every thread gets the route and the document that it would get alone, however
// long the siblings of others take.
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <chrono>
#include <thread>

#include "Internal/Tarnclasses_.h"
#include "MsgSamples.h"
#include "PstSamples.h"
#include "TarnPst.h"
#include "Tarnbase/PlainKernel.h"
#include "support/FakeHost.h"
#include "support/TempDirectory.h"

namespace tarn::test {
namespace {

constexpr int kThreads = 8;

struct Sample {
  const char* name;
  std::string bytes;
  int32_t message = 1;
  int32_t textOnly = 0;
  bool isHtml = false;
};

std::string RtfStore() {
  StoreBuilder store(PstLayout::Unicode);
  MessageBuilder& message = store.folder("Inbox").count(1).message();
  // Labels and a value that ask for fonts and code pages.
  message.subject(u"\u4F1A\u8B70 \u041F\u0440\u0438\u0432\u0435\u0442 \uC548\uB155").from(u"Ann");
  message.rtf(PackRtf(kSampleRtf));
  return store.bytes();
}

std::vector<Sample> Samples() {
  MsgBuilder text = PlainMsg();
  MsgBuilder rtf = PlainMsg();
  rtf.binary(0x1009, PackRtf(kMsgRtf));
  return {
      {.name = "image.eml", .bytes = kImageMail, .isHtml = true},
      {.name = "plain.eml", .bytes = kPlainMail},
      {.name = "image.msg", .bytes = AttachedMsg().write(), .isHtml = true},
      {.name = "text.msg", .bytes = text.write()},
      {.name = "rtf.msg", .bytes = rtf.write()},
      {.name = "image.pst", .bytes = SampleStore(PstLayout::Unicode), .isHtml = true},
      {.name = "text.pst",
       .bytes = SampleStore(PstLayout::Ansi, PstEncoding::Cyclic),
       .message = 3,
       .textOnly = 1},
      {.name = "rtf.pst", .bytes = RtfStore()},
  };
}

// What the siblings of one thread were given; siblings get no value of the host's.
thread_local std::string* transcript = nullptr;

// Threads that are still to come into a sibling for the first time; none leaves before.
std::atomic<int> awaited{0};
thread_local bool hasArrived = true;

void Arrive() {
  if (hasArrived) return;
  hasArrived = true;
  --awaited;
}

int32_t Answer(const char* route, const std::string& document, void* info) {
  auto& answer = *static_cast<HostFileInfo*>(info);
  *transcript += route;
  *transcript += " for " + std::to_string(answer.format) + " in mode " +
                 std::to_string(KernelIoModeGet()) + ": " + document + "\n";
  Arrive();
  while (awaited > 0) std::this_thread::yield();
  std::this_thread::sleep_for(std::chrono::milliseconds(1));
  answer.pageCount = 1;
  answer.xResolution = 96;
  answer.yResolution = 96;
  return StatusOk;
}

std::string ContentOf(const char16_t* path) {
  char bytes[20000];
  const uint64_t handle = KernelFileOpen(path, KERNEL_OPEN_READ, KERNEL_OPEN_MODE);
  if (handle == KERNEL_BAD_HANDLE) return "(cannot be opened)";
  const uint32_t count = KernelFileRead(handle, bytes, sizeof bytes);
  KernelFileClose(handle);
  return {bytes, count};
}

std::string Bytes(const void* data, uint64_t size) {
  return {static_cast<const char*>(data), static_cast<size_t>(size)};
}

int32_t InfoByName(const char16_t* path, void* info, int32_t, int32_t, void*) {
  return Answer("info by name", ContentOf(path), info);
}
int32_t InfoFromMemory(const void* data, void* info, int32_t, uint64_t size, int32_t, void*) {
  return Answer("info from memory", Bytes(data, size), info);
}
int32_t LoadByName(const char16_t* path, void*, int32_t, int32_t, int32_t, int32_t, void*, uint64_t,
                   void*, void* info) {
  return Answer("load by name", ContentOf(path), info);
}
int32_t LoadFromMemory(const void* data, void*, int32_t, int32_t, int32_t, int32_t, void*, uint64_t,
                       uint64_t size, void*, void* info) {
  return Answer("load from memory", Bytes(data, size), info);
}

// A host with one open file and a slot for it, as far as these calls need one.
class Host {
 public:
  Host(const Sample& sample, const std::u16string& path) : sample_(sample), path_(path) {
    slot_.defaultFormat = 1;
  }

  // Everything that the filter answers, in words.
  std::string run() {
    std::string text;
    transcript = &text;
    const auto note = [&text](const char* call, int32_t status) {
      text += std::string(call) + " " + std::to_string(status) + ", mode " +
              std::to_string(KernelIoModeGet()) + "\n";
    };
    note("fltInfo", info());
    note("fltLoad", load(&slot_));
    note("fltLoad anew", load(nullptr));
    note("fltFreeData", fltFreeData(slot_.data, 0));
    note("fltGetAttachmentInfo", list(text));
    note("fltExtractAttachment", extract(text));
    transcript = nullptr;
    return text;
  }

 private:
  int32_t info() {
    HostFileInfo answer = {};
    FilterInfoContext context = {};
    context.path = path_.c_str();
    context.handle = KernelFileOpen(path_.c_str(), KERNEL_OPEN_READ, KERNEL_OPEN_MODE);
    context.info = &answer;
    context.slot = &slot_;
    context.infoByName = InfoByName;
    context.infoFromMemory = InfoFromMemory;
    context.messageNumber = sample_.message;
    context.textOnly = sample_.textOnly;
    const int32_t status = fltInfo(&context);
    KernelFileClose(context.handle);
    return status;
  }

  int32_t load(FilterDataSlot* slot) {
    FilterLoadContext context = {};
    context.path = path_.c_str();
    context.slot = slot;
    context.status = 1;
    context.loadByName = LoadByName;
    context.loadFromMemory = LoadFromMemory;
    context.messageNumber = sample_.message;
    context.textOnly = sample_.textOnly;
    return fltLoad(&context);
  }

  int32_t list(std::string& text) {
    AttachmentOptions options = {};
    options.messageNumber = sample_.message;
    GetAttachmentInfoContext context = {};
    context.path = path_.c_str();
    context.options = &options;
    const int32_t status = fltGetAttachmentInfo(&context);
    if (status != StatusOk) return status;
    for (uint64_t i = 0; i < context.block->itemCount; ++i) {
      const AttachmentInfoItem& item = context.block->items[i];
      const std::u16string name = item.name == nullptr ? u"-" : item.name;
      text += std::string(name.begin(), name.end()) + " " + std::to_string(item.size) + "\n";
    }
    FreeAttachmentBlock(context.block);
    return status;
  }

  int32_t extract(std::string& text) {
    AttachmentOptions options = {};
    options.messageNumber = sample_.message;
    ExtractAttachmentContext context = {};
    context.path = path_.c_str();
    context.attachmentNumber = 1;
    context.options = &options;
    const int32_t status = fltExtractAttachment(&context);
    if (context.data != nullptr) {
      text += Bytes(context.data, context.size) + "\n";
      KernelFree(context.data, TARN_HERE);
    }
    return status;
  }

  const Sample& sample_;
  std::u16string path_;
  FilterDataSlot slot_ = {};
};

size_t CountOf(const std::string& part, const std::string& text) {
  size_t count = 0;
  for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

class ThreadRoad : public ::testing::TestWithParam<int32_t> {
 protected:
  ThreadRoad() {
    for (const Sample& sample : samples_) {
      paths_.push_back(files_.write(sample.name, sample.bytes).u16string());
    }
    PlainKernelSetTempDirectory(temp_.wide().c_str());
    PlainKernelSetIoMode(GetParam());
  }
  ~ThreadRoad() override { PlainKernelSetTempDirectory(nullptr); }

  std::string runAlone(size_t number) const { return Host(samples_[number], paths_[number]).run(); }

  // One thread's part: all samples, beginning with another one in each thread.
  void runAll(size_t first, std::array<std::string, 8>& results) const {
    hasArrived = false;
    for (size_t i = 0; i < samples_.size(); ++i) {
      const size_t number = (first + i) % samples_.size();
      results[number] = runAlone(number);
    }
    Arrive();  // one that met no sibling keeps nobody waiting
  }

  const std::vector<Sample> samples_ = Samples();
  std::vector<std::u16string> paths_;
  TempDirectory files_;
  TempDirectory temp_;
};

TEST_P(ThreadRoad, GivesEveryThreadItsOwnRouteAndDocument) {
  ASSERT_EQ(samples_.size(), 8U);
  std::array<std::string, 8> alone;
  const bool byFile = GetParam() != KERNEL_IO_IN_MEMORY;
  for (size_t i = 0; i < samples_.size(); ++i) {
    alone[i] = runAlone(i);
    const std::string mode = std::to_string(GetParam());
    const bool byName = byFile && samples_[i].isHtml;
    EXPECT_EQ(CountOf(" by name for 369 in mode 3: ", alone[i]), byName ? 3U : 0U) << alone[i];
    EXPECT_EQ(CountOf(" from memory for ", alone[i]), byName ? 0U : 3U) << alone[i];
    EXPECT_EQ(CountOf(" 1, mode " + mode + "\n", alone[i]), 6U) << alone[i];
  }

  std::array<std::array<std::string, 8>, kThreads> results;
  std::vector<std::thread> threads;
  awaited = kThreads;
  for (size_t i = 0; i < kThreads; ++i) {
    threads.emplace_back([this, i, &results] { runAll(i, results[i]); });
  }
  for (std::thread& thread : threads) thread.join();

  for (const auto& ofThread : results) {
    for (size_t i = 0; i < samples_.size(); ++i) {
      EXPECT_EQ(ofThread[i], alone[i]) << samples_[i].name;
    }
  }
  EXPECT_EQ(KernelIoModeGet(), GetParam());
  EXPECT_EQ(temp_.listing(), "");
}

INSTANTIATE_TEST_SUITE_P(Modes, ThreadRoad, ::testing::Values(0, KERNEL_IO_IN_MEMORY),
                         [](const auto& mode) {
                           return mode.param == KERNEL_IO_IN_MEMORY ? "InMemory" : "TempFiles";
                         });

}  // namespace
}  // namespace tarn::test
