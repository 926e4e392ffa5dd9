#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "Scratch.h"
#include "TarnPst.h"
#include "Tarnbase/PlainKernel.h"

namespace tarn::test {
namespace {

constexpr const char16_t* kHere = u"MemoryFilesTest.cpp";

class MemoryFiles : public ::testing::Test {
 protected:
  int32_t OpenEmpty() {
    return KernelMemFileOpen(&handle_, &state_, KERNEL_MEMFILE_EMPTY, nullptr, 0, 0);
  }
  // Opens over a block of `capacity` bytes that begins with `bytes`.
  int32_t OpenFilled(const std::string& bytes, uint64_t capacity) {
    given_ = static_cast<char*>(KernelAlloc(capacity, 1, 1, kHere));
    std::memcpy(given_, bytes.data(), bytes.size());
    return KernelMemFileOpen(&handle_, &state_, KERNEL_MEMFILE_FILLED, given_, bytes.size(),
                             capacity);
  }
  uint32_t Write(const std::string& bytes) {
    return KernelFileWrite(handle_, bytes.data(), static_cast<uint32_t>(bytes.size()));
  }
  std::string Read(uint32_t count) {
    std::string bytes(count, '#');
    bytes.resize(KernelFileRead(handle_, bytes.data(), count));
    return bytes;
  }
  uint64_t Seek(int64_t offset, int32_t origin) { return KernelFileSeek(handle_, offset, origin); }

  // Closes, ends, and gives what the block holds.
  std::string End() {
    KernelFileClose(handle_);
    void* block = nullptr;
    uint64_t length = 0;
    EXPECT_EQ(KernelMemFileClose(state_, &block, &length, &capacity_), StatusOk);
    EXPECT_GE(capacity_, length);
    std::string bytes(static_cast<const char*>(block), length);
    KernelFree(block, 2, kHere);
    return bytes;
  }

