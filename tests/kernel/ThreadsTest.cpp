#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstring>
#include <random>
#include <thread>
#include <vector>

#include "RandomDraws.h"
#include "Scratch.h"
#include "Tarnbase/PlainKernel.h"

namespace tarn::test {
namespace {

constexpr const char16_t* kHere = u"ThreadsTest.cpp";
constexpr unsigned kThreads = 4;

class Threads : public Scratch {
 protected:
  template <typename Work>
  static void Run(Work work) {
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < kThreads; ++i) threads.emplace_back(work, i);
    for (std::thread& thread : threads) thread.join();
  }
};

// Blocks move all the time, so that one thread is given what another has just let go of.
TEST_F(Threads, ShareTheHeap) {
  std::atomic<int> wrong{0};
  Run([&wrong](unsigned number) {
    std::mt19937_64 random(number);
    std::vector<unsigned char*> blocks(64);
    for (unsigned char*& block : blocks) {
      block = static_cast<unsigned char*>(KernelAlloc(1, 1, 1, kHere));
      *block = static_cast<unsigned char>(number);
    }
    for (int step = 0; step < 20000; ++step) {
      unsigned char*& block = blocks[random() % blocks.size()];
      if (*block != number) ++wrong;
      if (step % 3 == 0) {
        KernelFree(block, 2, kHere);
        block = static_cast<unsigned char*>(KernelAllocZero(random() % 3000 + 1, 1, 1, kHere));
        *block = static_cast<unsigned char>(number);
      } else {
        block = static_cast<unsigned char*>(KernelRealloc(block, random() % 3000 + 1, 3, kHere));
      }
    }
    for (unsigned char* const block : blocks) KernelFree(block, 4, kHere);
  });
  EXPECT_EQ(wrong, 0);
  EXPECT_EQ(Usage().liveBlocks, 0U);
  EXPECT_EQ(Usage().liveBytes, 0U);
}

TEST_F(Threads, OpenReadAndCloseFiles) {
  Put("file", "abcdef");
  const std::u16string path = WidePathOf("file");
  std::atomic<int> wrong{0};
  Run([&](unsigned) {
    for (int i = 0; i < 500; ++i) {
      const uint64_t handle = KernelFileOpen(path.c_str(), KERNEL_OPEN_READ, KERNEL_OPEN_MODE);
      char bytes[6];
      if (KernelFileRead(handle, bytes, 6) != 6 || std::memcmp(bytes, "abcdef", 6) != 0) ++wrong;
      KernelFileClose(handle);
      if (KernelFileRead(handle, bytes, 1) != 0) ++wrong;
    }
  });
  EXPECT_EQ(wrong, 0);
  EXPECT_EQ(Usage().openHandles, 0U);
}

TEST_F(Threads, MakeTemporaryFilesAndMemoryFiles) {
  const std::u16string root = Widen(Root());
  std::atomic<int> wrong{0};
  Run([&](unsigned) {
    for (int i = 0; i < 200; ++i) {
      char16_t name[264];
      if (KernelTempFileName(root.c_str(), name, 264, 1, u"pst", nullptr) != 1) ++wrong;
      KernelDeleteFile(name);
      uint64_t handle = 0;
      void* state = nullptr;
      if (KernelMemFileOpen(&handle, &state, KERNEL_MEMFILE_EMPTY, nullptr, 0, 0) != 1) ++wrong;
      if (KernelFileWrite(handle, "abc", 3) != 3) ++wrong;
      KernelFileClose(handle);
      if (KernelMemFileClose(state, nullptr, nullptr, nullptr) != 1) ++wrong;
    }
  });
  EXPECT_EQ(wrong, 0);
  EXPECT_EQ(Entries(), 0U);
  EXPECT_EQ(Usage().temporaryFiles, 0U);
}

// All draw the same name first: one makes the file, and the failures of the others are not to take
// its note away.
TEST_F(Threads, MakeOneFileOfOneName) {
  constexpr unsigned kRounds = 1000;
  const std::u16string root = Widen(Root());
  std::array<std::array<char16_t, 264>, kThreads> names;
  std::atomic<unsigned> arrived{0};
  std::atomic<unsigned> ready{0};
  std::atomic<int> wrong{0};
  Run([&](unsigned number) {
    for (unsigned round = 1; round <= kRounds; ++round) {
      if (number == 0) {
        while (arrived.load() != (round - 1) * kThreads) std::this_thread::yield();
        GiveZeros(kThreads);
        ready = round;
      }
      while (ready.load() < round) std::this_thread::yield();
      char16_t* const name = names[number].data();
      if (KernelTempFileName(root.c_str(), name, 264, 1, u"pst", nullptr) != 1) ++wrong;
      ++arrived;
      while (arrived.load() < round * kThreads) std::this_thread::yield();
      if (number != 0) continue;
      if (Usage().temporaryFiles != kThreads) ++wrong;
      for (const auto& made : names) KernelDeleteFile(made.data());
    }
  });
  GiveZeros(0);
  EXPECT_EQ(wrong, 0);
  EXPECT_EQ(Entries(), 0U);
  EXPECT_EQ(Usage().temporaryFiles, 0U);
}

// Settings are the process's: what a call meets is one of the values, whole.
TEST_F(Threads, ChangeTheSettings) {
  const std::array<std::string, 2> names = {"one", "a-directory-with-a-much-longer-name"};
  for (const std::string& name : names) std::filesystem::create_directory(NativePathOf(name));
  const std::array<std::u16string, 2> directories = {WidePathOf(names[0]), WidePathOf(names[1])};
  PlainKernelSetTempDirectory(directories[0].c_str());
  std::atomic<int> wrong{0};
  Run([&](unsigned number) {
    for (unsigned i = 0; i < 500; ++i) {
      PlainKernelSetTempDirectory(directories[(number + i) % 2].c_str());
      PlainKernelSetLanguage(i % 2 == 0 ? 0x0407 : 0x0411);
      PlainKernelSetMemoryBudget(i % 2 == 0 ? 1000 : UINT64_MAX);
      PlainKernelSetIoMode(i % 2 == 0 ? 0 : 3);
      char16_t name[264];
      if (KernelTempFileName(nullptr, name, 264, 1, u"pst", nullptr) != 1) ++wrong;
      const std::u16string made = name;
      const auto isIn = [&](const std::u16string& directory) {
        return made.size() == directory.size() + 1 + 3 + 16 && made.starts_with(directory);
      };
      if (!isIn(directories[0]) && !isIn(directories[1])) ++wrong;
      KernelDeleteFile(name);
      const uint32_t language = KernelGetLanguage();
      if (language != 0x0407 && language != 0x0411) ++wrong;
      const int32_t mode = KernelIoModeGet();
      if (mode != 0 && mode != 3) ++wrong;
      if (KernelMemoryReport(KERNEL_MEMORY_WANT, 10, 0) != 1) ++wrong;
      KernelMemoryReport(KERNEL_MEMORY_RETURN, 10, 0);
      if (Usage().reportedBytes > kThreads * 10) ++wrong;
    }
  });
  EXPECT_EQ(wrong, 0);
  for (const std::string& name : names) EXPECT_TRUE(std::filesystem::is_empty(NativePathOf(name)));
  EXPECT_EQ(Usage().temporaryFiles, 0U);
}

TEST_F(Threads, ExactlyOneCallFails) {
  std::atomic<int> failed{0};
  PlainKernelFailAt(PlainKernelFaultText, 1000);
  Run([&failed](unsigned) {
    char out[2];
    for (int i = 0; i < 1000; ++i) {
      if (KernelWideToUtf8(u"a", 1, out, 2) == 0) ++failed;
    }
  });
  EXPECT_EQ(failed, 1);
}

TEST_F(Threads, TrackAndReport) {
  Run([](unsigned) {
    int object = 0;
    for (int i = 0; i < 2000; ++i) {
      KernelTrackObject(KERNEL_TRACK_OBJECT, &object, 1, kHere);
      KernelMemoryReport(KERNEL_MEMORY_WANT, 3, 0);
      KernelMemoryReport(KERNEL_MEMORY_RETURN, 3, 0);
      KernelUntrackObject(KERNEL_TRACK_OBJECT, &object, 2, kHere);
    }
  });
  EXPECT_EQ(Usage().liveTrackedObjects, 0U);
  EXPECT_EQ(Usage().reportedBytes, 0U);
}

}  // namespace
}  // namespace tarn::test
