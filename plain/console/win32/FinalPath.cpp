#include "FinalPath.h"

#include <windows.h>

#include <string>

#include "FileHandle.h"
#include "LastError.h"

namespace tarn::host {

std::filesystem::path FinalPath(const std::filesystem::path& path, std::error_code& error) {
  error.clear();
  const FileHandle file = OpenForQuestions(path);
  std::wstring text;
  DWORD length = file ? MAX_PATH : 0;
  // The length is without the terminator, or, for too little room, with it.
  while (length > 0 && length >= text.size()) {
    text.resize(length + 1);
    length = GetFinalPathNameByHandleW(file.get(), text.data(), static_cast<DWORD>(text.size()),
                                       FILE_NAME_NORMALIZED);
  }
  if (length == 0) error = LastError();
  text.resize(length);
  return text;
}

}  // namespace tarn::host
