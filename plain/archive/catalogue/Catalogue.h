// Catalogue.h - the catalogue of an export: its items, their files and their text, as an SQLite
// database that can be searched (docs/archive.md has its tables).
#ifndef TARN_ARCHIVE_CATALOGUE_H
#define TARN_ARCHIVE_CATALOGUE_H

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string_view>

#include "archive/catalogue/CatalogueItem.h"
#include "archive/model/Trouble.h"

namespace tarn::archive {

inline constexpr const char* kCatalogueName = "catalogue.sqlite";

// Of one text no more than this is kept and searched; the rest is cut off between characters.
inline constexpr size_t kMostCatalogueText = size_t{4} << 20;
std::string_view CutCatalogueText(std::string_view text);

// Those of one item together; attachments that come after have no text.
inline constexpr size_t kMostItemText = size_t{64} << 20;

// How many items a catalogue holds; none where it cannot be read, or is damaged: every page and
// every entry of an index is looked at, and the index is to hold as many words as the items are
// told to have.
std::optional<uint64_t> ItemsInCatalogue(const std::filesystem::path& path);

// The same items in the same order give the same bytes. Memory does not grow with their number.
class CatalogueWriter {
 public:
  // Writes beside the path, into one that ends in ".new", whatever was there. Unreadable where that
  // cannot be made.
  static Outcome<std::unique_ptr<CatalogueWriter>> create(const std::filesystem::path& path);

  CatalogueWriter(const CatalogueWriter&) = delete;
  CatalogueWriter& operator=(const CatalogueWriter&) = delete;
  // Without finish() nothing is left.
  ~CatalogueWriter();

  // In the order of the manifest. After a trouble, as a full disk, nothing more is added.
  std::optional<Trouble> add(const CatalogueItem& item);

  // Puts the catalogue into its place, on the disk as far as the system can say, and in one step.
  // Nothing is added after it.
  std::optional<Trouble> finish();

 private:
  class Tables;

  CatalogueWriter(std::filesystem::path path, std::filesystem::path beside);

  std::filesystem::path path_;
  std::filesystem::path beside_;
  std::unique_ptr<Tables> tables_;
  std::optional<Trouble> trouble_;
};

}  // namespace tarn::archive

#endif
