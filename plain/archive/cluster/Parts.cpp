#include "archive/cluster/Parts.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

#include "archive/export/HashedFile.h"
#include "console/Failure.h"
#include "console/Json.h"
#include "console/Paths.h"

namespace tarn::archive {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;

Trouble Damaged(const std::string& what, const std::string& how) {
  return {TroubleKind::Damaged, what + ": " + how};
}

// What cannot be read now may be read later: it is neither missing nor damaged.
void ThrowUnreadable(const Trouble& trouble) {
  if (trouble.kind != TroubleKind::Unreadable) return;
  throw host::Failure(host::ExitStatus::Temporary, trouble.reason);
}

// A part against the plan, its sum, and the sums of its files.
class PartCheck {
 public:
  PartCheck(const PlanFile& plan, const fs::path& tree, uint64_t number)
      : plan_(plan), tree_(tree), number_(number), folder_(PartFolder(tree, number)) {}

  std::optional<Trouble> run() {
    const PlannedTask task = plan_.task(number_);
    for (size_t range = 0; range < task.ranges.size(); ++range) {
      if (std::optional<Trouble> trouble = checkRange(task.ranges[range], range)) return trouble;
    }
    const Outcome<PartFacts> facts = PartIn(folder_);
    if (!facts) return facts.trouble();
    PartFacts summed;
    sum_.finish(summed);
    if (summed.sha256 == facts->sha256) return std::nullopt;
    return Damaged(host::Utf8FromPath(folder_), "does not have its sum");
  }

 private:
  std::optional<Trouble> checkRange(const PlannedRange& range, size_t number) {
    const Outcome<std::vector<FinishedEntry>> entries = EntriesOfRange(folder_, number);
    if (!entries) return entries.trouble();
    const Outcome<std::unique_ptr<PlanReader>> plan =
        PlanReader::open(PlanOfRange(folder_, number));
    if (!plan) return plan.trouble();
    if (std::optional<Trouble> trouble = sum_.addPlan(PlanOfRange(folder_, number))) return trouble;
    if (entries->size() != range.entries) {
      return Damaged(host::Utf8FromPath(folder_),
                     "has " + std::to_string(entries->size()) + " entries where " +
                         std::to_string(range.entries) + " were planned");
    }
    const std::string& source = plan_.inputs().at(range.input).source.tree;
    for (const FinishedEntry& entry : *entries) {
      const Outcome<std::optional<PlanEntry>> planned = (*plan)->next();
      if (!planned) return planned.trouble();
      if (!*planned) return Damaged(host::Utf8FromPath(folder_), "has a plan that is too short");
      if (std::optional<Trouble> trouble = sum_.add(entry)) return trouble;
      const std::string& below = (*planned)->folderPath;
      std::string place = source + "/";
      if (!below.empty()) place.append(below).append("/");
      place.append((*planned)->name).append("/");
      if (std::optional<Trouble> trouble = checkFiles(entry, place)) return trouble;
    }
    return std::nullopt;
  }

  // Those in the item's own folder; what is of several items is put together later.
  std::optional<Trouble> checkFiles(const FinishedEntry& entry, const std::string& place) {
    if (!entry.hasFolder) return std::nullopt;
    fs::path folder = entry.folder / std::to_string(entry.number);
    std::error_code error;
    if (!fs::is_directory(folder, error)) folder = tree_ / host::PathFromUtf8(place);
    const std::string& rows = sum_.rows();
    for (size_t begin = 0; begin < rows.size();) {
      const size_t end = std::min(rows.find('\n', begin), rows.size());
      const json row =
          host::JsonOrDiscarded<json>(std::string_view(rows).substr(begin, end - begin));
      begin = end + 1;
      if (!row.is_object() || !row.contains("files")) continue;
      for (const json& file : row["files"]) {
        const std::string path = file.value("path", "");
        if (!path.starts_with(place)) continue;
        std::optional<Trouble> trouble =
            checkFile(folder / host::PathFromUtf8(path.substr(place.size())), file);
        if (trouble) return trouble;
      }
    }
    return std::nullopt;
  }

  static std::optional<Trouble> checkFile(const fs::path& path, const json& file) {
    const Outcome<FileSum> sum = SumOfFile(path);
    if (!sum) return sum.trouble();
    if (sum->sha256 == file.value("sha256", "")) return std::nullopt;
    return Damaged(host::Utf8FromPath(path), "has changed");
  }

  const PlanFile& plan_;
  const fs::path& tree_;
  const uint64_t number_;
  const fs::path folder_;
  PartSum sum_;
};

}  // namespace

std::vector<uint64_t> MissingParts(const PlanFile& plan, const fs::path& tree) {
  std::vector<uint64_t> missing;
  for (uint64_t number = 0; number < plan.tasks(); ++number) {
    const Outcome<PartFacts> part = PartIn(PartFolder(tree, number));
    if (!part) {
      ThrowUnreadable(part.trouble());
      missing.push_back(number);
    } else if (part->plan != plan.id()) {
      throw host::Failure(host::ExitStatus::Usage, host::Utf8FromPath(tree),
                          "holds parts of another plan");
    }
  }
  return missing;
}

std::vector<DamagedPart> DamagedParts(const PlanFile& plan, const fs::path& tree, size_t threads) {
  std::vector<DamagedPart> damaged;
  std::mutex mutex;
  std::atomic<uint64_t> next = 0;
  std::exception_ptr failure;
  const auto work = [&] {
    try {
      for (uint64_t number; (number = next++) < plan.tasks();) {
        std::optional<Trouble> trouble = PartCheck(plan, tree, number).run();
        const std::lock_guard lock(mutex);
        if (trouble) damaged.push_back({number, std::move(*trouble)});
      }
    } catch (...) {
      const std::lock_guard lock(mutex);
      failure = std::current_exception();
      next = plan.tasks();
    }
  };
  std::vector<std::thread> team;
  for (size_t thread = 1; thread < threads; ++thread) team.emplace_back(work);
  work();
  for (std::thread& thread : team) thread.join();
  if (failure) std::rethrow_exception(failure);
  std::sort(damaged.begin(), damaged.end(),
            [](const DamagedPart& one, const DamagedPart& other) { return one.task < other.task; });
  for (const DamagedPart& part : damaged) ThrowUnreadable(part.trouble);
  return damaged;
}

}  // namespace tarn::archive
