// The shim for hosts of other compilers: no exception leaves it, everything else passes unchanged.

#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "BadStores.h"
#include "CatchingShimCalls.h"
#include "support/FakeHost.h"
#include "support/SampleMails.h"

namespace tarn::test {
namespace {

std::string What() {
  char text[300];
  const uint64_t length = ShimWhat(text, sizeof text);
  return std::string(text, length);
}

// Runs each call that reads a store, with the records of the host.
void ExpectOfAll(FakeHost& host, int32_t status, const std::string& what) {
  host.infoContext->slot = &host.slot;
  EXPECT_EQ(ShimInfo(host.infoContext.get()), status);
  EXPECT_EQ(What(), what);
  host.loadContext->slot = &host.slot;
  EXPECT_EQ(ShimLoad(host.loadContext.get()), status);
  EXPECT_EQ(What(), what);
  EXPECT_EQ(ListFromC(host.path().c_str()), status);
  EXPECT_EQ(What(), what);
  EXPECT_EQ(ExtractFromC(host.path().c_str()), status);
  EXPECT_EQ(What(), what);
}

TEST(CatchingShim, TurnsADamagedStoreIntoAStatus) {
  for (const BadStore& bad : BadStores()) {
    FakeHost host(bad.bytes);
    ExpectOfAll(host, StatusFailed, bad.what);
  }
}

TEST(CatchingShim, TellsThatMemoryIsShort) {
  {
    FakeHost host(BadStores()[0].bytes);
    EXPECT_EQ(ListFromC(host.path().c_str()), StatusFailed);
    EXPECT_EQ(What(), BadStores()[0].what);
  }
  FakeHost host(SampleStore(PstLayout::Unicode));
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  EXPECT_EQ(ListFromC(host.path().c_str()), StatusOutOfMemory);
  EXPECT_EQ(What(), "std::bad_alloc");
}

// A sibling of this host shares the runtime and may throw what it likes.
TEST(CatchingShim, TurnsWhatIsNoStandardExceptionIntoAStatus) {
  FakeHost host(kHtmlMail);
  host.infoContext->slot = &host.slot;
  host.answer.action = [] { throw 7; };
  EXPECT_EQ(ShimInfo(host.infoContext.get()), StatusFailed);
  EXPECT_EQ(What(), "unknown exception");
  EXPECT_EQ(host.calls.size(), 1u);
}

TEST(CatchingShim, KeepsTheTextOfEachThread) {
  FakeHost host(BadStores()[0].bytes);
  EXPECT_EQ(ListFromC(host.path().c_str()), StatusFailed);
  std::string atFirst = "not asked";
  std::string later;
  const std::string otherStore = BadStores()[1].bytes;
  std::thread([&] {
    atFirst = What();
    host.rewriteFile(otherStore);
    EXPECT_EQ(ListFromC(host.path().c_str()), StatusFailed);
    later = What();
  }).join();
  EXPECT_EQ(atFirst, "");
  EXPECT_EQ(later, BadStores()[1].what);
  EXPECT_EQ(What(), BadStores()[0].what);
}

TEST(CatchingShim, FreesTheRecordOfASlot) {
  FakeHost host(kHtmlMail);
  host.infoContext->slot = &host.slot;
  ASSERT_EQ(ShimInfo(host.infoContext.get()), StatusOk);
  void* const record = host.slot.data;
  const int32_t format = host.slot.dataFormat;
  ASSERT_NE(record, nullptr);
  ASSERT_NE(format, FILTER_DATA_LIST_FORMAT);
  host.slot.data = nullptr;
  PlainKernelUsageRecord before = {};
  PlainKernelUsage(&before);
  EXPECT_EQ(ShimFreeData(record, 0), StatusOk);
  PlainKernelUsageRecord after = {};
  PlainKernelUsage(&after);
  EXPECT_LT(after.liveBlocks, before.liveBlocks);
}

TEST(CatchingShim, PassesResultsOn) {
  FakeHost host(kHtmlMail);
  host.infoContext->slot = &host.slot;
  EXPECT_EQ(ShimInfo(host.infoContext.get()), StatusOk);
  EXPECT_EQ(host.calls.size(), 1u);
  EXPECT_EQ(ShimFreeData(nullptr, 0), fltFreeData(nullptr, 0));
  EXPECT_EQ(ShimTarnLoad(1, 2, 3, 4), 1);
  EXPECT_EQ(ShimInfo(nullptr), fltInfo(nullptr));
  EXPECT_EQ(ShimExtractAttachment(nullptr), fltExtractAttachment(nullptr));
}

TEST(CatchingShim, CutsTheTextToTheRoom) {
  FakeHost host(BadStores()[1].bytes);
  EXPECT_EQ(ListFromC(host.path().c_str()), StatusFailed);
  char text[6] = "-----";
  EXPECT_EQ(ShimWhat(text, 6), 12u);
  EXPECT_STREQ(text, "fread");
  EXPECT_EQ(ShimWhat(nullptr, 0), 12u);
}

}  // namespace
}  // namespace tarn::test
