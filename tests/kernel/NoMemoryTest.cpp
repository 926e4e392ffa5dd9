// What is left when the kernel's bookkeeping runs out of memory: nothing that was not there.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "AllocationFaults.h"
#include "FilesFixture.h"
#include "RawFilesFixture.h"
#include "TarnPst.h"
#include "TempNamesFixture.h"

namespace tarn::test {
namespace {

// Calls `attempt` with each of its allocations failing in turn, and `check` after each; the last
// attempt has all it needs. The number of failures.
template <typename Attempt, typename Check>
int FailEachAllocation(Attempt attempt, Check check) {
  for (int ordinal = 1;; ++ordinal) {
    FailAllocation(ordinal);
    attempt();
    const bool failed = AllocationHasFailed();
    FailAllocation(0);
    if (!failed) return ordinal - 1;
    check();
  }
}

// Handles are kept in slots that are used again: those of these tests allocate none.
void WarmUp(const std::u16string& path) {
  const uint64_t handle = KernelRawFileCreate(path.c_str(), 0);
  ASSERT_NE(handle, KERNEL_BAD_HANDLE);
  KernelRawFileClose(handle, 0);
  KernelDeleteFile(path.c_str());
}

TEST_F(RawFiles, WithoutMemoryNothingIsMade) {
  const std::u16string path = WidePathOf("an image with a name that does not fit a small string");
  WarmUp(path);
  uint64_t handle = 0;
  const int failures = FailEachAllocation([&] { handle = Create(path); },
                                          [&] {
                                            EXPECT_EQ(handle, KERNEL_BAD_HANDLE);
                                            EXPECT_EQ(Entries(), 0U);
                                            EXPECT_EQ(Usage().temporaryFiles, 0U);
                                          });
  EXPECT_GE(failures, 4);
  EXPECT_EQ(Entries(), 1U);
  KernelRawFileClose(handle, 0);
  KernelDeleteFile(path.c_str());
}

TEST_F(RawFiles, WithoutMemoryNothingIsEmptiedOrForgotten) {
  const std::u16string path = WidePathOf("image");
  Make(path, "bytes");
  uint64_t handle = 0;
  FailEachAllocation([&] { handle = Create(path); },
                     [&] {
                       EXPECT_EQ(handle, KERNEL_BAD_HANDLE);
                       EXPECT_EQ(Get("image"), "bytes");
                       EXPECT_EQ(Usage().temporaryFiles, 1U);
                     });
  KernelRawFileClose(handle, 0);
  EXPECT_EQ(Get("image"), "");
  const int failures = FailEachAllocation([&] { KernelDeleteFile(path.c_str()); },
                                          [&] {
                                            EXPECT_EQ(Entries(), 1U);
                                            EXPECT_EQ(Usage().temporaryFiles, 1U);
                                          });
  EXPECT_GE(failures, 2);
  EXPECT_EQ(Usage().temporaryFiles, 0U);
}

TEST_F(TempNames, WithoutMemoryNothingIsMade) {
  const std::u16string root = Widen(Root());
  int32_t status = 0;
  const int failures = FailEachAllocation([&] { status = Make(root.c_str(), u"pst", u"html"); },
                                          [&] {
                                            EXPECT_EQ(status, StatusCreateFailed);
                                            EXPECT_EQ(Entries(), 0U);
                                            EXPECT_EQ(Usage().temporaryFiles, 0U);
                                            EXPECT_EQ(name_[0], u'#');
                                          });
  EXPECT_GE(failures, 4);
  EXPECT_EQ(status, StatusOk);
  Delete();
}

TEST_F(Files, WithoutMemoryNothingIsMadeOrEmptied) {
  const std::u16string path = WidePathOf("a file with a name that does not fit a small string");
  WarmUp(path);
  uint64_t handle = 0;
  FailEachAllocation([&] { handle = CreatePath(path); },
                     [&] {
                       EXPECT_EQ(handle, KERNEL_BAD_HANDLE);
                       EXPECT_EQ(Entries(), 0U);
                     });
  EXPECT_EQ(KernelFileWrite(handle, "abc", 3), 3U);
  KernelFileClose(handle);
  const int failures = FailEachAllocation([&] { handle = CreatePath(path); },
                                          [&] {
                                            EXPECT_EQ(handle, KERNEL_BAD_HANDLE);
                                            EXPECT_EQ(std::filesystem::file_size(path), 3U);
                                          });
  EXPECT_GE(failures, 2);
  EXPECT_EQ(std::filesystem::file_size(path), 0U);
  KernelFileClose(handle);
}

// So many at a time that the handles need room of their own.
TEST(MemoryFilesWithoutMemory, NoneIsOpened) {
  struct Open {
    uint64_t handle = KERNEL_BAD_HANDLE;
    void* state = nullptr;
  };
  std::vector<Open> files(200);
  uint64_t count = 0;
  for (Open& file : files) {
    int32_t status = 0;
    FailEachAllocation(
        [&] {
          status =
              KernelMemFileOpen(&file.handle, &file.state, KERNEL_MEMFILE_EMPTY, nullptr, 0, 0);
        },
        [&] {
          EXPECT_EQ(status, StatusCreateFailed);
          EXPECT_EQ(file.handle, KERNEL_BAD_HANDLE);
          EXPECT_EQ(file.state, nullptr);
          EXPECT_EQ(Usage().openHandles, count);
        });
    ASSERT_EQ(status, StatusOk);
    ++count;
  }
  for (const Open& file : files) {
    EXPECT_EQ(KernelMemFileClose(file.state, nullptr, nullptr, nullptr), StatusOk);
  }
  EXPECT_EQ(Usage().openHandles, 0U);
}

// So many that the kernel keeps no record of a freed block for one of them.
std::vector<void*> ManyBlocks() {
  std::vector<void*> blocks(1000);
  for (void*& block : blocks) block = KernelAlloc(1, 8, __LINE__, u"NoMemoryTest");
  return blocks;
}

void FreeAll(const std::vector<void*>& blocks) {
  for (void* block : blocks) KernelFree(block, __LINE__, u"NoMemoryTest");
}

TEST(Memory, WithoutMemoryForItsRecordABlockIsNotMade) {
  const std::vector<void*> others = ManyBlocks();
  const PlainKernelUsageRecord before = Usage();
  void* block = nullptr;
  const int failures =
      FailEachAllocation([&] { block = KernelAlloc(1, 8, __LINE__, u"NoMemoryTest"); },
                         [&] {
                           EXPECT_EQ(block, nullptr);
                           EXPECT_EQ(Usage().liveBlocks, before.liveBlocks);
                           EXPECT_EQ(Usage().liveBytes, before.liveBytes);
                         });
  EXPECT_GE(failures, 1);
  ASSERT_NE(block, nullptr);
  EXPECT_EQ(Usage().liveBlocks, before.liveBlocks + 1);
  KernelFree(block, __LINE__, u"NoMemoryTest");
  FreeAll(others);
}

TEST(Memory, ABlockThatMovesHasItsRecordAlready) {
  std::vector<void*> blocks = ManyBlocks();
  FailAllocation(1);
  for (void*& block : blocks) {
    void* const moved = KernelRealloc(block, 4000, __LINE__, u"NoMemoryTest");
    if (moved != nullptr) block = moved;
  }
  EXPECT_FALSE(AllocationHasFailed());
  FailAllocation(0);
  EXPECT_EQ(Usage().liveBytes, 4000 * blocks.size());
  FreeAll(blocks);
}

// Callers cannot be told that an announcement failed: it counts, and can be taken back.
TEST(TrackedObjects, AreCountedWithoutMemoryToRecordThem) {
  const int object = 0;
  FailAllocation(1);
  KernelTrackObject(KERNEL_TRACK_OBJECT, &object, __LINE__, u"NoMemoryTest");
  EXPECT_TRUE(AllocationHasFailed());
  FailAllocation(0);
  EXPECT_EQ(Usage().liveTrackedObjects, 1U);
  KernelUntrackObject(KERNEL_TRACK_OBJECT, &object, __LINE__, u"NoMemoryTest");
  EXPECT_EQ(Usage().liveTrackedObjects, 0U);
}

}  // namespace
}  // namespace tarn::test
