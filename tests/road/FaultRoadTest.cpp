// Every call of the kernel that a road makes fails once: each road ends in a documented status and
// leaves nothing behind.

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <set>

#include "Internal/Tarnclasses_.h"
#include "support/FakeHost.h"
#include "support/SampleMails.h"

namespace tarn::test {
namespace {

constexpr int32_t kGroups[] = {PlainKernelFaultMemory, PlainKernelFaultOpen, PlainKernelFaultRead,
                               PlainKernelFaultWrite,  PlainKernelFaultSeek, PlainKernelFaultText,
                               PlainKernelFaultBudget};

// What a failing call of each group can end in, besides success where a failure is passed over.
bool IsDocumented(int32_t group, int32_t status) {
  static const std::map<int32_t, std::set<int32_t>> kStatuses = {
      {PlainKernelFaultMemory, {StatusOutOfMemory}},
      {PlainKernelFaultOpen, {StatusOpenFailed, StatusCreateFailed}},
      {PlainKernelFaultRead, {StatusReadFailed}},
      {PlainKernelFaultWrite, {StatusWriteFailed}},
      {PlainKernelFaultSeek, {StatusReadFailed, StatusSeekFailed}},
      {PlainKernelFaultText,
       {StatusFailed, StatusPathToUtf8Failed, StatusPathFromUtf8Failed, StatusOutOfMemory}},
      {PlainKernelFaultBudget, {}}};
  return status == StatusOk || kStatuses.at(group).count(status) != 0;
}

using Road = std::function<int32_t(FakeHost&)>;

// More than any road of these tests makes of the calls that the kernel does not count.
constexpr uint64_t kUncountedCalls = 40;

// Calls of the memory group in a run without a fault.
uint64_t CountAllocations(const std::string& mail, int32_t ioMode, const Road& road) {
  PlainKernelSetIoMode(ioMode);
  FakeHost host(mail);
  PlainKernelUsageRecord before = {};
  PlainKernelUsage(&before);
  EXPECT_EQ(road(host), StatusOk);
  PlainKernelUsageRecord after = {};
  PlainKernelUsage(&after);
  return after.allocationCalls - before.allocationCalls;
}

void RunWithFault(const std::string& mail, int32_t ioMode, const Road& road, int32_t group,
                  uint64_t ordinal) {
  PlainKernelUsageRecord before = {};
  PlainKernelUsage(&before);
  {
    PlainKernelSetIoMode(ioMode);
    FakeHost host(mail);
    PlainKernelFailAt(group, ordinal);
    const int32_t status = road(host);
    PlainKernelFailAt(group, 0);
    EXPECT_TRUE(IsDocumented(group, status)) << status << " group " << group << " call " << ordinal;
    host.clearSlot();
    EXPECT_EQ(host.directory().listing().find("pst"), std::string::npos);
  }
  PlainKernelUsageRecord after = {};
  PlainKernelUsage(&after);
  EXPECT_EQ(after.liveBlocks, before.liveBlocks) << "group " << group << " call " << ordinal;
  EXPECT_EQ(after.liveTrackedObjects, before.liveTrackedObjects);
  EXPECT_EQ(after.openHandles, before.openHandles);
  EXPECT_EQ(after.reportedBytes, before.reportedBytes);
  EXPECT_EQ(after.temporaryFiles, before.temporaryFiles);
}

// Runs `road` with the first, second, ... call of each group failing.
void SweepFaults(const std::string& mail, int32_t ioMode, const Road& road) {
  for (const int32_t group : kGroups) {
    const uint64_t calls =
        group == PlainKernelFaultMemory ? CountAllocations(mail, ioMode, road) : kUncountedCalls;
    for (uint64_t ordinal = 1; ordinal <= calls; ++ordinal) {
      RunWithFault(mail, ioMode, road, group, ordinal);
    }
  }
}

TEST(FaultRoad, InfoOfAMailWithImages) {
  for (int32_t ioMode : {0, 3}) {
    SweepFaults(kImageMail, ioMode, [](FakeHost& host) { return host.info(); });
  }
}

TEST(FaultRoad, InfoOfAPlainMail) {
  SweepFaults(kPlainMail, 0, [](FakeHost& host) { return host.info(); });
}

TEST(FaultRoad, LoadInMemory) {
  SweepFaults(kImageMail, 3, [](FakeHost& host) { return host.load(); });
}

// The record that a failed write leaves behind is pinned elsewhere, so this mail has no HTML.
TEST(FaultRoad, LoadByTheTempFileRoute) {
  SweepFaults(kPlainMail, 0, [](FakeHost& host) { return host.load(); });
}

// Each mail has one attachment, so that a list that fails half way has no items to leave behind.
TEST(FaultRoad, ListOfAttachments) {
  SweepFaults(kAttachmentMail, 0, [](FakeHost& host) {
    host.listContext->block = nullptr;
    const int32_t status = host.attachmentInfo();
    FreeAttachmentBlock(host.listContext->block);
    return status;
  });
}

TEST(FaultRoad, ExtractionToAFile) {
  SweepFaults(kImageMail, 0, [](FakeHost& host) {
    return host.extract(2, (host.directory().wide() + u"/out").c_str());
  });
}

TEST(FaultRoad, ExtractionToMemory) {
  SweepFaults(kImageMail, 0, [](FakeHost& host) {
    host.extractContext->data = nullptr;
    const int32_t status = host.extract(2);
    if (host.extractContext->data != nullptr) KernelFree(host.extractContext->data, TARN_HERE);
    return status;
  });
}

TEST(FaultRoad, BudgetRefusesALargeDocument) {
  PlainKernelSetIoMode(3);
  PlainKernelSetMemoryBudget(4000000);
  // An attachment above the threshold of the meter is put into a tracked buffer.
  std::string mail = kSampleFields +
                     "Content-Type: multipart/mixed; boundary=b\r\n\r\n"
                     "--b\r\nContent-Type: text/plain\r\n\r\nHi\r\n"
                     "--b\r\nContent-Disposition: attachment; filename=big\r\n\r\n";
  mail.append(9000000, 'x');
  mail += "\r\n--b--\r\n";
  FakeHost host(mail);
  EXPECT_EQ(host.extract(1), StatusOutOfMemory);
  EXPECT_EQ(Copy(host.extractContext->data), nullptr);
  PlainKernelSetMemoryBudget(UINT64_MAX);
  EXPECT_EQ(host.extract(1), StatusOk);
  EXPECT_EQ(Copy(host.extractContext->size), 9000000u);
  KernelFree(host.extractContext->data, TARN_HERE);
}

}  // namespace
}  // namespace tarn::test
