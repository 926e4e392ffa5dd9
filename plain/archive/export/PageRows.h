// PageRows.h - the rows of an export's page, as its scripts hold them.
#ifndef TARN_ARCHIVE_PAGEROWS_H
#define TARN_ARCHIVE_PAGEROWS_H

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

namespace tarn::archive {

struct PageRow {
  std::string subject;             // cut where it is long
  uint64_t status = 0;             // an ExportStatus
  std::string reason;              // unless exported
  std::vector<std::string> paths;  // of its files, those of attachments last
};

class PageRows {
 public:
  // Of the page of the export in that folder.
  explicit PageRows(const std::filesystem::path& directory) : directory_(directory) {}

  // None after the last one, and where a script is missing or damaged. One piece of the page is in
  // memory at a time.
  std::optional<PageRow> next();

 private:
  bool readPiece();

  const std::filesystem::path directory_;
  nlohmann::json rows_;
  size_t at_ = 0;
  size_t pieces_ = 0;
};

}  // namespace tarn::archive

#endif
