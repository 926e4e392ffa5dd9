// What the system makes of a name before it looks for the file: upper and lower case are one, all
// periods and blanks at the end of the path are nothing, and so is a single period at the end of a
// component; ":" names a drive or a stream inside a file, and some names are devices in every
// directory, whatever extension they have.
#include "PathRules.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <string_view>

#include "NativePath.h"
#include "Paths.h"
#include "Utf8.h"

namespace tarn::kernel {
namespace {

constexpr std::array<std::string_view, 6> kDevices = {"CON", "PRN",    "AUX",
                                                      "NUL", "CONIN$", "CONOUT$"};
// Followed by a digit from 1 to 9, superscript ones included.
constexpr std::array<std::string_view, 2> kPorts = {"COM", "LPT"};
constexpr std::array<std::string_view, 3> kSuperscripts = {"\xC2\xB9", "\xC2\xB2", "\xC2\xB3"};

constexpr char UpperAscii(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

constexpr bool IsLetter(char c) { return UpperAscii(c) >= 'A' && UpperAscii(c) <= 'Z'; }

std::string_view WithoutEnd(std::string_view component, std::string_view characters) {
  const size_t last = component.find_last_not_of(characters);
  return component.substr(0, last == std::string_view::npos ? 0 : last + 1);
}

// All of them at the end of the path, where no separator follows.
std::string_view WithoutPathEnd(std::string_view path) { return WithoutEnd(path, ". "); }

// Of a component before another one a single period only: "a.." and "a " have names of their own.
std::string_view WithoutPeriod(std::string_view component) {
  const bool single = component.ends_with('.') && !component.ends_with("..");
  return component.substr(0, component.size() - (single ? 1 : 0));
}

// Two or more periods, whatever blanks are among them: which of these lead up, and which are
// nothing, differs between the versions of the system.
bool IsClimbing(std::string_view component) {
  return component.find_first_not_of(". ") == std::string_view::npos &&
         std::count(component.begin(), component.end(), '.') >= 2;
}

bool IsDevice(std::string_view component) {
  const std::string_view base = WithoutEnd(component.substr(0, component.find('.')), " ");
  std::string name(base);
  std::transform(name.begin(), name.end(), name.begin(), UpperAscii);
  if (std::find(kDevices.begin(), kDevices.end(), name) != kDevices.end()) return true;
  return std::any_of(kPorts.begin(), kPorts.end(), [&name](std::string_view port) {
    if (!name.starts_with(port)) return false;
    const std::string_view number = std::string_view(name).substr(port.size());
    if (number.size() == 1) return number[0] >= '1' && number[0] <= '9';
    return std::find(kSuperscripts.begin(), kSuperscripts.end(), number) != kSuperscripts.end();
  });
}

// Characters that no name holds. ":" would name a stream, and "\??\" something else altogether.
bool HasForeignCharacter(std::string_view path) {
  return std::any_of(path.begin(), path.end(), [](char c) {
    return static_cast<unsigned char>(c) < 0x20 ||
           std::string_view("<>:\"|?*").find(c) != std::string_view::npos;
  });
}

// The length of a drive in front, as "C:".
size_t DriveLength(std::string_view path) {
  return path.size() >= 2 && IsLetter(path[0]) && path[1] == ':' ? 2 : 0;
}

bool NamesDevicesDirectory(std::string_view path) {
  return path.size() >= 3 && IsSeparator(path[0]) && IsSeparator(path[1]) && path[2] == '.' &&
         (path.size() == 3 || IsSeparator(path[3]));
}

std::string UpperCase(const std::string& text) {
  const std::u16string wide = ToWide(text);
  std::u16string upper(wide.size(), u'\0');
  const int units =
      ::LCMapStringEx(LOCALE_NAME_INVARIANT, LCMAP_UPPERCASE, AsNative(wide),
                      static_cast<int>(wide.size()), reinterpret_cast<wchar_t*>(upper.data()),
                      static_cast<int>(upper.size()), nullptr, nullptr, 0);
  if (units <= 0) return text;
  upper.resize(static_cast<size_t>(units));
  return ToUtf8(upper);
}

}  // namespace

bool ClimbsUp(const std::string& path) {
  bool found = false;
  const std::string_view all = path;
  ForEachComponent(all.substr(DriveLength(all)),
                   [&](std::string_view component) { found |= IsClimbing(component); });
  return found;
}

bool MayHoldTemporaries(const std::string& directory) {
  const std::string plain = WithoutVerbatimPrefix(directory);
  if (plain.empty() || ClimbsUp(plain) || NamesDevicesDirectory(plain)) return false;
  const std::string_view names = std::string_view(plain).substr(DriveLength(plain));
  if (HasForeignCharacter(names)) return false;
  bool device = false;
  ForEachComponent(names, [&](std::string_view component) { device |= IsDevice(component); });
  return !device;
}

bool MayNameTemporary(const std::string& path) {
  const std::string plain = WithoutVerbatimPrefix(path);
  const std::string_view names = std::string_view(plain).substr(DriveLength(plain));
  return MayHoldTemporaries(path) && !WithoutPathEnd(LastComponent(names)).empty();
}

std::string SpellingForOthers(const std::string& path) {
  // With the prefix the system would take the rest letter by letter, and the kernel does not.
  if (WithoutVerbatimPrefix(path) == path) return path;
  return ToUtf8(TemporaryPath(path));
}

std::string OneSpelling(const std::string& path) {
  const std::string plain = WithoutVerbatimPrefix(path);
  std::string_view rest = WithoutPathEnd(plain);
  std::string result(rest.substr(0, DriveLength(rest)));
  rest.remove_prefix(result.size());
  // Two separators in front name a server, one the root of the drive, none the current directory.
  for (size_t i = 0; i < 2 && i < rest.size() && IsSeparator(rest[i]); ++i) {
    if (i == 0 || result == "/") result.push_back('/');
  }
  bool first = true;
  ForEachComponent(rest, [&](std::string_view component) {
    const std::string_view name = WithoutPeriod(component);
    if (name.empty()) return;
    if (!first) result.push_back('/');
    result.append(name);
    first = false;
  });
  return UpperCase(result);
}

}  // namespace tarn::kernel
