#include "Platform/win32/LongPaths.h"

#include <windows.h>

namespace tarn::platform {
namespace {

// Directories must leave room for a short file name: the least of the system's limits.
constexpr size_t kLongPath = MAX_PATH - 12;

}  // namespace

std::wstring FullPath(const std::wstring& path) {
  std::wstring full;
  DWORD room = MAX_PATH;
  // Asked again when another thread changed the current directory to a longer one meanwhile.
  while (!path.empty() && room > full.size()) {
    full.resize(room);
    room = GetFullPathNameW(path.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr);
  }
  full.resize(room < full.size() ? room : 0);
  return full;
}

std::wstring WithLongPrefix(std::wstring_view path, std::wstring_view fullPath) {
  const auto isSpecial = [](std::wstring_view text) {
    return text.starts_with(kVerbatimPrefix) || text.starts_with(kDevicePrefix);
  };
  if (fullPath.size() < kLongPath || isSpecial(path) || isSpecial(fullPath)) {
    return std::wstring(path);
  }
  std::wstring prefixed(kVerbatimPrefix);
  if (fullPath.starts_with(L"\\\\")) {
    prefixed += L"UNC";
    fullPath.remove_prefix(1);
  }
  return prefixed.append(fullPath);
}

std::wstring LongPath(const std::wstring& path) { return WithLongPrefix(path, FullPath(path)); }

}  // namespace tarn::platform
