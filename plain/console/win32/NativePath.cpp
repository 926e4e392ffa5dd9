#include "NativePath.h"

#include <wchar.h>

#include "Platform/win32/LongPaths.h"

namespace tarn::host {

using platform::kDevicePrefix;

std::wstring FullPath(const std::filesystem::path& path) {
  return platform::FullPath(path.native());
}

bool IsDevicePath(std::wstring_view fullPath) { return fullPath.starts_with(kDevicePrefix); }

bool IsPipePath(std::wstring_view fullPath) {
  constexpr std::wstring_view kPipes = L"pipe\\";
  if (!IsDevicePath(fullPath)) return false;
  fullPath.remove_prefix(kDevicePrefix.size());
  return fullPath.size() > kPipes.size() &&
         _wcsnicmp(fullPath.data(), kPipes.data(), kPipes.size()) == 0;
}

bool IsConsolePath(std::wstring_view path) {
  if (IsDevicePath(path)) path.remove_prefix(kDevicePrefix.size());
  for (const std::wstring_view name : {L"CON", L"CONOUT$"}) {
    if (path.size() == name.size() && _wcsnicmp(path.data(), name.data(), name.size()) == 0) {
      return true;
    }
  }
  return false;
}

std::wstring NativePath(const std::filesystem::path& path) {
  return platform::LongPath(path.native());
}

}  // namespace tarn::host
