// ShownCheck.h - compares what shows an export, its catalogue and its page, with the manifest,
// which has no hashes of them.
#ifndef TARN_ARCHIVE_SHOWNCHECK_H
#define TARN_ARCHIVE_SHOWNCHECK_H

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <string>

#include "archive/catalogue/CatalogueSearch.h"
#include "archive/export/PageRows.h"

namespace tarn::archive {

class ShownCheck {
 public:
  // Called with the name of a file and what is wrong with it: of each of the two the first that is
  // found.
  using Tell = std::function<void(const std::string& name, const std::string& why)>;

  // Of the export in that folder. One that has neither was made without them.
  ShownCheck(const std::filesystem::path& tree, Tell tell);

  // A row of an item of the manifest, in their order. Throws nlohmann::json::exception for one that
  // is damaged.
  void take(const nlohmann::json& row);

  // There are no more.
  void finish();

 private:
  void openCatalogue();
  void tellCatalogue(const std::string& why);
  void tellPage(const std::string& why);
  void compareCatalogue(const nlohmann::json& row);
  void comparePage(const nlohmann::json& row);

  const std::filesystem::path tree_;
  const Tell tell_;
  bool hasCatalogue_ = false;
  bool hasPage_ = false;
  std::unique_ptr<CatalogueSearch> catalogue_;
  std::unique_ptr<PageRows> page_;
  uint64_t items_ = 0;
};

}  // namespace tarn::archive

#endif