  uint64_t handle_ = KERNEL_BAD_HANDLE;
  void* state_ = nullptr;
  char* given_ = nullptr;
  uint64_t capacity_ = 0;
};

TEST_F(MemoryFiles, BeginEmptyAndGrow) {
  ASSERT_EQ(OpenEmpty(), 1);
  EXPECT_NE(handle_, KERNEL_BAD_HANDLE);
  EXPECT_NE(state_, nullptr);
  EXPECT_EQ(Read(1), "");
  EXPECT_EQ(Write("abc"), 3U);
  EXPECT_EQ(KernelFileWriteLarge(handle_, "defg", 4), 4U);
  EXPECT_EQ(Seek(0, KERNEL_SEEK_START), 0U);
  EXPECT_EQ(Read(100), "abcdefg");
  EXPECT_EQ(End(), "abcdefg");
}

TEST_F(MemoryFiles, BeginWithWhatTheBlockHolds) {
  ASSERT_EQ(OpenFilled("hello", 5), 1);
  EXPECT_EQ(Seek(0, KERNEL_SEEK_CURRENT), 0U);
  EXPECT_EQ(Read(2), "he");
  EXPECT_EQ(Write("LL"), 2U);
  char bytes[8] = {};
  EXPECT_EQ(KernelFileReadLarge(handle_, bytes, 8), 1U);
  EXPECT_STREQ(bytes, "o");
  EXPECT_EQ(Write(" world"), 6U);
  EXPECT_EQ(End(), "heLLo world");
}

TEST_F(MemoryFiles, GrowByAtLeastAHalf) {
  ASSERT_EQ(OpenFilled(std::string(1001, 'x'), 1001), 1);
  EXPECT_EQ(Seek(0, KERNEL_SEEK_END), 1001U);
  EXPECT_EQ(Write("y"), 1U);
  EXPECT_EQ(End(), std::string(1001, 'x') + "y");
  EXPECT_GE(capacity_, 1502U);
}

TEST_F(MemoryFiles, GrowInFewSteps) {
  ASSERT_EQ(OpenEmpty(), 1);
  const uint64_t before = Usage().allocationCalls;
  for (int i = 0; i < 100000; ++i) ASSERT_EQ(Write("0123456789"), 10U);
  EXPECT_LE(Usage().allocationCalls - before, 40U);
  EXPECT_EQ(End().size(), 1000000U);
}

TEST_F(MemoryFiles, StayInAGivenBlockThatHasRoom) {
  ASSERT_EQ(OpenFilled("ab", 4), 1);
  EXPECT_EQ(Seek(0, KERNEL_SEEK_END), 2U);
  EXPECT_EQ(Write("cd"), 2U);
  KernelFileClose(handle_);
  void* block = nullptr;
  uint64_t length = 0;
  ASSERT_EQ(KernelMemFileClose(state_, &block, &length, &capacity_), StatusOk);
  EXPECT_EQ(block, given_);
  EXPECT_EQ(length, 4U);
  EXPECT_EQ(capacity_, 4U);
  EXPECT_EQ(std::memcmp(given_, "abcd", 4), 0);
  KernelFree(given_, 2, kHere);
}

TEST_F(MemoryFiles, FillAGapWithZeros) {
  ASSERT_EQ(OpenFilled("ab####", 6), 1);
  EXPECT_EQ(Seek(9, KERNEL_SEEK_START), 9U);
  EXPECT_EQ(Seek(0, KERNEL_SEEK_END), 6U);
  EXPECT_EQ(Seek(9, KERNEL_SEEK_START), 9U);
  EXPECT_EQ(Write("z"), 1U);
  EXPECT_EQ(End(), std::string("ab####\0\0\0z", 10));
}

TEST_F(MemoryFiles, FillAGapInsideTheCapacityWithZeros) {
  given_ = static_cast<char*>(KernelAlloc(8, 1, 1, kHere));
  std::memcpy(given_, "ab######", 8);
  ASSERT_EQ(KernelMemFileOpen(&handle_, &state_, KERNEL_MEMFILE_FILLED, given_, 2, 8), StatusOk);
  EXPECT_EQ(Seek(5, KERNEL_SEEK_START), 5U);
  EXPECT_EQ(Read(1), "");
  EXPECT_EQ(Write("z"), 1U);
  EXPECT_EQ(End(), std::string("ab\0\0\0z", 6));
}

TEST_F(MemoryFiles, SeekFromEachOrigin) {
  ASSERT_EQ(OpenFilled("0123456789", 10), 1);
  EXPECT_EQ(Seek(4, KERNEL_SEEK_START), 4U);
  EXPECT_EQ(Seek(-1, KERNEL_SEEK_CURRENT), 3U);
  EXPECT_EQ(Seek(-2, KERNEL_SEEK_END), 8U);
  EXPECT_EQ(Seek(2, KERNEL_SEEK_END), 12U);
  EXPECT_EQ(Read(1), "");
  for (const int64_t bad : {int64_t{-1}, INT64_MIN}) {
    EXPECT_EQ(Seek(bad, KERNEL_SEEK_START), UINT64_MAX);
  }
  EXPECT_EQ(Seek(-13, KERNEL_SEEK_CURRENT), UINT64_MAX);
  EXPECT_EQ(Seek(-11, KERNEL_SEEK_END), UINT64_MAX);
  EXPECT_EQ(Seek(INT64_MAX, KERNEL_SEEK_END), UINT64_MAX);
  EXPECT_EQ(Seek(0, 3), UINT64_MAX);
  EXPECT_EQ(Seek(0, KERNEL_SEEK_CURRENT), 12U);
  EXPECT_EQ(End(), "0123456789");
}

TEST_F(MemoryFiles, WritesBeyondAllMemoryFailAndChangeNothing) {
  ASSERT_EQ(OpenFilled("abc", 3), 1);
  EXPECT_EQ(Seek(INT64_MAX, KERNEL_SEEK_START), static_cast<uint64_t>(INT64_MAX));
  EXPECT_EQ(Write("x"), 0U);
  EXPECT_EQ(Seek(INT64_MAX - 10, KERNEL_SEEK_START), static_cast<uint64_t>(INT64_MAX) - 10);
  EXPECT_EQ(Write("x"), 0U);
  EXPECT_EQ(Seek(0, KERNEL_SEEK_END), 3U);
  EXPECT_EQ(End(), "abc");
}

TEST_F(MemoryFiles, AFailedGrowthWritesNothing) {
  ASSERT_EQ(OpenFilled("abc", 3), 1);
  EXPECT_EQ(Seek(0, KERNEL_SEEK_END), 3U);
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  EXPECT_EQ(Write("def"), 0U);
  EXPECT_EQ(Seek(0, KERNEL_SEEK_CURRENT), 3U);
  EXPECT_EQ(Write("de"), 2U);
  EXPECT_EQ(End(), "abcde");
}

TEST_F(MemoryFiles, FaultsShortenReadsAndWrites) {
  ASSERT_EQ(OpenFilled("abcdef", 6), 1);
  PlainKernelFailAt(PlainKernelFaultRead, 1);
  EXPECT_EQ(Read(3), "ab");
  PlainKernelFailAt(PlainKernelFaultWrite, 1);
  EXPECT_EQ(Write("XYZ"), 2U);
  PlainKernelFailAt(PlainKernelFaultSeek, 1);
  EXPECT_EQ(Seek(0, KERNEL_SEEK_START), UINT64_MAX);
  EXPECT_EQ(Seek(0, KERNEL_SEEK_CURRENT), 4U);
  EXPECT_EQ(End(), "abXYef");
}

TEST_F(MemoryFiles, WritingNothingChangesNothing) {
  ASSERT_EQ(OpenFilled("abc", 3), 1);
  EXPECT_EQ(Seek(10, KERNEL_SEEK_START), 10U);
  EXPECT_EQ(Write(""), 0U);
  EXPECT_EQ(End(), "abc");
}

TEST_F(MemoryFiles, AnEmptyFileThatWasNeverWrittenHasNoBlock) {
  ASSERT_EQ(OpenEmpty(), 1);
  KernelFileClose(handle_);
  void* block = &handle_;
  uint64_t length = 9;
  uint64_t capacity = 9;
  ASSERT_EQ(KernelMemFileClose(state_, &block, &length, &capacity), StatusOk);
  EXPECT_EQ(block, nullptr);
  EXPECT_EQ(length, 0U);
  EXPECT_EQ(capacity, 0U);
}

TEST_F(MemoryFiles, DiscardingFreesABlockOfTheFilesOwn) {
  ASSERT_EQ(OpenEmpty(), 1);
  EXPECT_EQ(Write("abc"), 3U);
  KernelFileClose(handle_);
  EXPECT_EQ(Usage().liveBlocks, 1U);
  EXPECT_EQ(KernelMemFileClose(state_, nullptr, nullptr, nullptr), StatusOk);
  EXPECT_EQ(Usage().liveBlocks, 0U);
}

TEST_F(MemoryFiles, DiscardingLeavesAGivenBlockThatDidNotMove) {
  ASSERT_EQ(OpenFilled("abc", 3), 1);
  EXPECT_EQ(Write("X"), 1U);
  KernelFileClose(handle_);
  EXPECT_EQ(KernelMemFileClose(state_, nullptr, nullptr, nullptr), StatusOk);
  EXPECT_EQ(std::memcmp(given_, "Xbc", 3), 0);
  KernelFree(given_, 2, kHere);
}

// A large enough growth always moves: the block before a fresh small one cannot reach so far.
TEST_F(MemoryFiles, DiscardingFreesAGivenBlockThatMoved) {
  ASSERT_EQ(OpenFilled("abc", 3), 1);
  EXPECT_EQ(Seek(50000000, KERNEL_SEEK_START), 50000000U);
  EXPECT_EQ(Write("z"), 1U);
  KernelFileClose(handle_);
  EXPECT_EQ(Usage().liveBlocks, 1U);
  EXPECT_EQ(KernelMemFileClose(state_, nullptr, nullptr, nullptr), StatusOk);
  EXPECT_EQ(Usage().liveBlocks, 0U);
}

TEST_F(MemoryFiles, CountAsOpenUntilTheyAreEnded) {
  ASSERT_EQ(OpenEmpty(), 1);
  EXPECT_EQ(Usage().openHandles, 1U);
  KernelFileClose(handle_);
  EXPECT_EQ(Usage().openHandles, 1U);
  EXPECT_EQ(KernelMemFileClose(state_, nullptr, nullptr, nullptr), StatusOk);
  EXPECT_EQ(Usage().openHandles, 0U);
}

TEST_F(MemoryFiles, EndingClosesTheHandle) {
  ASSERT_EQ(OpenFilled("abc", 3), 1);
  EXPECT_EQ(KernelMemFileClose(state_, nullptr, nullptr, nullptr), StatusOk);
  EXPECT_EQ(Read(1), "");
  EXPECT_EQ(Write("x"), 0U);
  EXPECT_EQ(Seek(0, KERNEL_SEEK_START), UINT64_MAX);
  EXPECT_EQ(Usage().openHandles, 0U);
  KernelFree(given_, 2, kHere);
}

TEST_F(MemoryFiles, AStateEndsOnce) {
  ASSERT_EQ(OpenEmpty(), 1);
  KernelFileClose(handle_);
  void* block = &handle_;
  EXPECT_EQ(KernelMemFileClose(state_, nullptr, nullptr, nullptr), StatusOk);
  EXPECT_NE(KernelMemFileClose(state_, &block, nullptr, nullptr), 1);
  EXPECT_NE(KernelMemFileClose(nullptr, &block, nullptr, nullptr), 1);
  EXPECT_NE(KernelMemFileClose(&handle_, &block, nullptr, nullptr), 1);
  EXPECT_EQ(block, &handle_);
}

TEST_F(MemoryFiles, SeveralAreIndependent) {
  ASSERT_EQ(OpenEmpty(), 1);
  uint64_t other = 0;
  void* otherState = nullptr;
  ASSERT_EQ(KernelMemFileOpen(&other, &otherState, KERNEL_MEMFILE_EMPTY, nullptr, 0, 0), StatusOk);
  EXPECT_NE(other, handle_);
  EXPECT_NE(otherState, state_);
  EXPECT_EQ(Write("one"), 3U);
  EXPECT_EQ(KernelFileWrite(other, "two", 3), 3U);
  KernelFileClose(other);
  EXPECT_EQ(KernelMemFileClose(otherState, nullptr, nullptr, nullptr), StatusOk);
  EXPECT_EQ(End(), "one");
}

TEST_F(MemoryFiles, RefuseWhatIsNoMemoryFile) {
  char local[8] = {};
  given_ = static_cast<char*>(KernelAlloc(4, 1, 1, kHere));
  const auto open = [&](int32_t mode, void* block, uint64_t length, uint64_t capacity) {
    return KernelMemFileOpen(&handle_, &state_, mode, block, length, capacity);
  };
  EXPECT_EQ(open(KERNEL_MEMFILE_EMPTY + 1, given_, 0, 4), StatusCreateFailed);
  EXPECT_EQ(open(KERNEL_MEMFILE_EMPTY, given_, 1, 4), StatusCreateFailed);   // filled after all
  EXPECT_EQ(open(KERNEL_MEMFILE_FILLED, given_, 5, 4), StatusCreateFailed);  // fuller than full
  EXPECT_EQ(open(KERNEL_MEMFILE_FILLED, given_, 1, 5),
            StatusCreateFailed);  // larger than the block
  EXPECT_EQ(open(KERNEL_MEMFILE_FILLED, local, 1, 8),
            StatusCreateFailed);  // no block of the kernel
  EXPECT_EQ(open(KERNEL_MEMFILE_FILLED, nullptr, 0, 5), StatusCreateFailed);  // no block at all
  EXPECT_EQ(KernelMemFileOpen(nullptr, &state_, KERNEL_MEMFILE_EMPTY, nullptr, 0, 0),
            StatusCreateFailed);
  EXPECT_EQ(KernelMemFileOpen(&handle_, nullptr, KERNEL_MEMFILE_EMPTY, nullptr, 0, 0),
            StatusCreateFailed);
  EXPECT_EQ(Usage().openHandles, 0U);
  KernelFree(given_, 2, kHere);
}

TEST_F(MemoryFiles, SeekFromNoOtherOrigin) {
  ASSERT_EQ(OpenFilled("abc", 3), StatusOk);
  EXPECT_EQ(Seek(1, KERNEL_SEEK_START), 1U);
  EXPECT_EQ(Seek(0, KERNEL_SEEK_START - 1), UINT64_MAX);
  EXPECT_EQ(Seek(0, KERNEL_SEEK_END + 1), UINT64_MAX);
  EXPECT_EQ(Read(3), "bc");
  EXPECT_EQ(End(), "abc");
}

TEST_F(MemoryFiles, HaveNoMoreThanTheirBlockHasRoomFor) {
  void* const block = KernelAlloc(8, 1, 1, kHere);
  EXPECT_EQ(KernelMemFileOpen(&handle_, &state_, KERNEL_MEMFILE_FILLED, block, 9, 8),
            StatusCreateFailed);
  EXPECT_EQ(KernelMemFileOpen(&handle_, &state_, KERNEL_MEMFILE_FILLED, block, 8, UINT64_MAX),
            StatusCreateFailed);
  KernelFree(block, 2, kHere);
}

TEST_F(MemoryFiles, TakeAnEmptyBlockWithRoom) {
  given_ = static_cast<char*>(KernelAlloc(4, 1, 1, kHere));
  ASSERT_EQ(KernelMemFileOpen(&handle_, &state_, KERNEL_MEMFILE_EMPTY, given_, 0, 4), StatusOk);
  EXPECT_EQ(Write("abcd"), 4U);
  EXPECT_EQ(std::memcmp(given_, "abcd", 4), 0);
  EXPECT_EQ(End(), "abcd");
}

}  // namespace
}  // namespace tarn::test
