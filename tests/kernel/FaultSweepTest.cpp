// The sweep that tests of single functions share: which calls fail, when it ends, what it notices.

#include "support/FaultSweep.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace tarn::test {
namespace {

// The blocks that could be had, as letters: 'x' for one that failed.
std::string Take(int blocks) {
  std::string taken;
  for (int i = 0; i < blocks; ++i) {
    void* const block = KernelAlloc(1, 1, 1, nullptr);
    taken += block != nullptr ? 'o' : 'x';
    if (block != nullptr) KernelFree(block, 1, nullptr);
  }
  return taken;
}

TEST(SweepFaults, FailsEachCallInTurnAndThenNone) {
  std::vector<std::string> rounds;
  const uint64_t calls = SweepFaults(PlainKernelFaultMemory, [&](FaultedWork& faulted) {
    rounds.push_back(faulted([] { return Take(3); }));
    EXPECT_EQ(faulted.isReached(), rounds.back() != "ooo");
    EXPECT_EQ(faulted.ordinal(), rounds.size());
  });
  EXPECT_EQ(calls, 3u);
  EXPECT_EQ(rounds, (std::vector<std::string>{"xoo", "oxo", "oox", "ooo"}));
}

TEST(SweepFaults, FailsAllAfterACallToo) {
  std::vector<std::string> rounds;
  const auto round = [&](FaultedWork& faulted) {
    rounds.push_back(faulted([] { return Take(2); }));
    EXPECT_EQ(faulted.isReached(), rounds.back() != "oo");
    EXPECT_EQ(faulted.andAllAfter(), rounds.size() % 2 == 0);
  };
  EXPECT_EQ(SweepFaults(PlainKernelFaultMemory, round, FaultKinds::OneAndFrom), 2u);
  EXPECT_EQ(rounds, (std::vector<std::string>{"xo", "xx", "ox", "ox", "oo"}));
}

TEST(SweepFaults, EndsAtOnceWithoutACall) {
  for (const int32_t group : kFaultGroups) {
    EXPECT_EQ(SweepFaults(group, [](FaultedWork& faulted) { faulted([] {}); }), 0u) << group;
  }
}

TEST(SweepFaults, CountsTheCallsOfEachGroup) {
  const auto work = [] {
    uint64_t handle = KERNEL_BAD_HANDLE;
    void* state = nullptr;
    if (KernelMemFileOpen(&handle, &state, KERNEL_MEMFILE_EMPTY, nullptr, 0, 0) != 1) return;
    char bytes[2] = {'x', 'y'};
    KernelFileWrite(handle, bytes, 2);
    KernelFileSeek(handle, 0, KERNEL_SEEK_START);
    KernelFileRead(handle, bytes, 1);
    KernelFileSeek(handle, 0, KERNEL_SEEK_START);
    KernelFileReadLarge(handle, bytes, 1);
    KernelFileClose(handle);
    KernelMemFileClose(state, nullptr, nullptr, nullptr);
    char16_t units[2];
    KernelUtf8ToWide(bytes, 1, units, 2);
    if (KernelMemoryReport(KERNEL_MEMORY_WANT, 5, 0) == 1) {
      KernelMemoryReport(KERNEL_MEMORY_RETURN, 5, 0);
    }
  };
  const auto callsOf = [&](int32_t group) {
    return SweepFaults(group, [&](FaultedWork& faulted) { faulted(work); });
  };
  EXPECT_EQ(callsOf(PlainKernelFaultMemory), 1u);
  EXPECT_EQ(callsOf(PlainKernelFaultOpen), 1u);
  EXPECT_EQ(callsOf(PlainKernelFaultRead), 2u);
  EXPECT_EQ(callsOf(PlainKernelFaultWrite), 1u);
  EXPECT_EQ(callsOf(PlainKernelFaultSeek), 2u);
  EXPECT_EQ(callsOf(PlainKernelFaultText), 1u);
  EXPECT_EQ(callsOf(PlainKernelFaultBudget), 1u);
}

TEST(SweepFaults, LetsOtherCallsOfTheRoundBe) {
  SweepFaults(PlainKernelFaultMemory, [](FaultedWork& faulted) {
    EXPECT_EQ(Take(2), "oo");
    faulted([] { Take(1); });
    EXPECT_EQ(Take(2), "oo");
  });
}

TEST(SweepFaults, EndsTheFaultWhenTheWorkThrows) {
  const uint64_t calls = SweepFaults(PlainKernelFaultMemory, [](FaultedWork& faulted) {
    const auto work = [] {
      if (Take(2) != "oo") throw std::runtime_error("no memory");
    };
    try {
      faulted(work);
      EXPECT_FALSE(faulted.isReached());
    } catch (const std::runtime_error&) {
      EXPECT_TRUE(faulted.isReached());
    }
    EXPECT_EQ(Take(3), "ooo");
  });
  EXPECT_EQ(calls, 2u);
}

TEST(SweepFaults, TellsWhatARoundLeaves) {
  static void* left = nullptr;
  EXPECT_NONFATAL_FAILURE(SweepFaults(PlainKernelFaultMemory,
                                      [](FaultedWork& faulted) {
                                        faulted([] {});
                                        left = KernelAlloc(1, 1, 1, nullptr);
                                      }),
                          "HeldByKernel");
  KernelFree(left, 1, nullptr);
}

TEST(SweepFaults, TellsWorkThatIsNotRun) {
  EXPECT_NONFATAL_FAILURE(SweepFaults(PlainKernelFaultMemory, [](FaultedWork&) {}), "is not run");
}

// A fault that a stride has put up to so many calls beyond the last one is still noticed.
TEST(FaultProbe, SeesFaultsThatAreAhead) {
  for (const int32_t group : kFaultGroups) {
    for (uint64_t ahead = 1; ahead <= FaultProbe::kFarthest; ++ahead) {
      FaultProbe probe;
      const Fault fault = {group, ahead, false};
      fault.set();
      EXPECT_TRUE(probe.isAhead(group)) << Describe(fault);
      EXPECT_FALSE(probe.isAhead(group)) << Describe(fault);
      fault.end();
    }
  }
}

TEST(Fault, HasADescription) {
  EXPECT_EQ(Describe({PlainKernelFaultMemory, 3, false}), "memory call 3");
  EXPECT_EQ(Describe({PlainKernelFaultBudget, 1, true}), "budget call 1 and all after it");
}

}  // namespace
}  // namespace tarn::test
