// IndexWriter.h - the page that shows an export in a browser, without a server: index.html, and the
// folder index with what it needs.
#ifndef TARN_ARCHIVE_INDEXWRITER_H
#define TARN_ARCHIVE_INDEXWRITER_H

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "archive/catalogue/CatalogueItem.h"
#include "archive/model/Trouble.h"

namespace tarn::archive {

inline constexpr const char* kIndexPageName = "index.html";
inline constexpr const char* kIndexFolderName = "index";

// Subjects and the like as the page has them: cut between characters where they are long, with a
// mark that they go on.
std::string ShownOnPage(std::string_view text);

// Of the n-th script with rows, from 1, in the folder.
std::string NameOfPiece(size_t number);

// Whether the page of the export in that folder is there, and all that it reads, for so many items.
bool IsPageWhole(const std::filesystem::path& directory, uint64_t items);

// The same items in the same order give the same bytes. Memory grows with the number of folders,
// not with that of items.
class IndexWriter {
 public:
  // Of the export in that folder. Writes into "index.new" there, whatever was in it. Unreadable
  // where that cannot be made.
  static Outcome<std::unique_ptr<IndexWriter>> create(const std::filesystem::path& directory);

  IndexWriter(const IndexWriter&) = delete;
  IndexWriter& operator=(const IndexWriter&) = delete;
  // Without finish() nothing is left.
  ~IndexWriter();

  // In the order of the manifest. Reads neither body nor text of attachments. After a trouble
  // nothing more is added.
  std::optional<Trouble> add(const CatalogueItem& item);

  // Puts the page and its folder into their places, instead of those that were there. Nothing is
  // added after it.
  std::optional<Trouble> finish();

 private:
  class Pieces;

  explicit IndexWriter(std::unique_ptr<Pieces> pieces);

  std::unique_ptr<Pieces> pieces_;
  std::optional<Trouble> trouble_;
};

}  // namespace tarn::archive

#endif
