// Every call of the kernel that a road makes fails, alone and with all after it: what the host gets
// is then a documented failure without content, or the whole content, or what a stated place makes
// of it.
// Whatever failed, nothing is left behind, and the next call gives the whole content.

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <utility>

#include "faults/FaultInputs.h"
#include "faults/FaultOutcome.h"
#include "faults/StatedPlaces.h"

namespace tarn::test {
namespace {

constexpr int32_t kGroups[] = {PlainKernelFaultMemory, PlainKernelFaultOpen, PlainKernelFaultRead,
                               PlainKernelFaultWrite,  PlainKernelFaultSeek, PlainKernelFaultText,
                               PlainKernelFaultBudget};

struct Fault {
  int32_t group;
  uint64_t ordinal;
  bool andAllAfter;

  void set() const {
    andAllAfter ? PlainKernelFailFrom(group, ordinal) : PlainKernelFailAt(group, ordinal);
  }
  void end() const { PlainKernelFailAt(group, 0); }
};

// One more call of any group, to see whether it fails: then the fault has been reached, or lay just
// ahead.
class Probe {
 public:
  Probe() {
    EXPECT_EQ(KernelMemFileOpen(&handle_, &state_, KERNEL_MEMFILE_EMPTY, nullptr, 0, 0), 1);
  }
  Probe(const Probe&) = delete;
  Probe& operator=(const Probe&) = delete;
  ~Probe() {
    KernelFileClose(handle_);
    KernelMemFileClose(state_, nullptr, nullptr, nullptr);
  }

  bool fails(int32_t group) {
    char byte = 'x';
    char16_t unit = u'x';
    switch (group) {
      case PlainKernelFaultMemory: {
        void* const block = KernelAlloc(1, 1, 1, u"probe");
        if (block != nullptr) KernelFree(block, 1, u"probe");
        return block == nullptr;
      }
      case PlainKernelFaultOpen: {
        uint64_t handle = 0;
        void* state = nullptr;
        const int32_t opened =
            KernelMemFileOpen(&handle, &state, KERNEL_MEMFILE_EMPTY, nullptr, 0, 0);
        if (opened != 1) return true;
        KernelFileClose(handle);
        KernelMemFileClose(state, nullptr, nullptr, nullptr);
        return false;
      }
      case PlainKernelFaultRead:
        KernelFileSeek(handle_, 0, KERNEL_SEEK_START);
        EXPECT_EQ(KernelFileWrite(handle_, &byte, 1), 1u);
        KernelFileSeek(handle_, 0, KERNEL_SEEK_START);
        return KernelFileRead(handle_, &byte, 1) != 1;
      case PlainKernelFaultWrite:
        KernelFileSeek(handle_, 0, KERNEL_SEEK_START);
        return KernelFileWrite(handle_, &byte, 1) != 1;
      case PlainKernelFaultSeek:
        return KernelFileSeek(handle_, 0, KERNEL_SEEK_START) != 0;
      case PlainKernelFaultText:
        return KernelUtf8ToWide(&byte, 1, &unit, 1) != 1;
      default:
        if (KernelMemoryReport(KERNEL_MEMORY_WANT, 1, 0) != 1) return true;
        KernelMemoryReport(KERNEL_MEMORY_RETURN, 1, 0);
        return false;
    }
  }

 private:
  uint64_t handle_ = KERNEL_BAD_HANDLE;
  void* state_ = nullptr;
};

class FaultSweep : public ::testing::TestWithParam<FaultInput> {
 protected:
  void sweep(FakeHost& host, int32_t group);
  void check(const FaultOutcome& seen, const Fault& fault);
  bool isStated(const FaultOutcome& seen, int32_t group);

