#include "archive/cluster/TaskCuts.h"

#include <algorithm>
#include <memory>
#include <queue>
#include <utility>

#include "console/Failure.h"

namespace tarn::archive {
namespace {

std::unique_ptr<PlanReader> OpenPlan(const PlanPlace& place) {
  Outcome<std::unique_ptr<PlanReader>> plan = PlanReader::open(place);
  if (!plan) throw host::Failure(host::ExitStatus::Failed, plan.trouble().reason);
  return std::move(*plan);
}

std::optional<PlanEntry> NextOf(PlanReader& plan) {
  Outcome<std::optional<PlanEntry>> entry = plan.next();
  if (!entry) throw host::Failure(host::ExitStatus::Failed, entry.trouble().reason);
  return std::move(*entry);
}

class Cutter {
 public:
  Cutter(const std::vector<InputCost>& inputs, const CutLimits& limits) : limits_(limits) {
    for (const InputCost& input : inputs) {
      if (input.cost != 0) inputs_.push_back(&input);
      rest_ += input.cost;
    }
    std::sort(inputs_.begin(), inputs_.end(), [](const InputCost* one, const InputCost* other) {
      return one->cost != other->cost ? one->cost > other->cost : one->input < other->input;
    });
    const uint64_t wanted =
        (rest_ + limits.targetCost - 1) / std::max<uint64_t>(limits.targetCost, 1);
    left_ = std::clamp<uint64_t>(wanted, 1, std::max<uint64_t>(limits.maxTasks, 1));
  }

  std::vector<PlannedTask> run() {
    placeLarge();
    begin_ = tasks_.size();
    tasks_.resize(begin_ + left_);
    for (const InputCost* const input : inputs_) {
      if (isCut(*input)) cut(*input);
    }
    packSmall();
    std::erase_if(tasks_, [](const PlannedTask& task) { return task.ranges.empty(); });
    for (PlannedTask& task : tasks_) {
      std::sort(task.ranges.begin(), task.ranges.end(),
                [](const PlannedRange& one, const PlannedRange& other) {
                  return one.input != other.input ? one.input < other.input
                                                  : one.first < other.first;
                });
    }
    std::stable_sort(
        tasks_.begin(), tasks_.end(),
        [](const PlannedTask& one, const PlannedTask& other) { return one.cost > other.cost; });
    return std::move(tasks_);
  }

 private:
  uint64_t share() const { return std::max<uint64_t>(rest_ / left_, 1); }
  // Smaller ones are packed as they are.
  bool isCut(const InputCost& input) const {
    return input.canBeCut && input.cost > share() / kSmallest;
  }

  // Inputs that cannot be cut and are more than a task by themselves.
  void placeLarge() {
    std::erase_if(inputs_, [this](const InputCost* input) {
      if (input->canBeCut || input->cost <= share() || left_ == 1) return false;
      tasks_.emplace_back();
      addWhole(tasks_.back(), *input);
      rest_ -= input->cost;
      --left_;
      return true;
    });
  }

  static void addWhole(PlannedTask& task, const InputCost& input) {
    task.ranges.push_back({input.input, 0, input.messages, std::nullopt});
    task.cost += input.cost;
    task.bytes += input.bytes;
    task.messages += input.messages;
  }

  // How much more the task at hand is to cost; measured from the first, so that what is too much or
  // too little of one does not add up.
  int64_t room() const {
    return static_cast<int64_t>(share() * (task_ + 1)) - static_cast<int64_t>(filled_);
  }
  bool isLast() const { return task_ + 1 == left_; }
  int64_t sliver() const { return static_cast<int64_t>(share() / kSliver); }

  void cut(const InputCost& input) {
    const std::unique_ptr<PlanReader> plan = OpenPlan(input.plan);
    uint64_t first = 0;
    for (uint64_t left = input.cost; left != 0;) {
      // One that is larger than a task may have filled several.
      while (room() <= sliver() && !isLast()) ++task_;
      const bool takesAll = isLast() || static_cast<int64_t>(left) <= room() + sliver();
      if (takesAll && first == 0) {
        addWhole(tasks_[begin_ + task_], input);
        filled_ += left;
        return;
      }
      const uint64_t before = filled_;
      PlannedRange range = takeRange(*plan, takesAll);
      if (range.entries == 0) {
        throw host::Failure(host::ExitStatus::Failed, "the plan of a source has changed");
      }
      range.input = input.input;
      range.first = first;
      first += range.entries;
      left -= filled_ - before;
      tasks_[begin_ + task_].ranges.push_back(std::move(range));
    }
  }

  PlannedRange takeRange(PlanReader& plan, bool takesAll) {
    PlannedTask& task = tasks_[begin_ + task_];
    RangeBuilder builder;
    while (takesAll || room() > 0) {
      std::optional<PlanEntry> entry = NextOf(plan);
      if (!entry) break;
      const uint64_t cost = CostOf(*entry, limits_.messageCost);
      task.cost += cost;
      task.bytes += entry->bytes;
      ++task.messages;
      filled_ += cost;
      builder.add(std::move(*entry));
    }
    PlannedRange range;
    range.range = builder.take();
    range.entries = range.range->entries;
    return range;
  }

  void packSmall() {
    using Load = std::pair<uint64_t, size_t>;
    std::priority_queue<Load, std::vector<Load>, std::greater<>> loads;
    for (size_t task = begin_; task < tasks_.size(); ++task) loads.emplace(tasks_[task].cost, task);
    for (const InputCost* const input : inputs_) {
      if (isCut(*input)) continue;
      const size_t task = loads.top().second;
      loads.pop();
      addWhole(tasks_[task], *input);
      loads.emplace(tasks_[task].cost, task);
    }
  }

  static constexpr uint64_t kSmallest = 4;
  static constexpr uint64_t kSliver = 64;

  const CutLimits& limits_;
  std::vector<const InputCost*> inputs_;  // the largest first
  uint64_t rest_ = 0;                     // cost of what is to be shared out
  uint64_t left_ = 1;                     // tasks for that
  std::vector<PlannedTask> tasks_;
  size_t begin_ = 0;  // of the tasks that are filled
  uint64_t task_ = 0;
  uint64_t filled_ = 0;  // cost of what was cut
};

}  // namespace

uint64_t CostOf(const PlanEntry& entry, uint64_t messageCost) { return entry.bytes + messageCost; }

InputCost CostOfInput(size_t input, PlanPlace plan, uint64_t fileBytes, bool mayBeCut,
                      uint64_t messageCost) {
  InputCost cost;
  cost.input = input;
  cost.canBeCut = mayBeCut;
  const std::unique_ptr<PlanReader> entries = OpenPlan(plan);
  while (const std::optional<PlanEntry> entry = NextOf(*entries)) {
    cost.cost += CostOf(*entry, messageCost);
    cost.bytes += entry->bytes;
    ++cost.messages;
    if (!RangeBuilder::takes(*entry)) cost.canBeCut = false;
  }
  // Of files with one item the size is known without opening them.
  if (!cost.canBeCut && cost.messages != 0 && cost.bytes == 0) {
    cost.bytes = fileBytes;
    cost.cost += fileBytes;
  }
  if (cost.canBeCut) cost.plan = std::move(plan);
  return cost;
}

std::vector<PlannedTask> CutTasks(const std::vector<InputCost>& inputs, const CutLimits& limits) {
  return Cutter(inputs, limits).run();
}

}  // namespace tarn::archive
