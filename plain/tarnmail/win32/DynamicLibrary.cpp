#include "DynamicLibrary.h"

#include <windows.h>

#include <filesystem>
#include <vector>

#include "console/Failure.h"
#include "console/SystemErrors.h"
#include "console/win32/LastError.h"

namespace tarn::host {
namespace {

std::filesystem::path ProgramDirectory() {
  std::vector<wchar_t> path(MAX_PATH);
  for (;;) {
    const auto room = static_cast<DWORD>(path.size());
    const DWORD length = GetModuleFileNameW(nullptr, path.data(), room);
    if (length < room)
      return std::filesystem::path(path.data(), path.data() + length).parent_path();
    path.resize(path.size() * 2);
  }
}

}  // namespace

DynamicLibrary::DynamicLibrary(const std::string& name) : fileName_(name + ".dll") {
  const std::filesystem::path path = ProgramDirectory() / fileName_;
  // A library that is damaged is told by the error alone, not by a box that waits for somebody.
  DWORD modeBefore = 0;
  SetThreadErrorMode(SEM_FAILCRITICALERRORS, &modeBefore);
  // What the library needs lies beside it, or is the system's.
  library_ = LoadLibraryExW(path.c_str(), nullptr,
                            LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_DEFAULT_DIRS);
  const std::error_code error = library_ == nullptr ? LastError() : std::error_code();
  SetThreadErrorMode(modeBefore, nullptr);
  if (error) {
    throw Failure(ExitStatus::Broken, fileName_,
                  "cannot be loaded: " + ErrorText(error, fileName_));
  }
}

void* DynamicLibrary::function(const char* name) const {
  const FARPROC address = GetProcAddress(static_cast<HMODULE>(library_), name);
  if (address == nullptr) {
    throw Failure(ExitStatus::Broken, fileName_, std::string("does not export ") + name);
  }
  return reinterpret_cast<void*>(address);
}

}  // namespace tarn::host
