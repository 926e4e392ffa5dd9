#include "NativePath.h"

#include <string.h>
#include <windows.h>

#include <string_view>

#include "Paths.h"
#include "Utf8.h"

namespace tarn::kernel {
namespace {

// Directories must leave room for a short file name: the least of the system's limits.
constexpr size_t kLongPath = MAX_PATH - 12;

constexpr std::u16string_view kVerbatim = u"\\\\?\\";
constexpr std::u16string_view kDevices = u"\\\\.\\";

std::u16string WithLongPrefix(const std::u16string& path) {
  const std::u16string full = FullPath(path);
  if (full.size() < kLongPath || full.starts_with(kVerbatim) || full.starts_with(kDevices)) {
    return path;
  }
  const std::u16string verbatim(kVerbatim);
  return full.starts_with(u"\\\\") ? verbatim + u"UNC" + full.substr(1) : verbatim + full;
}

}  // namespace

std::u16string FullPath(const std::u16string& path) {
  std::u16string full;
  DWORD room = MAX_PATH;
  // Asked again when another thread changed the current directory to a longer one meanwhile.
  while (!path.empty() && room > full.size()) {
    full.resize(room);
    room = ::GetFullPathNameW(AsNative(path), static_cast<DWORD>(full.size()),
                              reinterpret_cast<wchar_t*>(full.data()), nullptr);
  }
  full.resize(room < full.size() ? room : 0);
  return full;
}

std::u16string HostPath(const std::string& path) {
  const std::u16string wide = ToWide(path);
  const bool asItStands = wide.starts_with(kVerbatim) || wide.starts_with(kDevices);
  return wide.empty() || asItStands ? wide : WithLongPrefix(wide);
}

std::string WithoutVerbatimPrefix(const std::string& path) {
  const std::string front = WithSlashes(path.substr(0, 8));
  if (front.size() < 7 || !front.starts_with("//?/")) return path;
  if (front[5] == ':' && front[6] == '/') return path.substr(4);
  const bool server = front.size() == 8 && front[7] == '/' && _strnicmp(&front[4], "UNC", 3) == 0;
  return server ? "\\\\" + path.substr(8) : path;
}

std::u16string TemporaryPath(const std::string& path) {
  const std::u16string wide = ToWide(WithoutVerbatimPrefix(path));
  return wide.empty() ? wide : WithLongPrefix(wide);
}

}  // namespace tarn::kernel
