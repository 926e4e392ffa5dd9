#include "archive/cluster/PlanFile.h"

#include <algorithm>
#include <fstream>
#include <utility>

#include "archive/cluster/NumberList.h"
#include "archive/cluster/PlanChoices.h"
#include "archive/common/TellableName.h"
#include "archive/export/Journal.h"
#include "console/Failure.h"
#include "console/Json.h"
#include "console/Paths.h"

namespace tarn::archive {
namespace {

using Json = nlohmann::ordered_json;
using Folder = std::shared_ptr<const std::vector<std::string>>;

constexpr int kVersion = 1;
constexpr const char* kKindNames[] = {"store", "compound", "tnef", "mbox", "mail", "maildir"};
constexpr const char* kTroubleNames[] = {"damaged",     "missing",  "unreadable",
                                         "unsupported", "too deep", "too large"};

[[noreturn]] void Refuse(const std::string& why) {
  throw Json::other_error::create(501, why, nullptr);
}

template <size_t Count>
size_t IndexOf(const char* const (&names)[Count], const std::string& name) {
  const auto* const found = std::find(std::begin(names), std::end(names), name);
  if (found == std::end(names)) Refuse("unknown " + name);
  return static_cast<size_t>(found - std::begin(names));
}

Json JsonOfFolder(const std::vector<std::string>& folder) {
  Json json = Json::array();
  for (const std::string& name : folder) json.push_back(JsonOfText(name));
  return json;
}

Folder FolderOfJson(const Json& json) {
  std::vector<std::string> folder;
  for (const Json& name : json) folder.push_back(TextOfJson(name));
  return std::make_shared<const std::vector<std::string>>(std::move(folder));
}

Json JsonOfRange(const PlanRange& range) {
  Json json;
  json["runs"] = Json::array();
  for (const PlanRun& run : range.runs) {
    json["runs"].push_back({{"folder", JsonOfFolder(*run.folder)},
                            {"path", JsonOfText(run.folderPath)},
                            {"at", {run.place.folder, run.place.row}},
                            {"rows", run.rows}});
  }
  if (!range.shared.empty()) json["shared"] = NumberList(range.shared);
  for (const PlanGap& gap : range.gaps) {
    Json told = {{"entry", gap.entry}};
    if (gap.trouble.kind == PlanKind::LostItem) told["id"] = gap.trouble.id;
    if (gap.trouble.parent) told["parent"] = *gap.trouble.parent;
    told["folder"] = JsonOfFolder(*gap.trouble.folder);
    told["path"] = JsonOfText(gap.trouble.folderPath);
    told["reason"] = JsonOfText(gap.trouble.reason);
    json["gaps"].push_back(std::move(told));
  }
  return json;
}

// A path of names, which leads nowhere else; empty where that may be.
std::string CheckedPath(std::string path, bool mayBeEmpty) {
  if (path.empty() && mayBeEmpty) return path;
  for (size_t begin = 0; begin <= path.size();) {
    const size_t end = std::min(path.find('/', begin), path.size());
    const std::string name = path.substr(begin, end - begin);
    const bool isName =
        !name.empty() && name != "." && name != ".." && name.find('\0') == name.npos;
    if (!isName) Refuse("a path that is none");
    begin = end + 1;
  }
  return path;
}

PlanRange RangeOfJson(const Json& json, uint64_t entries) {
  PlanRange range;
  for (const Json& run : json.at("runs")) {
    range.runs.push_back({FolderOfJson(run.at("folder")),
                          CheckedPath(TextOfJson(run.at("path")), true),
                          {run.at("at").at(0), run.at("at").at(1), false},
                          run.at("rows")});
  }
  range.shared = SpansOf(json.value("shared", ""), entries);
  range.entries = entries;
  if (!json.contains("gaps")) return range;
  for (const Json& told : json.at("gaps")) {
    PlanGap gap;
    gap.entry = told.at("entry");
    gap.trouble.kind = told.contains("id") ? PlanKind::LostItem : PlanKind::Trouble;
    gap.trouble.id = told.value("id", "");
    if (told.contains("parent")) gap.trouble.parent = told["parent"].get<std::string>();
    gap.trouble.folder = FolderOfJson(told.at("folder"));
    gap.trouble.folderPath = CheckedPath(TextOfJson(told.at("path")), true);
    gap.trouble.reason = TextOfJson(told.at("reason"));
    range.gaps.push_back(std::move(gap));
  }
  return range;
}

Json JsonOfInput(size_t number, const PlannedInput& input) {
  Json json = {{"type", "input"}, {"input", number}};
  const ExportSource& source = input.source;
  json["source"] = JsonOfText(source.found.name);
  json["kind"] = kKindNames[static_cast<size_t>(source.found.kind)];
  json["tree"] = source.tree;
  if (source.found.isNamed) json["named"] = true;
  json["bytes"] = input.sum.bytes;
  json["sha256"] = input.sum.sha256.empty() ? Json(nullptr) : Json(input.sum.sha256);
  if (!input.print.empty()) json["fingerprint"] = input.print;
  json["entries"] = input.entries;
  if (source.hasMissedFolder) json["missedFolder"] = true;
  if (source.trouble) json["trouble"] = kTroubleNames[static_cast<size_t>(source.trouble->kind)];
  if (!input.reason.empty()) json["reason"] = JsonOfText(input.reason);
  return json;
}

PlannedInput InputOfJson(const Json& json) {
  PlannedInput input;
  ExportSource& source = input.source;
  source.found.name = TextOfJson(json.at("source"));
  source.name = TellableName(source.found.name);
  source.found.kind = static_cast<SourceKind>(IndexOf(kKindNames, json.at("kind")));
  source.found.isNamed = json.value("named", false);
  source.tree = CheckedPath(json.at("tree"), false);
  input.sum.bytes = json.at("bytes");
  if (!json.at("sha256").is_null()) input.sum.sha256 = json["sha256"];
  input.print = json.value("fingerprint", "");
  input.entries = json.at("entries");
  source.hasMissedFolder = json.value("missedFolder", false);
  if (json.contains("reason")) input.reason = TextOfJson(json["reason"]);
  if (json.contains("trouble")) {
    source.trouble =
        Trouble{static_cast<TroubleKind>(IndexOf(kTroubleNames, json["trouble"])), input.reason};
  }
  return input;
}

Json JsonOfTask(size_t number, const PlannedTask& task) {
  Json json = {{"type", "task"},
               {"task", number},
               {"cost", task.cost},
               {"bytes", task.bytes},
               {"messages", task.messages}};
  json["items"] = Json::array();
  for (const PlannedRange& range : task.ranges) {
    Json told = {{"input", range.input}};
    if (range.range) told["first"] = range.first;
    told["entries"] = range.entries;
    if (range.range) told.update(JsonOfRange(*range.range));
    json["items"].push_back(std::move(told));
  }
  return json;
}

PlannedTask TaskOfJson(const Json& json) {
  PlannedTask task;
  task.cost = json.at("cost");
  task.bytes = json.at("bytes");
  task.messages = json.at("messages");
  for (const Json& told : json.at("items")) {
    PlannedRange range;
    range.input = told.at("input");
    range.entries = told.at("entries");
    if (told.contains("runs")) {
      range.first = told.at("first");
      range.range = RangeOfJson(told, range.entries);
    }
    task.ranges.push_back(std::move(range));
  }
  return task;
}

// Found without reading the whole line.
bool IsTask(std::string_view line) { return line.starts_with(R"({"type":"task",)"); }

}  // namespace

std::string PlanText(const PlanFacts& facts, const std::vector<PlannedInput>& inputs,
                     const std::vector<PlannedTask>& tasks) {
  uint64_t bytes = 0;
  uint64_t entries = 0;
  for (const PlannedInput& input : inputs) {
    bytes += input.sum.bytes;
    entries += input.entries;
  }
  Json choices = {{"type", "export"},
                  {"options", JsonOfChoices(facts.options)},
                  {"inputs", inputs.size()},
                  {"tasks", tasks.size()},
                  {"entries", entries},
                  {"bytes", bytes},
                  {"otherFiles", facts.otherFiles},
                  {"targetCost", facts.targetCost},
                  {"messageCost", facts.messageCost}};
  if (!facts.directory.empty()) choices["directory"] = JsonOfText(facts.directory);
  std::string rest = host::JsonLine(choices) + "\n";
  for (size_t at = 0; at < inputs.size(); ++at)
    rest += host::JsonLine(JsonOfInput(at, inputs[at])) + "\n";
  for (size_t at = 0; at < tasks.size(); ++at)
    rest += host::JsonLine(JsonOfTask(at, tasks[at])) + "\n";
  Sha256 id;
  id.add(rest);
  Json head = {
      {"type", "plan"}, {"version", kVersion}, {"plan", id.digest()}, {"tasks", tasks.size()}};
  for (size_t at = 0; at < inputs.size(); ++at) {
    if (!inputs[at].stamp.empty()) head["stamps"].push_back({at, inputs[at].stamp});
  }
  return host::JsonLine(head) + "\n" + rest;
}

PlanFile::PlanFile(const std::string& path) : path_(path), file_(host::PathFromUtf8(path)) {
  Sha256 sum;
  uint64_t number = 0;
  uint64_t next = 0;
  bool isWhole = true;
  std::vector<std::pair<size_t, std::string>> stamps;
  try {
    const Outcome<uint64_t> read = ForEachLine(file_, [&](std::string_view line) {
      const uint64_t offset = std::exchange(next, next + line.size() + 1);
      if (number++ == 0) {
        const Json head = host::ParsedJson<Json>(line);
        if (head.at("type") != "plan" || head.at("version") != kVersion) return isWhole = false;
        id_ = head.at("plan");
        tasks_ = head.at("tasks");
        if (head.contains("stamps")) stamps = head["stamps"];
        return true;
      }
      sum.add(line);
      sum.add("\n");
      if (IsTask(line)) {
        places_.push_back(offset);
      } else {
        takeLine(line);
      }
      return true;
    });
    if (!read) throw host::Failure(host::ExitStatus::Usage, read.trouble().reason);
  } catch (const Json::exception&) {
    isWhole = false;
  }
  places_.push_back(next);
  if (!isWhole || number < 2) refuse("is no plan of this version");
  if (sum.digest() != id_ || places_.size() != tasks_ + 1) refuse("has changed since it was made");
  takeStamps(stamps);
}

void PlanFile::takeStamps(const std::vector<std::pair<size_t, std::string>>& stamps) {
  for (const auto& [input, stamp] : stamps) {
    if (input >= inputs_.size()) refuse("has no input " + std::to_string(input));
    inputs_[input].stamp = stamp;
  }
}

void PlanFile::refuse(const std::string& why) const {
  throw host::Failure(host::ExitStatus::Usage, path_, why);
}

void PlanFile::takeLine(std::string_view line) {
  const Json json = host::ParsedJson<Json>(line);
  if (json.at("type") == "input") {
    inputs_.push_back(InputOfJson(json));
    if (!trees_.insert(inputs_.back().source.tree).second) Refuse("a folder of two inputs");
    return;
  }
  facts_.options = ChoicesOfJson(json.at("options"));
  facts_.otherFiles = json.at("otherFiles");
  facts_.messageCost = json.at("messageCost");
  facts_.targetCost = json.at("targetCost");
  if (json.contains("directory")) facts_.directory = TextOfJson(json["directory"]);
}

PlannedTask PlanFile::task(uint64_t number) const {
  if (number >= tasks_) refuse("has no task " + std::to_string(number));
  std::ifstream file(file_, std::ios::binary);
  std::string line(places_[number + 1] - places_[number], '\0');
  file.seekg(static_cast<std::streamoff>(places_[number]));
  file.read(line.data(), static_cast<std::streamsize>(line.size()));
  if (!file) throw host::Failure(host::ExitStatus::Temporary, path_, "cannot be read");
  try {
    const Json json = host::ParsedJson<Json>(line);
    if (json.at("task") != number) refuse("does not have its tasks in their order");
    PlannedTask task = TaskOfJson(json);
    for (const PlannedRange& range : task.ranges) checkRange(range);
    return task;
  } catch (const Json::exception&) {
    refuse("has a damaged task " + std::to_string(number));
  }
}

void PlanFile::checkRange(const PlannedRange& range) const {
  if (range.input >= inputs_.size()) refuse("has no input " + std::to_string(range.input));
  const uint64_t entries = inputs_[range.input].entries;
  if (range.first <= entries && range.entries <= entries - range.first) return;
  refuse("has a range that input " + std::to_string(range.input) + " does not have");
}

void PlanFile::forEachTask(
    const std::function<void(uint64_t number, PlannedTask task)>& take) const {
  for (uint64_t number = 0; number < tasks_; ++number) take(number, task(number));
}

}  // namespace tarn::archive
