// Every call on files of every kind from many threads at once: each thread gets what it gets alone.
// The threads come first, so that they also share the first use of what the filter and the kernel
// keep for the whole process.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <set>
#include <thread>

#include "Tarnbase/PlainKernel.h"
#include "faults/FaultInputs.h"
#include "support/TempDirectory.h"
#include "support/road/AllCalls.h"

namespace tarn::test {
namespace {

constexpr int kThreads = 8;

struct Setting {
  int32_t ioMode;
  uint32_t language;
  const char* name;
};

// The siblings of all threads. The first of each thread waits until every thread is in one; later
// ones sleep now and then, or let others go first.
class Meeting {
 public:
  void arrive() {
    if (hasArrived_) return;
    hasArrived_ = true;
    --awaited_;
  }

  void inSibling() {
    arrive();
    while (awaited_ > 0) std::this_thread::yield();
    if (++visits_ % 16 == 0) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    } else {
      std::this_thread::yield();
    }
  }

  int visits() const { return visits_; }

 private:
  static thread_local bool hasArrived_;
  std::atomic<int> awaited_{kThreads};
  std::atomic<int> visits_{0};
};

thread_local bool Meeting::hasArrived_ = false;

struct Work {
  std::string name;
  std::filesystem::path file;
  int32_t message;
};

// What one thread was answered: for each piece of work, the calls in their order.
using Answers = std::vector<std::vector<Answer>>;

class AllCallsThreads : public ::testing::TestWithParam<Setting> {
 protected:
  AllCallsThreads() {
    std::set<std::pair<std::string (*)(), int32_t>> taken;
    for (const FaultInput& input : FaultInputs()) {
      // Those of few groups are large, for the budget's sake.
      const bool isLarge = input.groups == 1u << PlainKernelFaultBudget;
      if (isLarge || !taken.insert({input.file, input.message}).second) continue;
      work_.push_back({input.name, files_.write(input.name, input.file()), input.message});
    }
    PlainKernelSetTempDirectory(temp_.wide().c_str());
    PlainKernelSetIoMode(GetParam().ioMode);
    PlainKernelSetLanguage(GetParam().language);
  }
  ~AllCallsThreads() override { PlainKernelSetTempDirectory(nullptr); }

  // All of the work, from another piece on in each thread. `out` is the thread's own folder.
  Answers run(size_t first, const std::filesystem::path& out,
              const std::function<void()>& inSibling) const {
    Answers answers(work_.size());
    AllCallsOptions options;
    options.tempFolder = temp_.path();
    options.outFolder = out;
    options.inSibling = inSibling;
    for (size_t i = 0; i < work_.size(); ++i) {
      const size_t number = (first + i) % work_.size();
      options.message = work_[number].message;
      for (const bool textOnly : {false, true}) {
        options.textOnly = textOnly;
        options.asksForAttachments = !textOnly;
        MakeAllCalls(work_[number].file, options,
                     [&](const Answer& answer) { answers[number].push_back(answer); });
      }
    }
    MakeCallsWithoutFile([](const Answer&) {});
    return answers;
  }

  // The calls that were answered otherwise than alone.
  std::string differences(const Answers& answers, const Answers& alone) const {
    std::string text;
    for (size_t i = 0; i < work_.size(); ++i) {
      if (answers[i].size() != alone[i].size()) text += work_[i].name + ": other calls\n";
      for (size_t k = 0; k < std::min(answers[i].size(), alone[i].size()); ++k) {
        const Answer& one = answers[i][k];
        if (one.outcome == alone[i][k].outcome && one.bytes == alone[i][k].bytes) continue;
        text += work_[i].name + ": " + one.call + " gives " + one.outcome + ", not " +
                alone[i][k].outcome + ", or other bytes\n";
      }
    }
    return text;
  }

  std::vector<Work> work_;
  TempDirectory files_;
  TempDirectory temp_;
};

TEST_P(AllCallsThreads, AreAnsweredAsAlone) {
  ASSERT_GT(work_.size(), 20U);
  Meeting meeting;
  std::vector<Answers> results(kThreads);
  std::vector<TempDirectory> folders(kThreads);
  std::vector<std::thread> threads;
  for (size_t i = 0; i < kThreads; ++i) {
    threads.emplace_back([&, i] {
      const size_t first = i * work_.size() / kThreads;
      results[i] = run(first, folders[i].path(), [&meeting] { meeting.inSibling(); });
      meeting.arrive();  // one that met no sibling keeps nobody waiting
    });
  }
  for (std::thread& thread : threads) thread.join();

  int visitsAlone = 0;
  const Answers alone = run(0, folders[0].path(), [&visitsAlone] { ++visitsAlone; });
  EXPECT_GT(visitsAlone, 100);
  EXPECT_EQ(meeting.visits(), visitsAlone * kThreads);
  for (const Answers& answers : results) EXPECT_EQ(differences(answers, alone), "");
  EXPECT_EQ(KernelIoModeGet(), GetParam().ioMode);
  EXPECT_EQ(temp_.listing(), "");
}

INSTANTIATE_TEST_SUITE_P(Modes, AllCallsThreads,
                         ::testing::Values(Setting{0, 0x0409, "TempFiles"},
                                           Setting{KERNEL_IO_IN_MEMORY, 0x0411, "InMemory"}),
                         [](const auto& setting) { return std::string(setting.param.name); });

}  // namespace
}  // namespace tarn::test
