#include "archive/mail/MaildirNames.h"

#include <glib.h>

#include <algorithm>
#include <array>
#include <limits>
#include <memory>
#include <system_error>

#include "archive/text/BodyText.h"

namespace tarn::archive::mail {
namespace {

constexpr std::array<std::string_view, 3> kFlags{":2,", ";2,", "!2,"};

struct FreeBytes {
  void operator()(guchar* bytes) const { g_free(bytes); }
};

// What is between "&" and "-": UTF-16 in base64 with "," for "/" and without "=".
std::string DecodedRun(std::string_view run) {
  if (run.empty()) return "&";
  std::string base64(run);
  std::replace(base64.begin(), base64.end(), ',', '/');
  base64.append((4 - base64.size() % 4) % 4, '=');
  gsize length = 0;
  const std::unique_ptr<guchar, FreeBytes> units(g_base64_decode(base64.c_str(), &length));
  return Utf8Of({reinterpret_cast<const char*>(units.get()), length}, "utf-16be");
}

std::string DecodedName(std::string_view name) {
  std::string decoded;
  while (!name.empty()) {
    const size_t end = name.starts_with('&') ? name.find('-') : std::string_view::npos;
    if (end != std::string_view::npos) {
      decoded += DecodedRun(name.substr(1, end - 1));
      name.remove_prefix(end + 1);
    } else {
      decoded += name[0];
      name.remove_prefix(1);
    }
  }
  return Utf8Of(decoded, "");
}

}  // namespace

std::vector<std::string> FolderOfMaildirName(std::string_view name) {
  std::vector<std::string> folder;
  while (name.starts_with('.')) {
    name.remove_prefix(1);
    const std::string_view part = name.substr(0, name.find('.'));
    folder.push_back(DecodedName(part));
    name.remove_prefix(part.size());
  }
  return folder;
}

std::string_view UniquePart(std::string_view fileName) {
  for (const std::string_view flags : kFlags) {
    fileName = fileName.substr(0, fileName.rfind(flags));
  }
  return fileName;
}

Outcome<FileNames> FileNames::of(const std::filesystem::path& folder) {
  namespace fs = std::filesystem;
  FileNames names;
  std::error_code error;
  fs::directory_iterator entry(folder, error);
  if (error == std::errc::no_such_file_or_directory) return names;
  for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
    const std::string name = entry->path().filename().string();
    std::error_code ignored;
    if (name.starts_with('.')) continue;
    if (entry->is_directory(ignored)) {
      const bool isEmpty = fs::is_empty(entry->path(), ignored);
      if (!isEmpty || ignored) names.folders_.push_back(name);
      continue;
    }
    if (names.all_.size() + name.size() > std::numeric_limits<uint32_t>::max()) {
      return Trouble{TroubleKind::TooLarge, "the folder has too many files"};
    }
    names.starts_.push_back(static_cast<uint32_t>(names.all_.size()));
    names.all_.append(name.c_str(), name.size() + 1);
  }
  if (error) return Trouble{TroubleKind::Unreadable, error.message()};
  std::sort(names.folders_.begin(), names.folders_.end());
  const char* const all = names.all_.c_str();
  std::sort(names.starts_.begin(), names.starts_.end(), [all](uint32_t a, uint32_t b) {
    return std::string_view(all + a) < std::string_view(all + b);
  });
  return names;
}

std::optional<size_t> FileNames::firstOf(std::string_view uniquePart) const {
  std::optional<size_t> first;
  const auto look = [&](const std::string& start) {
    const auto found = std::lower_bound(
        starts_.begin(), starts_.end(), start,
        [&](uint32_t name, const std::string& wanted) { return all_.c_str() + name < wanted; });
    if (found == starts_.end()) return;
    const auto index = static_cast<size_t>(found - starts_.begin());
    if (UniquePart(at(index)) == uniquePart) first = std::min(first.value_or(index), index);
  };
  look(std::string(uniquePart));
  for (const std::string_view flags : kFlags) look(std::string(uniquePart).append(flags));
  return first;
}

}  // namespace tarn::archive::mail
