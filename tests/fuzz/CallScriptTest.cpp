// Calls at the end of an input.
#include "mutators/CallScript.h"

#include <gtest/gtest.h>

#include "PlainBytes.h"

namespace tarn::test {
namespace {

using namespace tarn::fuzz;

std::string Text(const std::vector<CallStep>& steps) {
  std::string text;
  for (const CallStep& step : steps) {
    text += std::to_string(static_cast<int>(step.operation)) + ":" + std::to_string(step.argument);
    text += " ";
  }
  return text;
}

TEST(CallScript, StandsAfterTheFile) {
  const std::string input = JoinCallInput("file", {{CallOperation::Load, 7}});
  EXPECT_EQ(input, std::string("file\x01\x07\x01"
                               "CALLS\n"));
  const CallInput split = SplitCallInput(input);
  EXPECT_EQ(split.file, "file");
  EXPECT_EQ(Text(split.steps), "1:7 ");
}

TEST(CallScript, WithoutAnEndTheFileGetsTheUsualCalls) {
  EXPECT_EQ(SplitCallInput("a mail").file, "a mail");
  EXPECT_EQ(Text(SplitCallInput("a mail").steps), Text(UsualCalls()));
  // A count beyond what is there, and no count.
  EXPECT_EQ(SplitCallInput("a\x02"
                           "CALLS\n")
                .file,
            "a\x02"
            "CALLS\n");
  EXPECT_EQ(SplitCallInput("CALLS\n").file, "CALLS\n");
}

TEST(CallScript, TakesOperationsModuloTheirNumberAndNoMoreStepsThanItsMost) {
  const auto count = static_cast<char>(CallOperation::Count);
  const std::string input = std::string{static_cast<char>(count + 1), 5, 1} + "CALLS\n";
  EXPECT_EQ(Text(SplitCallInput(input).steps), "1:5 ");
  const std::string many(100, '\0');
  const std::string manySteps = "f" + many + "\x32" + "CALLS\n";
  const CallInput split = SplitCallInput(manySteps);
  EXPECT_EQ(split.file, "f");
  EXPECT_EQ(split.steps.size(), kMostCallSteps);
}

TEST(CallScript, MutationsChangeTheFileOrTheCalls) {
  const FileMutation onlyFile =
      WithCalls([](std::string& file, size_t, Dice&, const ByteMutation&) {
        file = "other";
        return true;
      });
  const std::string input = JoinCallInput("file", UsualCalls());
  size_t files = 0;
  size_t calls = 0;
  MakeMutants(onlyFile, input, 100, 200, [&](const std::string& mutant) {
    const CallInput split = SplitCallInput(mutant);
    const bool sameCalls = Text(split.steps) == Text(UsualCalls());
    EXPECT_NE(split.file == "other", split.file == "file");
    files += split.file == "other" && sameCalls ? 1 : 0;
    calls += split.file == "file" && !sameCalls ? 1 : 0;
    EXPECT_LE(split.steps.size(), kMostCallSteps);
  });
  EXPECT_GT(files, 100U);
  EXPECT_GT(calls, 10U);
}

TEST(CallScript, TheCustomMutatorFallsBackToPlainBytes) {
  const FileMutation nothing = [](std::string& file, size_t, Dice&, const ByteMutation&) {
    file = "half done";
    return false;
  };
  const ByteMutation append = [](std::string& bytes, size_t) { bytes += "!"; };
  uint8_t data[8] = {'a', 'b'};
  EXPECT_EQ(MutateInput(data, 2, sizeof data, 1, nothing, append), 3U);
  EXPECT_EQ(std::string(reinterpret_cast<char*>(data), 3), "ab!");
  const FileMutation tooLong = [](std::string& file, size_t, Dice&, const ByteMutation&) {
    file.assign(9, 'x');
    return true;
  };
  EXPECT_EQ(MutateInput(data, 2, sizeof data, 1, tooLong, append), 3U);
}

}  // namespace
}  // namespace tarn::test
