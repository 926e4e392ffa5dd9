#include "mutators/CallScript.h"

#include <algorithm>
#include <utility>

namespace tarn::fuzz {
namespace {

constexpr std::string_view kMark = "CALLS\n";
constexpr size_t kStepBytes = 2;
constexpr auto kOperations = static_cast<size_t>(CallOperation::Count);

CallStep AnyStep(Dice& dice) {
  return {static_cast<CallOperation>(dice.below(kOperations)), static_cast<uint8_t>(dice.any())};
}

}  // namespace

CallInput SplitCallInput(std::string_view input) {
  if (!input.ends_with(kMark)) return {input, UsualCalls()};
  std::string_view rest = input.substr(0, input.size() - kMark.size());
  if (rest.empty()) return {input, UsualCalls()};
  const size_t count = static_cast<uint8_t>(rest.back());
  rest.remove_suffix(1);
  if (rest.size() < count * kStepBytes) return {input, UsualCalls()};

  CallInput split = {rest.substr(0, rest.size() - count * kStepBytes), {}};
  for (size_t at = split.file.size(); at < rest.size(); at += kStepBytes) {
    if (split.steps.size() == kMostCallSteps) break;
    const size_t operation = static_cast<uint8_t>(rest[at]) % kOperations;
    split.steps.push_back(
        {static_cast<CallOperation>(operation), static_cast<uint8_t>(rest[at + 1])});
  }
  return split;
}

std::string JoinCallInput(std::string_view file, const std::vector<CallStep>& steps) {
  std::string input(file);
  for (const CallStep& step : steps) {
    input.push_back(static_cast<char>(step.operation));
    input.push_back(static_cast<char>(step.argument));
  }
  input.push_back(static_cast<char>(steps.size()));
  return input.append(kMark);
}

std::vector<CallStep> UsualCalls() {
  using enum CallOperation;
  return {{Info, 1},    {Load, 1},          {EndRecord, 0}, {List, 0}, {ExtractToFile, 1},
          {Message, 1}, {Text, 1},          {Info, 0},      {List, 0}, {Extract, 2},
          {Message, 2}, {SlotContent, 0},   {IoMode, 1},    {Text, 0}, {Info, 1},
          {List, 0},    {ExtractToFile, 1}, {Load, 0}};
}

void MutateCalls(std::vector<CallStep>& steps, Dice& dice) {
  const size_t at = dice.below(steps.size());
  // cppcheck-suppress containerOutOfBounds ; `at` is 0 where there are no steps
  const auto place = steps.begin() + static_cast<std::ptrdiff_t>(at);
  const bool isFull = steps.size() >= kMostCallSteps;
  switch (steps.empty() ? 0 : dice.below(6)) {
    case 0:
      if (!isFull) steps.insert(place, AnyStep(dice));
      break;
    case 1:
      steps.erase(place);
      break;
    case 2:
      steps[at].argument = static_cast<uint8_t>(dice.oneIn(2) ? dice.below(4) : dice.any());
      break;
    case 3:
      steps[at] = AnyStep(dice);
      break;
    case 4:
      if (!isFull) steps.push_back(steps[at]);
      break;
    default:
      std::swap(steps[at], dice.pick(steps));
      break;
  }
}

FileMutation WithCalls(FileMutation mutateFile) {
  return [mutateFile = std::move(mutateFile)](std::string& input, size_t most, Dice& dice,
                                              const ByteMutation& mutate) {
    const CallInput split = SplitCallInput(input);
    std::vector<CallStep> steps = split.steps;
    std::string file(split.file);
    const bool hasSteps = input.ends_with(kMark);
    const size_t end = hasSteps ? steps.size() * kStepBytes + 1 + kMark.size() : 0;
    if (file.empty() || dice.oneIn(8)) {
      do MutateCalls(steps, dice);
      while (dice.oneIn(2));
    } else {
      if (most <= end || !mutateFile(file, most - end, dice, mutate)) return false;
      if (!hasSteps) {
        input = std::move(file);
        return true;
      }
    }
    input = JoinCallInput(file, steps);
    return true;
  };
}

size_t MutateInput(uint8_t* data, size_t size, size_t most, uint32_t seed,
                   const FileMutation& mutation, const ByteMutation& mutate) {
  Dice dice(seed);
  const std::string before(reinterpret_cast<const char*>(data), size);
  std::string input = before;
  if (!mutation(input, most, dice, mutate) || input.size() > most || input.empty()) {
    input = before;
    mutate(input, most);
  }
  const size_t length = std::min(input.size(), most);
  std::copy_n(input.data(), length, reinterpret_cast<char*>(data));
  return length;
}

}  // namespace tarn::fuzz
