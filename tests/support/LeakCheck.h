// LeakCheck.h - fails every test that leaves something behind in the kernel. To see where it came
// from, run that test alone with TARNBASE_REPORT_LEAKS=1 in the environment.
#ifndef TARN_TESTS_SUPPORT_LEAKCHECK_H
#define TARN_TESTS_SUPPORT_LEAKCHECK_H

#include <gtest/gtest.h>

#include "Tarnbase/PlainKernel.h"

namespace tarn::test {

// All controls of the plain kernel as they are in a fresh process: no faults, English, the
// temp-file route, the system's temporary directory, no budget.
void ResetPlainKernel();

// For a call that is documented to leave blocks behind: the test in hand may leave so many more.
void AllowBlocksLeft(uint64_t count);

// Before each test (its fixture included) resets the kernel and notes what it holds; after it, adds
// a failure for each kind of thing of which the kernel holds another number: blocks, tracked
// objects, handles, reported bytes, temporary files.
class LeakCheck : public ::testing::EmptyTestEventListener {
 public:
  void OnTestStart(const ::testing::TestInfo& test) override;
  void OnTestEnd(const ::testing::TestInfo& test) override;

 private:
  PlainKernelUsageRecord before_ = {};
};

}  // namespace tarn::test

#endif
