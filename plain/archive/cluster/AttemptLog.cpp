#include "archive/cluster/AttemptLog.h"

#include <system_error>

#include "archive/export/Journal.h"
#include "archive/export/Staging.h"
#include "console/Failure.h"
#include "console/Json.h"
#include "console/Paths.h"

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

bool HasPartOf(const PlanFile& plan, const fs::path& tree) {
  std::error_code error;
  for (const fs::directory_entry& entry : fs::directory_iterator(tree / kPartsName, error)) {
    const Outcome<PartFacts> part = PartIn(entry.path());
    if (part && part->plan == plan.id()) return true;
  }
  return false;
}

}  // namespace

fs::path LogOfExport(const fs::path& tree) {
  fs::path full = fs::absolute(tree).lexically_normal();
  if (!full.has_filename()) full = full.parent_path();
  return full.string() + ".attempts.jsonl";
}

std::optional<Trouble> WriteLog(const PlanFile& plan, const fs::path& tree) {
  const Json head = {{"type", "plan"}, {"plan", plan.id()}, {"tasks", plan.tasks()}};
  std::string text = host::JsonLine(head) + "\n";
  plan.forEachTask([&](uint64_t number, const PlannedTask& task) {
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
    if (line.is_object()) id = line.value("plan", "");
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
