// PageFolder.h - the folder that the pages of a document go to as files: all of them, or none.
#ifndef TARN_TARNMAIL_PAGEFOLDER_H
#define TARN_TARNMAIL_PAGEFOLDER_H

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "console/RemovedAtEnd.h"

namespace tarn::host {

// The name of a page's file, from 1: "page-0001.png".
std::string PageFileName(int32_t page);

// The pages are written to a hidden folder, and come to their place when all are there: in one step
// where the folder is new, else one after the other. In a folder that is there files of the same
// names are replaced and all others stay, pages of an earlier run beyond these among them. What is
// hidden goes when this ends, and when a signal ends the program.
class PageFolder {
 public:
  // Throws Failure (Usage) when the place cannot be written to. `source` is the mail file.
  PageFolder(const std::string& folder, const std::string& source);

  // Throws Failure (Failed) when the file cannot be written, Failure (Usage) where a file of its
  // name is for reading alone, no file, or the mail itself.
  void write(int32_t page, std::string_view bytes);

  // To be called once, after all pages. Throws Failure (Usage).
  void putInPlace();

 private:
  void checkPlace(const std::filesystem::path& place) const;

  const std::string folder_;  // as the command line has it
  const std::string source_;
  std::filesystem::path place_;
  bool isNew_ = false;
  RemovedAtEnd hidden_;
  std::vector<std::string> names_;
};

}  // namespace tarn::host

#endif