  const FaultInput& input_ = GetParam();
  FaultOutcome whole_;
  std::set<std::string> met_;
};

// What failing calls of a group can end in. A message of a store that breaks leaves its record
// empty, which is refused with -9.
bool IsDocumented(FaultFormat format, int32_t group, int32_t status) {
  using Statuses = std::set<int32_t>;
  static const std::map<int32_t, Statuses> kAnyFormat = {
      {PlainKernelFaultMemory, {StatusOutOfMemory}},
      {PlainKernelFaultOpen, {StatusOpenFailed, StatusCreateFailed}},
      {PlainKernelFaultRead, {StatusReadFailed}},
      {PlainKernelFaultWrite, {StatusWriteFailed}},
      {PlainKernelFaultSeek, {StatusReadFailed, StatusSeekFailed}},
      // A renderer that fails on a store or an MSG file is -1, whatever failed in it.
      {PlainKernelFaultText,
       {StatusFailed, StatusOutOfMemory, StatusPathToUtf8Failed, StatusPathFromUtf8Failed}},
      {PlainKernelFaultBudget, {StatusOutOfMemory}}};
  static const std::map<std::pair<FaultFormat, int32_t>, Statuses> kMore = {
      {{FaultFormat::Msg, PlainKernelFaultOpen}, {StatusMsgOpenFailed}},
      {{FaultFormat::Msg, PlainKernelFaultRead}, {StatusNotSupported}},
      {{FaultFormat::Pst, PlainKernelFaultMemory}, {StatusNotSupported, kThrown}},
      {{FaultFormat::Pst, PlainKernelFaultOpen}, {kThrown}},
      {{FaultFormat::Pst, PlainKernelFaultRead}, {StatusNotSupported, kThrown}},
      {{FaultFormat::Pst, PlainKernelFaultSeek}, {StatusNotSupported, kThrown}}};
  const auto more = kMore.find({format, group});
  return kAnyFormat.at(group).contains(status) ||
         (more != kMore.end() && more->second.contains(status));
}

// A failure that gives nothing away and leaves nothing behind.
bool IsCleanFailure(const FaultOutcome& seen) {
  return seen.status != StatusOk && seen.siblings == 0 && !seen.hasList && !seen.hasExtracted &&
         seen.left.empty();
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
      << "group " << fault.group << " call " << fault.ordinal << " status " << seen.status;
  if (seen == whole_ || IsCleanFailure(seen) || isStated(seen, fault.group)) return;
  ADD_FAILURE() << "group " << fault.group << (fault.andAllAfter ? " from call " : " call ")
                << fault.ordinal << " status " << seen.status << " differs in"
                << Differences(seen, whole_) << "of " << whole_.document.size() << "\n document "
                << Excerpt(seen.document, whole_.document) << "\n list "
                << Excerpt(seen.list, whole_.list) << "\n extracted "
                << Excerpt(seen.extracted, whole_.extracted) << "\n left " << seen.left;
}

void FaultSweep::sweep(FakeHost& host, int32_t group) {
  constexpr uint64_t kMostCalls = 5000;
  bool isReached = true;
  for (uint64_t ordinal = 1; isReached; ++ordinal) {
    ASSERT_LT(ordinal, kMostCalls);
    for (const bool andAllAfter : {false, true}) {
      Probe probe;
      const Fault fault = {group, ordinal, andAllAfter};
      fault.set();
      const FaultOutcome seen = Perform(host, input_);
      if (andAllAfter) isReached = probe.fails(group);
      fault.end();
      check(seen, fault);
    }
    EXPECT_EQ(Differences(Perform(host, input_), whole_), " ") << ordinal;
  }
}

TEST_P(FaultSweep, NoFailureLooksLikeASuccess) {
  PlainKernelSetIoMode(input_.route == FaultRoute::ByFile ? 0 : KERNEL_IO_IN_MEMORY);
  FakeHost host(input_.file());
  whole_ = Perform(host, input_);
  ASSERT_EQ(whole_.status, StatusOk);
  ASSERT_EQ(whole_.left, "");
  for (const int32_t group : kGroups) {
    if ((input_.groups >> group & 1) != 0) sweep(host, group);
  }
  for (const StatedPlace& place : StatedPlaces()) {
    if (place.metBy == std::string_view(input_.name)) {
      EXPECT_TRUE(met_.contains(place.name)) << place.name;
    }
  }
}

TEST(StatedPlaces, AreOnTheirPage) {
  const std::string page = ReadWholeFile(TARN_FAILURES_PAGE);
  for (const StatedPlace& place : StatedPlaces()) {
    EXPECT_NE(page.find("| " + std::string(place.name) + " |"), std::string::npos) << place.name;
  }
}

INSTANTIATE_TEST_SUITE_P(All, FaultSweep,
                         ::testing::ValuesIn(FaultInputs().begin(), FaultInputs().end()),
                         [](const ::testing::TestParamInfo<FaultInput>& row) {
                           return std::string(row.param.name);
                         });

}  // namespace
}  // namespace tarn::test
