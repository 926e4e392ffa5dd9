// Commands.h - the archive commands of tarnmail. Each writes to standard output itself, since what
// it has to tell may be long, and throws host::Failure where it cannot do what it was asked.
#ifndef TARN_ARCHIVE_COMMANDS_H
#define TARN_ARCHIVE_COMMANDS_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "archive/common/ItemFilter.h"
#include "console/Failure.h"

namespace tarn::archive {

struct ListOptions {
  std::vector<std::string> paths;
  bool json = false;
  bool folders = false;   // the folders with the numbers of their items
  bool embedded = false;  // items within items too; JSON has them anyway
  bool recover = false;
  FilterOptions filter;
  std::optional<std::string> temporary;  // where streams are copied to
};

host::ExitStatus List(const ListOptions& options);

struct ShowOptions {
  std::string path;
  std::optional<std::string> id;
  bool headers = false;              // the original ones, and nothing else
  std::optional<size_t> attachment;  // its number, from 1: its bytes, and nothing else
  std::optional<std::string> output;
  std::optional<std::string> attachmentFolder;  // all attachments as files there
  std::optional<std::string> temporary;
};

host::ExitStatus Show(const ShowOptions& options);

struct SearchOptions {
  std::string directory;           // of an export
  std::vector<std::string> words;  // joined by blanks
  bool json = false;
  std::optional<size_t> limit;  // of items; 0 for all; else as many as suit a terminal, or all
  FilterOptions filter;
};

host::ExitStatus Search(const SearchOptions& options);

}  // namespace tarn::archive

#endif
