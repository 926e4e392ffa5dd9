#include "archive/cluster/Part.h"

#include <algorithm>
#include <utility>

#include "archive/export/HashedFile.h"
#include "archive/export/Packing.h"
#include "console/Json.h"
#include "console/SystemFiles.h"

namespace tarn::archive {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

Outcome<std::string> BytesOfFile(const fs::path& path) {
  std::string bytes;
  const std::optional<Trouble> trouble = ReadInPieces(path, [&bytes](std::string_view piece) {
    bytes += piece;
    return true;
  });
  if (trouble) return *trouble;
  return bytes;
}

Trouble Damaged(const fs::path& path) {
  return {TroubleKind::Damaged, path.string() + ": is damaged"};
}

}  // namespace

fs::path PartFolder(const fs::path& tree, uint64_t task) {
  return tree / kPartsName / std::to_string(task);
}

std::string TextOfPart(const PartFacts& facts) {
  const Json json = {{"type", "part"},
                     {"plan", facts.plan},
                     {"task", facts.task},
                     {"sha256", facts.sha256},
                     {"entries", facts.entries},
                     {"items", facts.exported + facts.partial + facts.failed},
                     {"exported", facts.exported},
                     {"partial", facts.partial},
                     {"failed", facts.failed},
                     {"bytes", facts.bytes},
                     {"attempt", facts.attempt},
                     {"host", facts.host},
                     {"begun", facts.begun},
                     {"seconds", facts.seconds}};
  return host::JsonLineOfAny(json) + "\n";
}

Outcome<PartFacts> PartIn(const fs::path& folder) {
  const fs::path path = folder / kPartFactsName;
  const Outcome<std::string> text = BytesOfFile(path);
  if (!text) return text.trouble();
  try {
    const Json json = host::ParsedJson<Json>(*text);
    PartFacts facts;
    facts.plan = json.at("plan");
    facts.task = json.at("task");
    facts.sha256 = json.at("sha256");
    facts.entries = json.at("entries");
    facts.exported = json.at("exported");
    facts.partial = json.at("partial");
    facts.failed = json.at("failed");
    facts.bytes = json.at("bytes");
    facts.attempt = json.at("attempt");
    facts.host = json.at("host");
    facts.begun = json.at("begun");
    facts.seconds = json.at("seconds");
    return facts;
  } catch (const Json::exception&) {
    return Damaged(path);
  }
}

std::optional<Trouble> PartSum::addPlan(const fs::path& plan) {
  Sha256 sum;
  std::optional<Trouble> trouble = ReadInPieces(plan, [&sum](std::string_view piece) {
    sum.add(piece);
    return true;
  });
  sum_.addText(sum.digest());
  return trouble;
}

std::optional<Trouble> PartSum::add(const FinishedEntry& entry) {
  ++counts_.entries;
  counts_.bytes += entry.bytes;
  rows_.clear();
  sum_.addText(entry.reason);
  sum_.addText(entry.fingerprint);
  if (entry.folder.empty()) {
    ++counts_.failed;
    return std::nullopt;
  }
  for (size_t number = 0; number < kWorkerParts; ++number) {
    const auto part = static_cast<WorkerPart>(number);
    if (std::optional<Trouble> trouble = addPart(entry, part)) return trouble;
  }
  count(rows_);
  return std::nullopt;
}

std::optional<Trouble> PartSum::addPart(const FinishedEntry& entry, WorkerPart part) {
  const uint64_t begin = entry.begins.of(part);
  const uint64_t end = entry.ends.of(part);
  sum_.addLength(end - begin);
  if (begin == end) return std::nullopt;
  const Outcome<GrowingFile*> file = open(entry.folder, part);
  if (!file) return file.trouble();
  if (begin > end || end > (*file)->size()) return Damaged(entry.folder / NameOf(part));
  return (*file)->readInPieces(begin, end - begin,
                               [&](std::string_view piece) -> std::optional<Trouble> {
                                 sum_.add(piece);
                                 if (part == WorkerPart::Rows) rows_ += piece;
                                 return std::nullopt;
                               });
}

