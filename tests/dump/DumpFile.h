// DumpFile.h - all variants of all calls on one file: every message and, of a store with several, a
// number beyond the last; both I/O modes, languages with label tables of their own, rich and plain
// text.
#ifndef TARN_TESTS_DUMP_DUMPFILE_H
#define TARN_TESTS_DUMP_DUMPFILE_H

#include <cstdint>
#include <filesystem>
#include <string>

#include "DumpLines.h"

namespace tarn::test {

struct DumpOptions {
  int32_t messages = 100;            // the most of a store
  int32_t languages = 5;             // the first so many of the table in DumpFile.cpp
  std::filesystem::path tempFolder;  // for the kernel's temporary files
  std::filesystem::path outFolder;   // for extracted attachments
};

// `name` is the file's in the lines.
void DumpFile(const std::filesystem::path& file, const std::string& name,
              const DumpOptions& options, DumpLines& lines);

}  // namespace tarn::test

#endif
