#include "archive/export/ShownCheck.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <system_error>
#include <utility>
#include <vector>

#include "archive/catalogue/Catalogue.h"
#include "archive/catalogue/IndexWriter.h"

namespace tarn::archive {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;

constexpr const char* kOtherItems = "does not hold the items of the manifest";
constexpr const char* kOtherRows = "does not show the items of the manifest";

// A copy whose files are those of another item is shown by these.
bool HasFilesOfOthers(const json& row) { return row.contains("copyOf") && row.at("files").empty(); }

// Empty where there is none.
std::string TextOf(const json& row, const char* key) { return row.value(key, std::string()); }

bool IsSameFile(const ExportedFile& file, const json& told) {
  return file.path == TextOf(told, "path") && file.role == TextOf(told, "role") &&
         file.bytes == told.at("bytes").get<uint64_t>() && file.sha256 == TextOf(told, "sha256") &&
         file.name == TextOf(told, "name") && file.index == told.value("index", size_t{0});
}

bool IsSameItem(const CatalogueItem& item, const json& row) {
  const json& files = row.at("files");
  const bool hasSameFiles =
      HasFilesOfOthers(row) ||
      std::equal(item.files.begin(), item.files.end(), files.begin(), files.end(), IsSameFile);
  return hasSameFiles && item.source == TextOf(row, "source") && item.id == TextOf(row, "id") &&
         item.parent.value_or("") == TextOf(row, "parent") &&
         item.folder.front() == TextOf(row, "folder") &&
         item.fields.messageClass == TextOf(row, "class") &&
         item.fields.subject == TextOf(row, "subject") &&
         NameOf(item.status) == TextOf(row, "status") && item.reason == TextOf(row, "reason");
}

// The page has what shows an item first.
std::vector<std::string> PathsOf(const json& files) {
  std::vector<std::string> paths;
  for (const bool isAttachment : {false, true}) {
    for (const json& file : files) {
      if (file.contains("index") == isAttachment) paths.push_back(TextOf(file, "path"));
    }
  }
  return paths;
}

bool IsSameRow(const PageRow& shown, const json& row) {
  const bool hasSameFiles = HasFilesOfOthers(row) || shown.paths == PathsOf(row.at("files"));
  return hasSameFiles && shown.status <= static_cast<uint64_t>(ExportStatus::Failed) &&
         NameOf(static_cast<ExportStatus>(shown.status)) == TextOf(row, "status") &&
         shown.subject == ShownOnPage(TextOf(row, "subject")) &&
         shown.reason == TextOf(row, "reason");
}

}  // namespace

ShownCheck::ShownCheck(const fs::path& tree, Tell tell) : tree_(tree), tell_(std::move(tell)) {
  std::error_code ignored;
  hasCatalogue_ = fs::exists(tree_ / kCatalogueName, ignored);
  hasPage_ = fs::exists(tree_ / kIndexPageName, ignored);
  if (hasCatalogue_ && !hasPage_) tell_(kIndexPageName, "is missing");
  if (hasPage_ && !hasCatalogue_) tell_(kCatalogueName, "is missing");
  if (hasCatalogue_) openCatalogue();
  if (hasPage_) page_ = std::make_unique<PageRows>(tree_);
}

void ShownCheck::openCatalogue() {
  Outcome<std::unique_ptr<CatalogueSearch>> opened = CatalogueSearch::open(tree_ / kCatalogueName);
  if (!opened) return tellCatalogue(opened.trouble().reason);
  catalogue_ = std::move(*opened);
}

void ShownCheck::tellCatalogue(const std::string& why) {
  tell_(kCatalogueName, why);
  catalogue_.reset();
}

void ShownCheck::tellPage(const std::string& why) {
  tell_(kIndexPageName, why);
  page_.reset();
}

void ShownCheck::take(const json& row) {
  ++items_;
  if (catalogue_) compareCatalogue(row);
  if (page_) comparePage(row);
}

void ShownCheck::compareCatalogue(const json& row) {
  const Outcome<CatalogueItem> item = catalogue_->item(static_cast<int64_t>(items_));
  if (!item) return tellCatalogue(item.trouble().reason);
  if (!IsSameItem(*item, row)) tellCatalogue(kOtherItems);
}

void ShownCheck::comparePage(const json& row) {
  const std::optional<PageRow> shown = page_->next();
  if (!shown || !IsSameRow(*shown, row)) tellPage(kOtherRows);
}

void ShownCheck::finish() {
  if (catalogue_ && ItemsInCatalogue(tree_ / kCatalogueName) != items_) tellCatalogue(kOtherItems);
  if (page_ && (page_->next() || !IsPageWhole(tree_, items_))) tellPage(kOtherRows);
}

}  // namespace tarn::archive
