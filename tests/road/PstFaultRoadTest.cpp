// Every call of the kernel that a road through a store makes fails once: each road ends in a
// documented status or in an exception of the store, and leaves nothing behind.

#include <gtest/gtest.h>

#include <cstddef>
#include <functional>
#include <map>
#include <set>

#include "Internal/Tarnclasses_.h"
#include "PstSamples.h"
#include "support/FakeHost.h"

namespace tarn::test {
namespace {

using Road = std::function<int32_t(FakeHost&)>;

constexpr int32_t kThrown = INT32_MIN;

// One message that uses all there is: header fields, HTML with an image, RTF behind it or not.
std::string FaultStore(bool hasRtf) {
  StoreBuilder store(StoreOptions::Smallest(PstLayout::Unicode, PstEncoding::Permute));
  FolderBuilder& folder = store.folder("A");
  folder.message().html("<p>first");
  MessageBuilder& message = folder.message();
  message.subject(u"Hi").from(u"Ann").to(u"Bob").importance(2).submitTime(kSampleFileTime);
  message.html("<img src=\"cid:pic.png\">").body(u"text").attachment(u"pic.png", kImageBytes);
  if (hasRtf) message.rtf(PackRtf(kSampleRtf));
  return store.bytes();
}

int32_t Run(FakeHost& host, const Road& road) {
  try {
    return road(host);
  } catch (const std::exception&) {
    return kThrown;
  }
}

// Runs the road with the first, second, ... call of the group failing, until all have; the
// statuses that came out.
std::set<int32_t> Sweep(const std::string& store, int32_t ioMode, const Road& road, int32_t group) {
  std::set<int32_t> statuses;
  constexpr uint64_t kMostCalls = 600;
  uint64_t inSequence = 0;
  for (uint64_t ordinal = 1; inSequence < 60; ++ordinal) {
    EXPECT_LT(ordinal, kMostCalls);
    if (ordinal >= kMostCalls) break;
    PlainKernelUsageRecord before = {};
    PlainKernelUsage(&before);
    int32_t status = 0;
    {
      PlainKernelSetIoMode(ioMode);
      FakeHost host(store);
      host.moreInfoOut.push_back({offsetof(HostFileInfo, messageCount), 4});
      host.infoContext->messageNumber = 2;
      host.loadContext->messageNumber = 2;
      host.attachmentOptions->messageNumber = 2;
      PlainKernelFailAt(group, ordinal);
      status = Run(host, road);
      PlainKernelFailAt(group, 0);
      host.clearSlot();
      EXPECT_EQ(host.directory().listing().find("pst"), std::string::npos);
    }
    PlainKernelUsageRecord after = {};
    PlainKernelUsage(&after);
    EXPECT_EQ(after.liveBlocks, before.liveBlocks) << "group " << group << " call " << ordinal;
    EXPECT_EQ(after.liveTrackedObjects, before.liveTrackedObjects) << group << " " << ordinal;
    EXPECT_EQ(after.openHandles, before.openHandles) << group << " " << ordinal;
    EXPECT_EQ(after.reportedBytes, before.reportedBytes) << group << " " << ordinal;
    EXPECT_EQ(after.temporaryFiles, before.temporaryFiles) << group << " " << ordinal;
    statuses.insert(status);
    inSequence = status == StatusOk ? inSequence + 1 : 0;
  }
  return statuses;
}

using Statuses = std::set<int32_t>;

void ExpectDocumentStatuses(const std::string& store, int32_t ioMode, const Road& road,
                            const Statuses& open, const Statuses& write) {
  // A message that breaks leaves its record empty, which is refused with -9.
  EXPECT_EQ(Sweep(store, ioMode, road, PlainKernelFaultMemory),
            (Statuses{StatusOk, StatusOutOfMemory, StatusNotSupported, kThrown}));
  EXPECT_EQ(Sweep(store, ioMode, road, PlainKernelFaultOpen), open);
  EXPECT_EQ(Sweep(store, ioMode, road, PlainKernelFaultRead),
            (Statuses{StatusOk, StatusReadFailed, StatusNotSupported, kThrown}));
  EXPECT_EQ(Sweep(store, ioMode, road, PlainKernelFaultSeek),
            (Statuses{StatusOk, StatusReadFailed, StatusSeekFailed, StatusNotSupported, kThrown}));
  EXPECT_EQ(Sweep(store, ioMode, road, PlainKernelFaultWrite), write);
  EXPECT_EQ(Sweep(store, ioMode, road, PlainKernelFaultBudget), (Statuses{StatusOk}));
}

TEST(PstFaultRoad, InfoOfHtmlAsAFile) {
  const Road road = [](FakeHost& host) { return host.info(); };
  const std::string store = FaultStore(false);
  ExpectDocumentStatuses(store, 0, road, {StatusOk, StatusCreateFailed, kThrown},
                         {StatusOk, StatusWriteFailed});
  // A path that does not convert fails the image; a header text is left out.
  EXPECT_EQ(Sweep(store, 0, road, PlainKernelFaultText),
            (Statuses{StatusOk, StatusPathToUtf8Failed, StatusPathFromUtf8Failed}));
}

TEST(PstFaultRoad, InfoOfHtmlInMemory) {
  const Road road = [](FakeHost& host) { return host.info(); };
  const std::string store = FaultStore(false);
  ExpectDocumentStatuses(store, 3, road, {StatusOk, kThrown}, {StatusOk});
  EXPECT_EQ(Sweep(store, 3, road, PlainKernelFaultText), (Statuses{StatusOk}));
}

TEST(PstFaultRoad, LoadOfRtf) {
  const Road road = [](FakeHost& host) { return host.load(false); };
  const std::string store = FaultStore(true);
  ExpectDocumentStatuses(store, 3, road, {StatusOk, StatusOpenFailed, kThrown}, {StatusOk});
}

TEST(PstFaultRoad, InfoOfText) {
  const std::string store = FaultStore(true);
  ExpectDocumentStatuses(store, 3,
                         [](FakeHost& host) {
                           host.infoContext->textOnly = 1;
                           return host.info();
                         },
                         {StatusOk, kThrown}, {StatusOk});
}

// A callback is called for an attachment or the list is shorter: breaks inside the list end it.
TEST(PstFaultRoad, ListOfAttachments) {
  const std::string store = FaultStore(false);
  const Road road = [](FakeHost& host) {
    host.listContext->block = nullptr;
    const int32_t status = host.attachmentInfo();
    if (status == StatusOk) {
      EXPECT_LE(Copy(host.listContext->block->itemCount), 1u);
    }
    FreeAttachmentBlock(host.listContext->block);
    return status;
  };
  EXPECT_EQ(Sweep(store, 0, road, PlainKernelFaultMemory),
            (Statuses{StatusOk, StatusOutOfMemory, kThrown}));
  EXPECT_EQ(Sweep(store, 0, road, PlainKernelFaultOpen),
            (Statuses{StatusOk, StatusOpenFailed, kThrown}));
  EXPECT_EQ(Sweep(store, 0, road, PlainKernelFaultRead),
            (Statuses{StatusOk, StatusReadFailed, kThrown}));
  EXPECT_EQ(Sweep(store, 0, road, PlainKernelFaultSeek),
            (Statuses{StatusOk, StatusReadFailed, StatusSeekFailed, kThrown}));
  EXPECT_EQ(Sweep(store, 0, road, PlainKernelFaultText), (Statuses{StatusOk, StatusFailed}));
}

TEST(PstFaultRoad, Extraction) {
  const std::string store = FaultStore(false);
  for (const bool toFile : {true, false}) {
    const Road road = [toFile](FakeHost& host) {
      const std::u16string path = host.directory().wide() + u"/out";
      host.extractContext->data = nullptr;
      const int32_t status = host.extract(1, toFile ? path.c_str() : nullptr);
      if (host.extractContext->data != nullptr) {
        EXPECT_EQ(status, StatusOk);
        KernelFree(host.extractContext->data, TARN_HERE);
      }
      return status;
    };
    EXPECT_EQ(Sweep(store, 0, road, PlainKernelFaultMemory),
              (Statuses{StatusOk, StatusOutOfMemory, kThrown}));
    Statuses open = {StatusOk, StatusOpenFailed, kThrown};
    if (toFile) open.insert(StatusCreateFailed);
    EXPECT_EQ(Sweep(store, 0, road, PlainKernelFaultOpen), open);
    EXPECT_EQ(Sweep(store, 0, road, PlainKernelFaultWrite),
              toFile ? (Statuses{StatusOk, StatusWriteFailed}) : Statuses{StatusOk});
    EXPECT_EQ(Sweep(store, 0, road, PlainKernelFaultRead),
              (Statuses{StatusOk, StatusReadFailed, kThrown}));
    EXPECT_EQ(Sweep(store, 0, road, PlainKernelFaultSeek),
              (Statuses{StatusOk, StatusReadFailed, StatusSeekFailed, kThrown}));
    EXPECT_EQ(Sweep(store, 0, road, PlainKernelFaultText), (Statuses{StatusOk, StatusFailed}));
  }
}

}  // namespace
}  // namespace tarn::test
