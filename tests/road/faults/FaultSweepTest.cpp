// Every call of the kernel that a road makes fails, alone and with all after it: what the host gets
// is then a documented failure without content, or the whole content, or what a stated place makes
// of it.
// Whatever failed, nothing is left behind, and the next call gives the whole content.
// FaultStride.h tells how to have all calls fail, and not only every seventh.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <set>
#include <string>

#include "faults/FaultInputs.h"
#include "faults/FaultOutcome.h"
#include "faults/FaultStride.h"
#include "faults/StatedPlaces.h"
#include "faults/SweptStatuses.h"
#include "support/Environment.h"
#include "support/FaultSweep.h"

namespace tarn::test {
namespace {

// Whether failures of the group leave a handle and a record with the process, for good: such sweeps
// have a process of their own.
bool StayWithTheProcess(const FaultInput& input, int32_t group) {
  return input.call == FaultCall::Load && input.route == FaultRoute::ByFile &&
         (group == PlainKernelFaultOpen || group == PlainKernelFaultWrite);
}

class FaultSweep : public ::testing::TestWithParam<FaultInput> {
 protected:
  // Sweeps the groups of the row that stay with the process, or those that do not.
  void sweepAll(bool staying);

 private:
  bool isSwept(int32_t group, bool staying) const {
    return (input_.groups >> group & 1) != 0 && StayWithTheProcess(input_, group) == staying;
  }
  void sweep(FakeHost& host, int32_t group, uint64_t first);
  bool performs(FakeHost& host, const Fault& fault);
  void check(const FaultOutcome& seen, const Fault& fault);
  bool isStated(const FaultOutcome& seen, int32_t group);
  void checkPlaces(bool staying);
  void checkStatuses(bool staying);

