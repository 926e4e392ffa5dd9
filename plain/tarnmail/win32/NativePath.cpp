#include "NativePath.h"

#include <windows.h>

#include <wchar.h>

namespace tarn::host {
namespace {

constexpr size_t kLongPath = MAX_PATH - 12;
constexpr std::wstring_view kVerbatim = L"\\\\?\\";
constexpr std::wstring_view kDevices = L"\\\\.\\";

}  // namespace

std::wstring FullPath(const std::filesystem::path& path) {
  std::wstring text;
  DWORD room = MAX_PATH;
  // Asked again when another thread changed the current directory to a longer one meanwhile.
  while (room > text.size()) {
    text.resize(room);
    room = GetFullPathNameW(path.c_str(), static_cast<DWORD>(text.size()), text.data(), nullptr);
  }
  text.resize(room < text.size() ? room : 0);
  return text;
}

bool IsDevicePath(std::wstring_view fullPath) { return fullPath.starts_with(kDevices); }

bool IsConsolePath(std::wstring_view path) {
  if (IsDevicePath(path)) path.remove_prefix(kDevices.size());
  for (const std::wstring_view name : {L"CON", L"CONOUT$"}) {
    if (path.size() == name.size() && _wcsnicmp(path.data(), name.data(), name.size()) == 0) {
      return true;
    }
  }
  return false;
}

std::wstring WithLongPrefix(std::wstring_view path, std::wstring_view fullPath) {
  if (fullPath.size() < kLongPath || path.starts_with(kVerbatim) ||
      fullPath.starts_with(kVerbatim) || IsDevicePath(fullPath)) {
    return std::wstring(path);
  }
  std::wstring prefixed(kVerbatim);
  if (fullPath.starts_with(L"\\\\")) {
    prefixed += L"UNC";
    fullPath.remove_prefix(1);
  }
  return prefixed.append(fullPath);
}

std::wstring NativePath(const std::filesystem::path& path) {
  return WithLongPrefix(path.native(), FullPath(path));
}

}  // namespace tarn::host
