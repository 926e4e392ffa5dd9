#include <gtest/gtest.h>

#include <vector>

#include "KernelUse.h"

namespace tarn {
namespace {

using test::ReportedBytes;

constexpr uint64_t kThreshold = 8000000;

TEST(MemoryMeter, HearsNothingUpToTheThreshold) {
  MemoryMeter meter;
  PlainKernelSetMemoryBudget(0);
  EXPECT_EQ(meter.set(1), StatusOk);
  EXPECT_EQ(meter.set(kThreshold), StatusOk);
  EXPECT_EQ(meter.current, kThreshold);
  EXPECT_EQ(meter.reported, 0u);
  EXPECT_EQ(meter.set(5), StatusOk);
  EXPECT_EQ(meter.set(0), StatusOk);
  EXPECT_EQ(ReportedBytes(), 0u);
}

TEST(MemoryMeter, ReportsTheWholeSizeOnceAndDifferencesThen) {
  MemoryMeter meter;
  EXPECT_EQ(meter.set(7000000), StatusOk);
  EXPECT_EQ(meter.set(kThreshold + 1), StatusOk);
  EXPECT_EQ(meter.reported, 1u);
  EXPECT_EQ(ReportedBytes(), kThreshold + 1);
  PlainKernelSetMemoryBudget(kThreshold + 11);
  EXPECT_EQ(meter.set(kThreshold + 11), StatusOk);
  EXPECT_EQ(ReportedBytes(), kThreshold + 11);
  EXPECT_EQ(meter.set(kThreshold + 11), StatusOk);
  // It stays reported below the threshold, and grows by differences from there.
  EXPECT_EQ(meter.set(100), StatusOk);
  EXPECT_EQ(ReportedBytes(), 100u);
  EXPECT_EQ(meter.reported, 1u);
  EXPECT_EQ(meter.set(300), StatusOk);
  EXPECT_EQ(ReportedBytes(), 300u);
  EXPECT_EQ(meter.set(0), StatusOk);
  EXPECT_EQ(ReportedBytes(), 0u);
  EXPECT_EQ(meter.reported, 1u);
}

TEST(MemoryMeter, ARefusalChangesNothing) {
  MemoryMeter meter;
  ASSERT_EQ(meter.set(50), StatusOk);
  PlainKernelFailAt(PlainKernelFaultBudget, 1);
  EXPECT_EQ(meter.set(kThreshold + 1), StatusOutOfMemory);
  EXPECT_EQ(meter.current, 50u);
  EXPECT_EQ(meter.reported, 0u);
  ASSERT_EQ(meter.set(kThreshold + 1), StatusOk);
  PlainKernelFailAt(PlainKernelFaultBudget, 1);
  EXPECT_EQ(meter.set(kThreshold + 2), StatusOutOfMemory);
  EXPECT_EQ(meter.current, kThreshold + 1);
  EXPECT_EQ(meter.reported, 1u);
  EXPECT_EQ(ReportedBytes(), kThreshold + 1);
  EXPECT_EQ(meter.set(0), StatusOk);
}

TEST(TrackedBuffer, StartsEmptyWithItsDefaults) {
  const TrackedBuffer<char> buffer;
  EXPECT_EQ(buffer.data(), nullptr);
  EXPECT_EQ(buffer.length(), 0u);
  EXPECT_EQ(buffer.capacity(), 0u);
  EXPECT_EQ(buffer.increment(), 1024u);
  EXPECT_EQ(buffer.zeroFill(), 0u);
  EXPECT_EQ(buffer.lastError(), StatusOutOfMemory);
  EXPECT_EQ(buffer.meter().current, 0u);
  EXPECT_EQ(buffer.meter().threshold, kThreshold);
  EXPECT_EQ(buffer.meter().reported, 0u);
  EXPECT_EQ(buffer.firstIncrement(), 1024u);
  EXPECT_EQ(buffer.growthCount(), 0u);
}

TEST(TrackedBuffer, AnInitialCountAllocatesAtOnce) {
  const TrackedBuffer<uint64_t> buffer(7, 5, 1);
  ASSERT_NE(buffer.data(), nullptr);
  EXPECT_EQ(buffer.capacity(), 12u);
  EXPECT_EQ(buffer.length(), 0u);
  EXPECT_EQ(buffer.growthCount(), 1u);
  EXPECT_EQ(buffer.meter().current, 96u);
  for (uint64_t i = 0; i < 12; ++i) EXPECT_EQ(buffer.data()[i], 0u) << i;

  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  const TrackedBuffer<uint64_t> failed(7);
  EXPECT_EQ(failed.data(), nullptr);
  EXPECT_EQ(failed.capacity(), 0u);
  EXPECT_EQ(failed.lastError(), StatusOutOfMemory);
}

TEST(TrackedBuffer, ReserveOfNothingAllocatesTheIncrement) {
  TrackedBuffer<char16_t> buffer;
  ASSERT_NE(buffer.reserve(0), nullptr);
  EXPECT_EQ(buffer.capacity(), 1024u);
  EXPECT_EQ(test::Usage().liveBytes, 2048u);
}

TEST(TrackedBuffer, RoomThatIsThereIsNotMadeAgain) {
  TrackedBuffer<char> buffer;
  char* const block = buffer.reserve(1);
  EXPECT_EQ(buffer.capacity(), 1025u);
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  EXPECT_EQ(buffer.reserve(1025), block);
  EXPECT_EQ(buffer.reserve(0), block);
  EXPECT_EQ(buffer.growthCount(), 1u);
  PlainKernelFailAt(PlainKernelFaultMemory, 0);
}

// The request alone decides: nothing is rounded, and the old capacity is not added to.
TEST(TrackedBuffer, TheNewCapacityIsRequestPlusIncrement) {
  TrackedBuffer<char> buffer(0, 10);
  ASSERT_NE(buffer.reserve(3), nullptr);
  EXPECT_EQ(buffer.capacity(), 13u);
  ASSERT_NE(buffer.reserve(14), nullptr);
  EXPECT_EQ(buffer.capacity(), 24u);
  ASSERT_NE(buffer.reserve(1000), nullptr);
  EXPECT_EQ(buffer.capacity(), 1010u);
}

TEST(TrackedBuffer, TheTwentyFirstGrowthDoublesTheIncrement) {
  TrackedBuffer<char> buffer;
  for (int growth = 1; growth <= 21; ++growth) {
    EXPECT_EQ(buffer.increment(), 1024u) << growth;
    const uint64_t before = buffer.capacity();
    ASSERT_NE(buffer.reserve(before + 1), nullptr);
    EXPECT_EQ(buffer.capacity(), before + 1 + 1024) << growth;
    EXPECT_EQ(buffer.growthCount(), growth <= 20 ? static_cast<uint32_t>(growth) : 0u);
  }
  for (int growth = 22; growth <= 42; ++growth) {
    EXPECT_EQ(buffer.increment(), 2048u) << growth;
    const uint64_t before = buffer.capacity();
    ASSERT_NE(buffer.reserve(before + 1), nullptr);
    EXPECT_EQ(buffer.capacity(), before + 1 + 2048) << growth;
  }
  EXPECT_EQ(buffer.increment(), 4096u);
  EXPECT_EQ(buffer.firstIncrement(), 1024u);
}

TEST(TrackedBuffer, ZeroFillClearsOnlyTheNewElements) {
  TrackedBuffer<char> buffer(0, 4, 1);
  ASSERT_NE(buffer.reserve(4), nullptr);
  EXPECT_EQ(std::string(buffer.data(), 8), std::string(8, '\0'));
  // What was reserved stays, whether in use or not.
  std::memset(buffer.data(), 'x', 8);
  buffer.setLength(2);
  ASSERT_NE(buffer.reserve(9), nullptr);
  EXPECT_EQ(buffer.capacity(), 13u);
  EXPECT_EQ(std::string(buffer.data(), 13), std::string(8, 'x') + std::string(5, '\0'));
}

TEST(TrackedBuffer, ReportsItsWholeSizeOnceAndDifferencesThen) {
  TrackedBuffer<char> buffer;
  ASSERT_NE(buffer.reserve(kThreshold - 1024), nullptr);
  EXPECT_EQ(buffer.meter().current, kThreshold);
  EXPECT_EQ(ReportedBytes(), 0u);
  ASSERT_NE(buffer.reserve(kThreshold + 1), nullptr);
  EXPECT_EQ(ReportedBytes(), kThreshold + 1025);
  // The budget leaves room for the difference, not for the whole size again.
  PlainKernelSetMemoryBudget(kThreshold + 4000);
  ASSERT_NE(buffer.reserve(kThreshold + 2000), nullptr);
  EXPECT_EQ(ReportedBytes(), kThreshold + 3024);
  buffer.release();
  EXPECT_EQ(ReportedBytes(), 0u);
}

TEST(TrackedBuffer, ASmallOneIsNeitherReportedNorReturned) {
  PlainKernelSetMemoryBudget(0);
  TrackedBuffer<uint32_t> large;
  EXPECT_EQ(large.reserve(kThreshold / 4), nullptr);
  TrackedBuffer<uint32_t> buffer;
  ASSERT_NE(buffer.reserve(kThreshold / 4 - 1024), nullptr);
  EXPECT_EQ(buffer.meter().current, kThreshold);
  EXPECT_EQ(buffer.meter().reported, 0u);
  buffer.release();
  EXPECT_EQ(buffer.meter().current, 0u);
}

TEST(TrackedBuffer, ARefusalClearsItAndItStartsAgainFromNothing) {
  TrackedBuffer<char> buffer(0, 1024, 1);
  ASSERT_NE(buffer.reserve(10), nullptr);
  std::memset(buffer.data(), 'x', 10);
  buffer.setLength(10);
  PlainKernelFailAt(PlainKernelFaultBudget, 1);
  EXPECT_EQ(buffer.reserve(kThreshold), nullptr);
  EXPECT_EQ(buffer.data(), nullptr);
  EXPECT_EQ(buffer.capacity(), 0u);
  EXPECT_EQ(buffer.length(), 0u);
  EXPECT_EQ(buffer.lastError(), StatusOutOfMemory);
  EXPECT_EQ(test::Usage().liveBlocks, 0u);
  EXPECT_EQ(ReportedBytes(), 0u);

  ASSERT_NE(buffer.reserve(5), nullptr);
  EXPECT_EQ(buffer.capacity(), 1029u);
  EXPECT_EQ(std::string(buffer.data(), 1029), std::string(1029, '\0'));
  EXPECT_EQ(buffer.growthCount(), 2u);
}

TEST(TrackedBuffer, ARefusedReportedOneReturnsItsBytesAtTheEnd) {
  TrackedBuffer<char> buffer;
  ASSERT_NE(buffer.reserve(kThreshold), nullptr);
  PlainKernelSetMemoryBudget(kThreshold + 1024);
  EXPECT_EQ(buffer.reserve(kThreshold + 2000), nullptr);
  EXPECT_EQ(buffer.data(), nullptr);
  EXPECT_EQ(ReportedBytes(), kThreshold + 1024);
  ASSERT_NE(buffer.reserve(1), nullptr);
  EXPECT_EQ(ReportedBytes(), 1025u);
  buffer.release();
  EXPECT_EQ(ReportedBytes(), 0u);
}

TEST(TrackedBuffer, WithoutMemoryTheContentsStay) {
  TrackedBuffer<char> buffer;
  ASSERT_NE(buffer.reserve(3), nullptr);
  std::memcpy(buffer.data(), "abc", 3);
  buffer.setLength(3);
  buffer.setLastError(Status::FromCode(77));
  const char* const block = buffer.data();
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  EXPECT_EQ(buffer.reserve(5000), nullptr);
  EXPECT_EQ(buffer.lastError(), StatusOutOfMemory);
  EXPECT_EQ(buffer.data(), block);
  EXPECT_EQ(buffer.capacity(), 1027u);
  EXPECT_EQ(std::string(buffer.data(), 3), "abc");
  EXPECT_EQ(buffer.growthCount(), 1u);
}

TEST(TrackedBuffer, SizesBeyondAllMemoryFail) {
  TrackedBuffer<uint64_t> buffer;
  EXPECT_EQ(buffer.reserve(UINT64_MAX), nullptr);
  EXPECT_EQ(buffer.reserve(UINT64_MAX - 1024), nullptr);
  EXPECT_EQ(buffer.reserve(UINT64_MAX / 8), nullptr);
  EXPECT_EQ(buffer.lastError(), StatusOutOfMemory);
  EXPECT_EQ(buffer.growthCount(), 0u);
}

TEST(TrackedBuffer, TakeGivesTheBlockAway) {
  TrackedBuffer<char> buffer;
  ASSERT_NE(buffer.reserve(kThreshold), nullptr);
  buffer.setLength(3);
  const KernelBlock<char> block = buffer.take();
  ASSERT_TRUE(block);
  EXPECT_EQ(buffer.data(), nullptr);
  EXPECT_EQ(buffer.length(), 0u);
  EXPECT_EQ(buffer.capacity(), 0u);
  EXPECT_EQ(ReportedBytes(), 0u);
}

TEST(TrackedBuffer, AppendWritesBehindWhatIsInUse) {
  TrackedBuffer<char16_t> buffer;
  EXPECT_EQ(buffer.append(nullptr, 0), StatusOk);
  EXPECT_EQ(buffer.data(), nullptr);
  EXPECT_EQ(buffer.append(nullptr, 1), StatusNullArgument);
  EXPECT_EQ(buffer.append(u"ab", 2), StatusOk);
  EXPECT_EQ(buffer.append(u"cde", 3), StatusOk);
  EXPECT_EQ(std::u16string(buffer.data(), buffer.length()), u"abcde");
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  const std::u16string large(2000, u'x');
  EXPECT_EQ(buffer.append(large.data(), large.size()), StatusOutOfMemory);
  EXPECT_EQ(std::u16string(buffer.data(), buffer.length()), u"abcde");
  const volatile uint64_t endless = UINT64_MAX;
  EXPECT_EQ(buffer.append(large.data(), endless), StatusOutOfMemory);
  EXPECT_EQ(buffer.length(), 5u);
}

TEST(TrackedBuffer, AppendAfterARefusalStartsAgain) {
  const std::string large(kThreshold, 'x');
  TrackedBuffer<char> buffer;
  ASSERT_EQ(buffer.append("abc", 3), StatusOk);
  PlainKernelFailAt(PlainKernelFaultBudget, 1);
  EXPECT_EQ(buffer.append(large.data(), large.size()), StatusOutOfMemory);
  EXPECT_EQ(buffer.data(), nullptr);
  EXPECT_EQ(buffer.length(), 0u);

  ASSERT_EQ(buffer.append("abc", 3), StatusOk);
  PlainKernelFailAt(PlainKernelFaultBudget, 1);
  EXPECT_EQ(buffer.reserve(kThreshold), nullptr);
  EXPECT_EQ(buffer.append("de", 2), StatusOk);
  EXPECT_EQ(std::string_view(buffer.data(), buffer.length()), "de");
}

TEST(AppendFormat, PrintsBehindTheTextAndLeavesItsNulOut) {
  TrackedBuffer<char> buffer;
  int32_t flag = 1;
  EXPECT_EQ(AppendFormat(buffer, flag, "cid:%s", "a.png"), 1);
  EXPECT_EQ(buffer.length(), 9u);
  EXPECT_EQ(std::string_view(buffer.data(), 10), test::Raw("cid:a.png\0"));
  EXPECT_EQ(buffer.capacity(), 10u + 1024u);
  EXPECT_EQ(AppendFormat(buffer, flag, "-%d", 7), 1);
  EXPECT_EQ(std::string_view(buffer.data(), 12), test::Raw("cid:a.png-7\0"));
  EXPECT_EQ(AppendFormat(buffer, flag, "%s", ""), 1);
  EXPECT_EQ(buffer.length(), 11u);
}

TEST(AppendFormat, GrowsToExactlyWhatItPrints) {
  TrackedBuffer<char> buffer(0, 0);
  int32_t flag = 1;
  const std::string text(3000, 'y');
  EXPECT_EQ(AppendFormat(buffer, flag, "%s", text.c_str()), 1);
  EXPECT_EQ(buffer.capacity(), 3001u);
  EXPECT_EQ(std::string_view(buffer.data(), buffer.length()), text);
}

TEST(AppendFormat, AfterOneFailureAllLaterCallsDoNothing) {
  TrackedBuffer<char> buffer;
  int32_t flag = 1;
  ASSERT_EQ(AppendFormat(buffer, flag, "a"), 1);
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  EXPECT_EQ(AppendFormat(buffer, flag, "%2000d", 1), 0);
  EXPECT_EQ(flag, 0);
  EXPECT_EQ(AppendFormat(buffer, flag, "b"), 0);
  EXPECT_EQ(buffer.length(), 1u);
  EXPECT_EQ(std::string_view(buffer.data(), 2), test::Raw("a\0"));
}

TEST(AppendFormat, ANullFormatFailsWithoutTouchingTheFlag) {
  TrackedBuffer<char> buffer;
  int32_t flag = 1;
  const char* volatile format = nullptr;
  EXPECT_EQ(AppendFormat(buffer, flag, format, 1), 0);
  EXPECT_EQ(flag, 1);
  EXPECT_EQ(buffer.data(), nullptr);
}

}  // namespace
}  // namespace tarn
