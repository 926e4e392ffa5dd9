// FaultSweep.h - one call of the kernel after the other fails in a piece of work.
//
//   const uint64_t calls = SweepFaults(PlainKernelFaultMemory, [](FaultedWork& faulted) {
//     MailMessage message = Prepared();
//     const int32_t status = faulted([&] { return Render(message); });
//     EXPECT_EQ(status, faulted.isReached() ? StatusOutOfMemory : StatusOk);
//   });
//   EXPECT_GE(calls, 4u);
//
// The round runs with the first call of the group failing that the work makes, then with the
// second, and so on, and last with none. What it makes before and after the work does not fail.
// A round that leaves anything behind in the kernel fails.
#ifndef TARN_TESTS_SUPPORT_FAULTSWEEP_H
#define TARN_TESTS_SUPPORT_FAULTSWEEP_H

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>

#include "Tarnbase/PlainKernel.h"

namespace tarn::test {

inline constexpr int32_t kFaultGroups[] = {
    PlainKernelFaultMemory, PlainKernelFaultOpen, PlainKernelFaultRead,  PlainKernelFaultWrite,
    PlainKernelFaultSeek,   PlainKernelFaultText, PlainKernelFaultBudget};

struct Fault {
  int32_t group;
  uint64_t ordinal;
  bool andAllAfter = false;

  void set() const;
  void end() const;
};

// "memory call 3", "seek call 7 and all after it".
std::string Describe(const Fault& fault);

// What the kernel holds: two texts differ when anything was left or taken. Peaks do not count.
std::string HeldByKernel();

// Makes calls of a group to learn whether a fault that was set is still ahead.
class FaultProbe {
 public:
  // To be made before the fault is set.
  FaultProbe();
  FaultProbe(const FaultProbe&) = delete;
  FaultProbe& operator=(const FaultProbe&) = delete;
  ~FaultProbe();

  // How far ahead a fault of one call may be.
  static constexpr int kFarthest = 8;

  // Whether one of the next calls fails, no more than kFarthest of them. Afterwards the fault is
  // to be ended.
  bool isAhead(int32_t group);

 private:
  bool fails(int32_t group);

  uint64_t handle_ = KERNEL_BAD_HANDLE;
  void* state_ = nullptr;
};

// The work of one round.
class FaultedWork {
 public:
  explicit FaultedWork(const Fault& fault) : fault_(fault) {}

  // Runs the work with the fault; exceptions come through. Once a round.
  template <typename Work>
  decltype(auto) operator()(Work&& work) {
    const Injection injection(*this);
    return std::forward<Work>(work)();
  }

  // Whether a call has failed. Known once the work has run.
  bool isReached() const { return isReached_; }
  uint64_t ordinal() const { return fault_.ordinal; }
  bool andAllAfter() const { return fault_.andAllAfter; }

 private:
  class Injection {
   public:
    explicit Injection(FaultedWork& work) : work_(work) { work_.fault_.set(); }
    Injection(const Injection&) = delete;
    Injection& operator=(const Injection&) = delete;
    ~Injection() {
      work_.isReached_ = work_.fault_.andAllAfter || !work_.probe_.isAhead(work_.fault_.group);
      work_.fault_.end();
    }

   private:
    FaultedWork& work_;
  };

  Fault fault_;
  FaultProbe probe_;
  bool isReached_ = true;
};

// As the work, where there is none to be faulted.
template <typename Work>
decltype(auto) RunFaulted(FaultedWork* faulted, Work&& work) {
  return faulted != nullptr ? (*faulted)(std::forward<Work>(work)) : std::forward<Work>(work)();
}

enum class FaultKinds {
  OneCall,     // the calls after the one that failed succeed
  OneAndFrom,  // each round is repeated with all calls after the failing one failing too
};

// The rounds alone; what they leave is not looked at. Returns the number of calls that failed one
// by one: as many as the work makes.
template <typename Round>
uint64_t FailInTurn(int32_t group, Round&& round, FaultKinds kinds = FaultKinds::OneCall) {
  constexpr uint64_t kMostCalls = 10000;
  const auto isReached = [&](const Fault& fault) {
    const ::testing::ScopedTrace trace(__FILE__, __LINE__, Describe(fault));
    FaultedWork work(fault);
    round(work);
    return work.isReached();
  };
  for (uint64_t ordinal = 1; ordinal <= kMostCalls; ++ordinal) {
    if (!isReached({group, ordinal, false})) return ordinal - 1;
    if (kinds == FaultKinds::OneAndFrom) isReached({group, ordinal, true});
    if (::testing::Test::HasFatalFailure()) return ordinal;
  }
  ADD_FAILURE() << "the work makes more than " << kMostCalls << " calls, or is not run";
  return kMostCalls;
}

// As FailInTurn, and each round leaves nothing behind.
template <typename Round>
uint64_t SweepFaults(int32_t group, Round&& round, FaultKinds kinds = FaultKinds::OneCall) {
  const auto checked = [&round](FaultedWork& work) {
    const std::string before = HeldByKernel();
    round(work);
    EXPECT_EQ(HeldByKernel(), before);
  };
  return FailInTurn(group, checked, kinds);
}

}  // namespace tarn::test

#endif
