#include "SystemErrors.h"

#include <windows.h>

#include <algorithm>
#include <iterator>

#include "LastError.h"
#include "Platform/win32/WideText.h"
#include "Text.h"

namespace tarn::host {
namespace {

struct Meaning {
  DWORD error;
  const char* text;
};

// The words of other systems where they have the same error.
constexpr Meaning kMeanings[] = {
    {ERROR_FILE_NOT_FOUND, "No such file or directory"},
    {ERROR_PATH_NOT_FOUND, "No such file or directory"},
    {ERROR_INVALID_DRIVE, "No such file or directory"},
    {ERROR_ACCESS_DENIED, "Permission denied"},
    {ERROR_WRITE_PROTECT, "Read-only file system"},
    {ERROR_INVALID_HANDLE, "Bad file descriptor"},
    {ERROR_NOT_ENOUGH_MEMORY, "Cannot allocate memory"},
    {ERROR_OUTOFMEMORY, "Cannot allocate memory"},
    {ERROR_HANDLE_DISK_FULL, "No space left on device"},
    {ERROR_DISK_FULL, "No space left on device"},
    {ERROR_BROKEN_PIPE, "Broken pipe"},
    {ERROR_NO_DATA, "Broken pipe"},
    {ERROR_FILENAME_EXCED_RANGE, "File name too long"},
    {ERROR_FILE_EXISTS, "File exists"},
    {ERROR_ALREADY_EXISTS, "File exists"},
    {ERROR_SHARING_VIOLATION, "in use by another program"},
    {ERROR_LOCK_VIOLATION, "in use by another program"},
    {ERROR_CANT_RESOLVE_FILENAME, "Too many levels of symbolic links"},
    {ERROR_INVALID_NAME, "not a valid file name"},
};

// The texts have places for names ("%1"), which nothing else tells the meaning of: the first is the
// file, nearly always alone.
std::string WithSubject(std::string text, std::string_view subject) {
  for (size_t at = text.find('%'); at != std::string::npos; at = text.find('%', at)) {
    const size_t digits = text.find_first_not_of("0123456789", at + 1);
    const size_t length = std::min(digits, text.size()) - at;
    if (length == 1) {
      ++at;
      continue;
    }
    text.replace(at, length, subject);
    at += subject.size();
  }
  return text;
}

std::string SystemText(DWORD error, std::string_view subject) {
  wchar_t text[1024];
  DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                error, 0, text, static_cast<DWORD>(std::size(text)), nullptr);
  while (length > 0 && (text[length - 1] <= L' ' || text[length - 1] == L'.')) --length;
  if (length == 0) return "error " + std::to_string(error);
  return WithSubject(Utf8FromWide(platform::AsUtf16({text, length})), subject);
}

}  // namespace

std::error_code LastError() {
  const DWORD error = GetLastError();
  return {static_cast<int>(error == ERROR_SUCCESS ? ERROR_GEN_FAILURE : error),
          std::system_category()};
}

std::string ErrorText(const std::error_code& error, std::string_view subject) {
  if (error.category() != std::system_category()) return error.message();
  const auto number = static_cast<DWORD>(error.value());
  for (const Meaning& meaning : kMeanings) {
    if (meaning.error == number) return meaning.text;
  }
  return SystemText(number, subject);
}

}  // namespace tarn::host
