// Every call of the kernel that a road makes fails once: each road ends in a documented status and
// leaves nothing behind.

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <vector>

#include "Internal/Tarnclasses_.h"
#include "support/FakeHost.h"
#include "support/SampleMails.h"

namespace tarn::test {
namespace {

constexpr int32_t kGroups[] = {PlainKernelFaultMemory, PlainKernelFaultOpen, PlainKernelFaultRead,
                               PlainKernelFaultWrite,  PlainKernelFaultSeek, PlainKernelFaultText,
                               PlainKernelFaultBudget};

bool IsDocumented(int32_t status) {
  constexpr int32_t kStatuses[] = {1,   2,    0,    -1,    -4,    -5,    -7,    -9,    -10,  -13,
                                   -74, -290, -814, -1488, -1490, -1778, -1851, -1863, -1935};
  return std::find(std::begin(kStatuses), std::end(kStatuses), status) != std::end(kStatuses);
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
    EXPECT_TRUE(IsDocumented(status)) << status << " group " << group << " call " << ordinal;
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
