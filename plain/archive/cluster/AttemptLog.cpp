#include "archive/cluster/AttemptLog.h"

#include <map>
#include <system_error>
#include <utility>

#include "archive/export/Journal.h"
#include "archive/export/Staging.h"
#include "console/Failure.h"
#include "console/Json.h"
#include "console/Paths.h"
#include "console/SystemFiles.h"

namespace tarn::archive {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

Json LineOf(const PartFacts& part, const PlannedTask& task) {
  return {{"type", "attempt"},        {"task", part.task},         {"host", part.host},
          {"begun", part.begun},      {"seconds", part.seconds},   {"messages", task.messages},
          {"inputBytes", task.bytes}, {"exported", part.exported}, {"partial", part.partial},
          {"failed", part.failed},    {"outputBytes", part.bytes}};
}

// A path beside the export, its own with that at the end.
fs::path Beside(const fs::path& tree, const std::string& end) {
  fs::path full = fs::absolute(tree).lexically_normal();
  if (!full.has_filename()) full = full.parent_path();
  return full.string() + end;
}

fs::path FailedAttemptsFolder(const fs::path& tree) { return Beside(tree, ".attempts"); }

struct KeptLine {
  std::string begun;
  uint64_t task = 0;
  std::string text;
};

// None for what is no failure of an attempt at a task of that plan.
std::optional<KeptLine> FailureOfPlan(std::string_view text, const std::string& plan) {
  const Json line = host::JsonOrDiscarded<Json>(text);
  if (!line.is_object()) return std::nullopt;
  try {
    if (line.at("type") != "failure" || line.at("plan") != plan) return std::nullopt;
    return KeptLine{line.at("begun"), line.at("task"), std::string(text)};
  } catch (const Json::exception&) {
    return std::nullopt;
  }
}

// The lines of those of the plan, by their tasks, in the order in which they were begun. A file
// that an attempt could not write to its end is left out.
std::multimap<uint64_t, std::string> FailedAttempts(const PlanFile& plan, const fs::path& tree) {
  std::multimap<std::string, KeptLine> found;
  std::error_code error;
  for (const fs::directory_entry& entry :
       fs::directory_iterator(FailedAttemptsFolder(tree), error)) {
    (void)ForEachLine(entry.path(), [&](std::string_view text) {
      std::optional<KeptLine> line = FailureOfPlan(text, plan.id());
      if (line) found.emplace(line->begun, std::move(*line));
      return true;
    });
  }
  std::multimap<uint64_t, std::string> lines;
  for (auto& [begun, line] : found) lines.emplace(line.task, std::move(line.text));
  return lines;
}

bool HasPartOf(const PlanFile& plan, const fs::path& tree) {
  std::error_code error;
  for (const fs::directory_entry& entry : fs::directory_iterator(tree / kPartsName, error)) {
    const Outcome<PartFacts> part = PartIn(entry.path());
    if (part && part->plan == plan.id()) return true;
  }
  return false;
}

}  // namespace

fs::path LogOfExport(const fs::path& tree) { return Beside(tree, ".attempts.jsonl"); }

void KeepFailedAttempt(const fs::path& tree, const FailedAttempt& attempt) {
  const Json line = {{"type", "failure"},        {"plan", attempt.plan},
                     {"task", attempt.task},     {"host", attempt.host},
                     {"begun", attempt.begun},   {"seconds", attempt.seconds},
                     {"status", attempt.status}, {"reason", attempt.reason}};
  std::error_code ignored;
  fs::create_directory(FailedAttemptsFolder(tree), ignored);
  const Outcome<std::unique_ptr<GrowingFile>> file =
      GrowingFile::open(FailedAttemptsFolder(tree) / (attempt.attempt + ".jsonl"));
  if (file) (void)(*file)->append(host::JsonLineOfAny(line) + "\n");
}

void ForgetFailedAttempts(const fs::path& tree) { host::RemoveTree(FailedAttemptsFolder(tree)); }

std::optional<Trouble> WriteLog(const PlanFile& plan, const fs::path& tree) {
  const Json head = {{"type", "plan"}, {"plan", plan.id()}, {"tasks", plan.tasks()}};
  std::string text = host::JsonLine(head) + "\n";
  const std::multimap<uint64_t, std::string> failed = FailedAttempts(plan, tree);
  plan.forEachTask([&](uint64_t number, const PlannedTask& task) {
    const auto [first, end] = failed.equal_range(number);
    for (auto line = first; line != end; ++line) text += line->second + "\n";
    const Outcome<PartFacts> part = PartIn(PartFolder(tree, number));
    if (!part) return;
    text += host::JsonLineOfAny(LineOf(*part, task)) + "\n";
  });
  const fs::path path = LogOfExport(tree);
  const fs::path draft = path.string() + ".new";
  const Outcome<std::unique_ptr<GrowingFile>> file = GrowingFile::open(draft);
  if (!file) return file.trouble();
  std::optional<Trouble> trouble = (*file)->cutTo(0);
  if (!trouble) trouble = (*file)->append(text);
  if (!trouble) trouble = (*file)->sync();
  if (trouble) return trouble;
  std::error_code error;
  fs::rename(draft, path, error);
  if (error) return SystemTrouble(path, error.value());
  return std::nullopt;
}

std::string PlanOfLog(const fs::path& tree) {
  std::string id;
  (void)ForEachLine(LogOfExport(tree), [&id](std::string_view text) {
    const Json line = host::JsonOrDiscarded<Json>(text);
    if (line.is_object() && line.contains("plan") && line["plan"].is_string()) id = line["plan"];
    return false;
  });
  return id;
}

bool IsMerged(const PlanFile& plan, const fs::path& tree) {
  if (KindOfExportFolder(tree) != ExportFolder::Finished) return false;
  const std::string id = PlanOfLog(tree);
  if (id == plan.id()) return true;
  // One whose log is gone, and that was not cleared.
  if (id.empty() && HasPartOf(plan, tree)) return true;
  throw host::Failure(host::ExitStatus::Usage, host::Utf8FromPath(tree),
                      id.empty() ? "holds a finished export, and no " +
                                       host::Utf8FromPath(LogOfExport(tree)) +
                                       " tells that it is of this plan"
                                 : "holds the export of another plan");
}

}  // namespace tarn::archive
