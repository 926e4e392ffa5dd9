// The stack that the filter takes: every call on every hostile shape and on every example, on a
// thread of 256 KiB, the calling host's part and what a thread itself needs included.
#include <gtest/gtest.h>

#include "HostileInput.h"
#include "Tarnbase/PlainKernel.h"
#include "support/StackLimit.h"

namespace tarn::test {
namespace {

constexpr size_t kStack = TARN_TEST_STACK;  // 256 KiB in a release

class Stack : public HostileCalls {
 protected:
  void expectRoom(const std::filesystem::path& file) {
    const size_t used = RunOnStackOf(kStack, [&] { makeCalls(file); });
    EXPECT_GT(answers_, 10);
    EXPECT_LT(used, kStack);
    RecordProperty("stack", std::to_string(used));
  }
};

// A part of what measurements begin with is still a thousand levels where there are levels.
TEST_P(Stack, OfEveryCallHas256Kilobytes) {
  expectRoom(write(GetParam().shape->count / TARN_TEST_SHARE));
}

INSTANTIATE_TEST_SUITE_P(Hostile, Stack, ::testing::ValuesIn(HostileInputs()), NameOfInput);

class StackOfExamples : public Stack {};

TEST_F(StackOfExamples, Has256Kilobytes) {
  int files = 0;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(EXAMPLES_PATH)) {
    if (!entry.is_regular_file()) continue;
    SCOPED_TRACE(entry.path().string());
    answers_ = 0;
    expectRoom(entry.path());
    ++files;
  }
  EXPECT_GT(files, 20);
}

// The measurement itself: a large array shows, beside what a thread needs to begin and to end.
TEST(StackUse, IsSeen) {
  constexpr size_t kRoom = kStack / 4 * 3;
  const size_t little = RunOnStackOf(kStack, [] {});
  const size_t much = RunOnStackOf(kStack, [] {
    volatile char room[kRoom];
    for (volatile char& byte : room) byte = 'x';
  });
  if (little == 0) GTEST_SKIP() << "the system does not tell";
  EXPECT_LT(little, kStack / 2);
  EXPECT_GE(much, kRoom);
}

}  // namespace
}  // namespace tarn::test
