// SourceSearch.h - the mail files that a command line names: files, and those of folders.
#ifndef TARN_ARCHIVE_SOURCESEARCH_H
#define TARN_ARCHIVE_SOURCESEARCH_H

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "archive/model/Trouble.h"
#include "archive/sources/SourceKind.h"
#include "console/PrivateFolder.h"

namespace tarn::archive {

// "-" on a command line: standard input.
inline constexpr const char* kStandardInput = "-";

struct FoundSource {
  std::string name;            // as the user would name it: the path as found, or "-"
  std::filesystem::path path;  // of the bytes: a copy, where they came as a stream
  SourceKind kind = SourceKind::Mail;
  bool isNamed = false;  // by the command line itself
};

// Something that cannot be read, or is no mail file though the command line or its own name says
// so.
struct SourceTrouble {
  std::string name;
  Trouble trouble;
  bool isNamed = false;
};

// Whether a file that cannot be opened is one of another program beside the mail files, which is no
// trouble: a compound file of a folder that is no message and is not called one.
bool IsOtherFile(const FoundSource& source, const Trouble& trouble);

using SourceStep = std::variant<FoundSource, SourceTrouble>;

// Goes through what is named in its order, and through folders with all that is below them by path
// in byte order. Of what links lead to, nothing comes twice; so links that go round in a circle
// end. Holds the names of the folders on the way down, and the identities of what was met.
class SourceSearch {
 public:
  // Streams are copied into the folder, which must outlive the sources.
  SourceSearch(std::vector<std::string> names, host::PrivateFolder& temporary);
  SourceSearch(const SourceSearch&) = delete;
  SourceSearch& operator=(const SourceSearch&) = delete;
  ~SourceSearch();

  // None at the end.
  std::optional<SourceStep> next();

  // Files of folders that are no mail files, and are not called so.
  uint64_t otherFiles() const;
  // For one that turns out to be none when it is opened.
  void countOtherFile();

  // Whether more than one source may come: a folder was met, or more than one name is given.
  bool mayFindSeveral() const;

 private:
  class Search;
  std::unique_ptr<Search> search_;
};

}  // namespace tarn::archive

#endif
