// PageFiles.h - the files of the page that are the same for every export: those of page/.
#ifndef TARN_ARCHIVE_PAGEFILES_H
#define TARN_ARCHIVE_PAGEFILES_H

#include <string_view>

namespace tarn::archive {

struct PageFile {
  const char* name;
  std::string_view bytes;
};

extern const PageFile kPageFiles[3];

}  // namespace tarn::archive

#endif
