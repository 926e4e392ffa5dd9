#include "NativePath.h"

#include <string.h>

#include "Paths.h"
#include "Platform/win32/LongPaths.h"
#include "Utf8.h"

namespace tarn::kernel {
namespace {

std::u16string Text(const std::wstring& path) { return AsText(path.c_str()); }

std::u16string LongPath(const std::u16string& path) {
  return Text(platform::LongPath(AsNative(path)));
}

}  // namespace

std::u16string FullPath(const std::u16string& path) {
  return Text(platform::FullPath(AsNative(path)));
}

std::u16string HostPath(const std::string& path) { return LongPath(ToWide(path)); }

std::string WithoutVerbatimPrefix(const std::string& path) {
  const std::string front = WithSlashes(path.substr(0, 8));
  if (front.size() < 7 || !front.starts_with("//?/")) return path;
  if (front[5] == ':' && front[6] == '/') return path.substr(4);
  const bool server = front.size() == 8 && front[7] == '/' && _strnicmp(&front[4], "UNC", 3) == 0;
  return server ? "\\\\" + path.substr(8) : path;
}

std::u16string TemporaryPath(const std::string& path) {
  return LongPath(ToWide(WithoutVerbatimPrefix(path)));
}

}  // namespace tarn::kernel