// Kept open from one entry to the next.
Outcome<GrowingFile*> PartSum::open(const fs::path& folder, WorkerPart part) {
  if (openFolder_ != folder) {
    openFolder_ = folder;
    open_ = {};
  }
  std::unique_ptr<GrowingFile>& file = open_[static_cast<size_t>(part)];
  if (file) return file.get();
  const fs::path path = folder / NameOf(part);
  // One that is opened is made.
  std::error_code error;
  const fs::file_status status = fs::symlink_status(path, error);
  if (status.type() == fs::file_type::none) return SystemTrouble(path, error.value());
  if (!fs::is_regular_file(status)) return Damaged(path);
  Outcome<std::unique_ptr<GrowingFile>> opened = GrowingFile::open(path);
  if (!opened) return opened.trouble();
  return (file = std::move(*opened)).get();
}

void PartSum::count(std::string_view rows) {
  for (size_t begin = 0; begin < rows.size();) {
    const size_t end = std::min(rows.find('\n', begin), rows.size());
    const Json row = host::JsonOrDiscarded<Json>(rows.substr(begin, end - begin));
    const std::string status = row.is_object() ? row.value("status", "") : "";
    if (status == "exported") ++counts_.exported;
    if (status == "partial") ++counts_.partial;
    if (status == "failed") ++counts_.failed;
    begin = end + 1;
  }
}

void PartSum::finish(PartFacts& facts) const {
  facts.sha256 = sum_.digest();
  facts.entries = counts_.entries;
  facts.exported = counts_.exported;
  facts.partial = counts_.partial;
  facts.failed = counts_.failed;
  facts.bytes = counts_.bytes;
}

bool SetPartAside(const fs::path& part) {
  const fs::path aside = part.string() + ".damaged";
  host::RemoveTree(aside);
  std::error_code error;
  fs::rename(part, aside, error);
  return !error;
}

fs::path PlanOfRange(const fs::path& folder, size_t range) {
  return folder / "plans" / std::to_string(range);
}

fs::path EntriesPath(const fs::path& folder, size_t range) {
  return folder / "entries" / std::to_string(range);
}

std::string Packed(const std::vector<FinishedEntry>& entries) {
  Packer packer;
  packer.put(entries.size());
  for (const FinishedEntry& entry : entries) {
    packer.put(entry.folder.empty() ? "" : entry.folder.filename().string());
    packer.put(entry.reason).put(entry.fingerprint).put(entry.hasFolder).put(entry.number);
    for (const WorkerParts* const parts : {&entry.begins, &entry.ends}) {
      for (const uint64_t place : parts->places) packer.put(place);
    }
    packer.put(entry.bytes);
  }
  return std::move(packer.bytes());
}

Outcome<std::vector<FinishedEntry>> EntriesOfRange(const fs::path& folder, size_t range) {
  const fs::path path = EntriesPath(folder, range);
  const Outcome<std::string> bytes = BytesOfFile(path);
  if (!bytes) return bytes.trouble();
  Unpacker fields(*bytes);
  std::vector<FinishedEntry> entries(std::min<uint64_t>(fields.number(), bytes->size()));
  for (FinishedEntry& entry : entries) {
    const std::string name = fields.text();
    const bool isNumber =
        !name.empty() && name.find_first_not_of("0123456789") == std::string::npos;
    if (!name.empty() && !isNumber) return Damaged(path);
    if (isNumber) entry.folder = folder / "work" / name;
    entry.reason = fields.text();
    entry.fingerprint = fields.text();
    entry.hasFolder = fields.flag();
    entry.number = fields.number();
    for (WorkerParts* const parts : {&entry.begins, &entry.ends}) {
      for (uint64_t& place : parts->places) place = fields.number();
    }
    entry.bytes = fields.number();
  }
  if (Packed(entries) != *bytes) return Damaged(path);
  return entries;
}

}  // namespace tarn::archive