  const FaultInput& input_ = GetParam();
  const uint64_t stride_ = FaultStride();
  FaultOutcome whole_;
  std::set<std::string> met_;
  std::map<int32_t, StatusCounts> statuses_;  // by groups, of single failing calls
  uint64_t faultedRuns_ = 0;
};

using FaultSweepDeathTest = FaultSweep;

// A failure that gives nothing away and leaves nothing behind.
bool IsCleanFailure(const FaultInput& input, const FaultOutcome& seen, const FaultOutcome& whole) {
  if (seen.status == StatusOk || seen.hasList || seen.hasExtracted || !seen.left.empty()) {
    return false;
  }
  // The first of two calls may have succeeded, and then it has filled the slot.
  const bool hasFirst = input.call == FaultCall::InfoThenLoad && seen.siblings == 1;
  return hasFirst ? seen.document == whole.document && seen.otherDocument.empty()
                  : seen.siblings == 0 && seen.slot == seen.slotBefore;
}

bool FaultSweep::isStated(const FaultOutcome& seen, int32_t group) {
  bool stated = false;
  for (const StatedPlace& place : StatedPlaces()) {
    if (!place.concerns(input_, group) || !place.explains(input_, seen, whole_)) continue;
    met_.insert(place.name);
    stated = true;
  }
  return stated;
}

std::string Excerpt(const std::string& text, const std::string& other) {
  const auto [at, ignored] = std::mismatch(text.begin(), text.end(), other.begin(), other.end());
  const auto from = static_cast<size_t>(at - text.begin());
  return "\"" + text.substr(from, 60) + "\" at " + std::to_string(from) + " of " +
         std::to_string(text.size());
}

void FaultSweep::check(const FaultOutcome& seen, const Fault& fault) {
  EXPECT_TRUE(seen.status == StatusOk || IsDocumented(input_.format, fault.group, seen.status))
      << Describe(fault) << " status " << seen.status;
  if (seen.status == kThrown) {
    const bool isMemory = fault.group == PlainKernelFaultMemory;
    EXPECT_EQ(seen.isBadAlloc, isMemory) << Describe(fault) << " " << seen.thrown;
    EXPECT_EQ(seen.thrown == "std::bad_alloc", isMemory) << Describe(fault) << " " << seen.thrown;
  }
  if (seen == whole_ || IsCleanFailure(input_, seen, whole_) || isStated(seen, fault.group)) return;
  ADD_FAILURE() << Describe(fault) << " status " << seen.status << " differs in"
                << Differences(seen, whole_) << "of " << whole_.document.size() << "\n document "
                << Excerpt(seen.document, whole_.document) << "\n list "
                << Excerpt(seen.list, whole_.list) << "\n extracted "
                << Excerpt(seen.extracted, whole_.extracted) << "\n slot " << seen.slot
                << "\n left " << seen.left;
}

// Whether a call has failed. The next one, in which none does, gives the whole content again.
bool FaultSweep::performs(FakeHost& host, const Fault& fault) {
  FaultProbe probe;
  const FaultOutcome seen = Perform(host, input_, [&fault] { fault.set(); });
  const bool isReached = fault.andAllAfter || !probe.isAhead(fault.group);
  fault.end();
  if (!fault.andAllAfter) ++statuses_[fault.group][seen.status];
  if (isReached) {
    ++faultedRuns_;
    check(seen, fault);
    EXPECT_EQ(Differences(Perform(host, input_), whole_), " ") << "after " << Describe(fault);
  } else {
    EXPECT_EQ(Differences(seen, whole_), " ") << Describe(fault);
  }
  return isReached;
}

void FaultSweep::sweep(FakeHost& host, int32_t group, uint64_t first) {
  constexpr uint64_t kMostCalls = 5000;
  for (uint64_t ordinal = first;; ordinal += stride_) {
    ASSERT_LT(ordinal, kMostCalls);
    if (!performs(host, {group, ordinal, false})) break;
    performs(host, {group, ordinal, true});
  }
}

// Each stated place is met by the sweep that is said to meet it.
void FaultSweep::checkPlaces(bool staying) {
  for (const StatedPlace& place : StatedPlaces()) {
    if (place.metBy != std::string_view(input_.name)) continue;
    const bool isDue = std::any_of(
        std::begin(kFaultGroups), std::end(kFaultGroups),
        [&](int32_t group) { return isSwept(group, staying) && place.concerns(input_, group); });
    EXPECT_EQ(met_.contains(place.name), isDue) << place.name;
  }
}

// A sweep with a stride need not end in every status.
void FaultSweep::checkStatuses(bool staying) {
  for (const SweptStatuses& swept : AllSweptStatuses()) {
    if (swept.row != input_.name || !isSwept(swept.group, staying)) continue;
    const std::set<int32_t> expected(swept.statuses.begin(), swept.statuses.end());
    std::set<int32_t> seen;
    for (const auto& [status, count] : statuses_[swept.group]) seen.insert(status);
    EXPECT_TRUE(std::includes(expected.begin(), expected.end(), seen.begin(), seen.end()))
        << "group " << swept.group << " " << ::testing::PrintToString(seen);
    if (stride_ != 1) continue;
    EXPECT_EQ(seen, expected) << "group " << swept.group;
    EXPECT_GE(statuses_[swept.group][kThrown], swept.leastThrown) << "group " << swept.group;
  }
}

void FaultSweep::sweepAll(bool staying) {
  ASSERT_NE(stride_, 0u) << "TARN_FAULT_STRIDE is a number from 1 to 7";
  PlainKernelSetIoMode(input_.route == FaultRoute::ByFile ? 0 : KERNEL_IO_IN_MEMORY);
  FakeHost host(input_.file());
  whole_ = Perform(host, input_);
  ASSERT_EQ(whole_.status, StatusOk);
  ASSERT_EQ(whole_.left, "");
  const auto row = std::find_if(
      FaultInputs().begin(), FaultInputs().end(),
      [this](const FaultInput& input) { return input.name == std::string_view(input_.name); });
  const auto place = static_cast<size_t>(row - FaultInputs().begin());
  for (size_t i = 0; i < std::size(kFaultGroups); ++i) {
    const int32_t group = kFaultGroups[i];
    if (isSwept(group, staying)) sweep(host, group, FirstFault(place, i, stride_));
  }
  checkStatuses(staying);
  if (stride_ == 1) checkPlaces(staying);
  RecordProperty("faulted_runs", std::to_string(faultedRuns_));
}

TEST_P(FaultSweep, NoFailureLooksLikeASuccess) { sweepAll(false); }

TEST_P(FaultSweepDeathTest, NoFailureLooksLikeASuccess) {
  // Where an open file cannot be removed, its directory goes once that process has ended.
  const TempDirectory around;
  const std::u8string path = around.path().u8string();
  const ScopedVariable temporary(kTempVariable, std::string(path.begin(), path.end()).c_str());
  EXPECT_EXIT(
      {
        sweepAll(true);
        _Exit(HasFailure() ? 1 : 0);
      },
      ::testing::ExitedWithCode(0), "");
}

std::vector<FaultInput> StayingInputs() {
  std::vector<FaultInput> rows;
  for (const FaultInput& input : FaultInputs()) {
    if (StayWithTheProcess(input, PlainKernelFaultWrite)) rows.push_back(input);
  }
  return rows;
}

std::string NameOfRow(const ::testing::TestParamInfo<FaultInput>& row) { return row.param.name; }

INSTANTIATE_TEST_SUITE_P(All, FaultSweep,
                         ::testing::ValuesIn(FaultInputs().begin(), FaultInputs().end()),
                         NameOfRow);
INSTANTIATE_TEST_SUITE_P(All, FaultSweepDeathTest, ::testing::ValuesIn(StayingInputs()), NameOfRow);

TEST(StatedPlaces, AreOnTheirPage) {
  const std::string page = ReadWholeFile(TARN_FAILURES_PAGE);
  for (const StatedPlace& place : StatedPlaces()) {
    EXPECT_NE(page.find("| " + std::string(place.name) + " |"), std::string::npos) << place.name;
  }
}

bool HasRow(std::string_view name) {
  return std::any_of(FaultInputs().begin(), FaultInputs().end(),
                     [name](const FaultInput& input) { return input.name == name; });
}

TEST(FaultTables, SpeakOfRowsThatThereAre) {
  for (const StatedPlace& place : StatedPlaces()) EXPECT_TRUE(HasRow(place.metBy)) << place.metBy;
  for (const SweptStatuses& swept : AllSweptStatuses()) EXPECT_TRUE(HasRow(swept.row)) << swept.row;
}

// For each group, the sweeps of the table begin with each of the calls up to the stride.
TEST(FaultStride, BeginsWithEachCall) {
  for (size_t group = 0; group < std::size(kFaultGroups); ++group) {
    std::set<uint64_t> firsts;
    for (size_t row = 0; row < FaultInputs().size(); ++row) {
      firsts.insert(FirstFault(row, group, kUsualStride));
      EXPECT_EQ(FirstFault(row, group, 1), 1u);
    }
    EXPECT_EQ(firsts, (std::set<uint64_t>{1, 2, 3, 4, 5, 6, 7}));
  }
}

TEST(FaultStride, IsWhatTheEnvironmentSays) {
  const auto strideOf = [](const char* text) {
    const ScopedVariable variable("TARN_FAULT_STRIDE", text);
    return FaultStride();
  };
  EXPECT_EQ(strideOf("1"), 1u);
  EXPECT_EQ(strideOf("3"), 3u);
  for (const char* none : {"0", "8", "07", "all"}) EXPECT_EQ(strideOf(none), 0u) << none;
}

}  // namespace
}  // namespace tarn::test
