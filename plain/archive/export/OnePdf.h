// OnePdf.h - the PDFs of a folder's items as one file with bookmarks, or as several where that
// would be too large.
#ifndef TARN_ARCHIVE_ONEPDF_H
#define TARN_ARCHIVE_ONEPDF_H

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "archive/export/ManifestRows.h"
#include "archive/export/Staging.h"
#include "archive/pdf/JoinedPdf.h"

namespace tarn::archive {

// An item that finds so much in a file begins the next one: "messages 2.pdf" after "messages.pdf".
struct OnePdfLimits {
  uint64_t pages = 1000;  // 0.2 MB of memory each while they are joined
  uint64_t bytes = uint64_t{512} << 20;
};

// The name of the n-th file of a folder, from 1.
std::string OnePdfName(size_t number);

// Where the pages of an item are.
struct PdfPlace {
  std::string path;
  FileSum sum;        // of the whole file
  uint64_t page = 0;  // the first of them, from 1
};

class OnePdf {
 public:
  // `step` is called before a file is put into its place.
  OnePdf(Staging& staging, std::function<void()> step, const OnePdfLimits& limits = {});

  // All items in their order, each after the one that it is embedded in. Both throw host::Failure
  // where something cannot be read or written.
  void add(const ItemPages& pages);
  // All files are in their places.
  void finish();

  // After that, for the same items in the same order; not for those without pages.
  PdfPlace place(const ItemPages& pages);

 private:
  struct Part {
    uint64_t offset = 0;
    uint64_t bytes = 0;
    std::string bookmark;
    size_t depth = 0;
  };
  struct File {
    std::string path;
    FileSum sum;
    size_t parts = 0;
  };
  struct Folder {
    // While items are added:
    uint64_t item = 0;  // where the parts of the outermost item begin
    uint64_t end = 0;   // of all parts so far
    std::vector<Part> waiting;
    uint64_t waitingPages = 0;
    uint64_t waitingBytes = 0;
    std::vector<File> files;
    // While their places are asked for:
    size_t file = 0;
    size_t part = 0;
    uint64_t page = 1;
  };

  void write(const std::string& path, Folder& folder);
  std::filesystem::path copyPart(const GrowingFile& from, const Part& part, size_t number) const;

  Staging& staging_;
  const std::function<void()> step_;
  const OnePdfLimits limits_;
  std::map<std::string, Folder> folders_;  // by the path of the first file
};

}  // namespace tarn::archive

#endif
