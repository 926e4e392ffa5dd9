#include "archive/export/ManifestRows.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "archive/common/ItemFilter.h"
#include "archive/common/JsonWriter.h"

namespace tarn::archive {
namespace {

void WriteFile(JsonWriter& json, const ExportedFile& file) {
  json.openObject();
  json.name("path");
  json.text(file.path);
  json.name("role");
  json.text(file.role);
  json.name("bytes");
  json.number(file.bytes);
  json.name("sha256");
  json.text(file.sha256);
  if (file.index != 0) {
    json.name("name");
    json.text(file.name);
    json.name("index");
    json.number(file.index);
  }
  json.closeObject();
}

}  // namespace

std::string JoinedReasons(const std::vector<std::string>& reasons) {
  constexpr size_t kMostReasons = 10;
  std::vector<std::string> told;
  size_t more = 0;
  for (const std::string& reason : reasons) {
    if (std::find(told.begin(), told.end(), reason) != told.end()) continue;
    if (told.size() < kMostReasons) {
      told.push_back(reason);
    } else {
      ++more;
    }
  }
  std::string joined;
  for (const std::string& reason : told) joined += (joined.empty() ? "" : "; ") + reason;
  if (more != 0) joined += "; and " + std::to_string(more) + " more";
  return joined;
}

std::string JournalLine(const ItemRow& row) {
  JsonWriter json;
  const auto text = [&json](std::string_view name, std::string_view value) {
    json.name(name);
    json.text(value);
  };
  const auto number = [&json](std::string_view name, uint64_t value) {
    json.name(name);
    json.number(value);
  };
  json.openObject();
  text("type", "item");
  text("source", row.item.source);
  text("id", row.item.id);
  if (row.item.parent) text("parent", *row.item.parent);
  text("folder", FolderText(row.item.folder));
  text("class", row.item.fields.messageClass);
  text("subject", row.item.fields.subject);
  text("status", NameOf(row.item.status));
  if (row.item.status != ExportStatus::Exported) text("reason", JoinedReasons(row.reasons));
  json.name("files");
  json.openArray();
  for (const ExportedFile& file : row.item.files) WriteFile(json, file);
  json.closeArray();
  if (!row.fingerprint.empty()) text("fingerprint", row.fingerprint);
  if (!row.mbox.empty()) {
    text("mbox", row.mbox);
    number("mboxBytes", row.mboxBytes);
  }
  if (row.pages) {
    json.name("pages");
    json.openObject();
    text("path", row.pages->path);
    text("bookmark", row.pages->bookmark);
    number("depth", row.pages->depth);
    number("offset", row.pages->offset);
    number("bytes", row.pages->bytes);
    number("pages", row.pages->pages);
    json.closeObject();
  }
  if (row.catalogueBytes != 0) number("catalogueBytes", row.catalogueBytes);
  json.closeObject();
  return std::string(json.line()) + "\n";
}

std::optional<ItemPages> PagesOf(const nlohmann::ordered_json& row) {
  const auto found = row.find("pages");
  if (found == row.end()) return std::nullopt;
  return ItemPages{found->at("path"),   found->at("bookmark"), found->at("depth"),
                   found->at("offset"), found->at("bytes"),    found->at("pages")};
}

void RemoveFiles(nlohmann::ordered_json& row) {
  row["files"] = nlohmann::ordered_json::array();
  for (const char* const key : {"mbox", "mboxBytes", "pages"}) row.erase(key);
}

void RemoveJournalKeys(nlohmann::ordered_json& row) {
  for (const char* const key : {"fingerprint", "mbox", "mboxBytes", "pages", "catalogueBytes"}) {
    row.erase(key);
  }
}

std::string RowOfLost(const PlanEntry& entry, const std::string& source,
                      const std::string& reason) {
  if (entry.kind == PlanKind::Trouble) {
    const std::string folder = FolderText(*entry.folder);
    JsonWriter json;
    json.openObject();
    json.name("type");
    json.text("trouble");
    json.name("source");
    json.text(source);
    json.name("reason");
    json.text((folder.empty() ? "" : folder + ": ") + reason);
    json.name("files");
    json.openArray();
    json.closeArray();
    json.closeObject();
    return std::string(json.line()) + "\n";
  }
  ItemRow row;
  row.item.source = source;
  row.item.id = entry.id;
  row.item.parent = entry.parent;
  row.item.folder = *entry.folder;
  row.item.status = ExportStatus::Failed;
  row.reasons.push_back(reason);
  return JournalLine(row);
}

}  // namespace tarn::archive
