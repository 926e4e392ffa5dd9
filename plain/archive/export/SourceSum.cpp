#include "archive/export/SourceSum.h"

#include <algorithm>
#include <system_error>
#include <vector>

namespace tarn::archive {
namespace {

namespace fs = std::filesystem;

const std::string kUnreadable = "unreadable";

Outcome<FileSum> SumOfRegular(const fs::path& path, const std::function<void()>& beat) {
  FileSum sum;
  Sha256 running;
  // A source may be named by a link.
  std::error_code error;
  const fs::path target = fs::canonical(path, error);
  const std::optional<Trouble> trouble =
      ReadInPieces(error ? path : target, [&](std::string_view piece) {
        running.add(piece);
        sum.bytes += piece.size();
        beat();
        return true;
      });
  if (trouble) return *trouble;
  sum.sha256 = running.digest();
  return sum;
}

struct Below {
  std::vector<std::string> files;    // relative to the folder, as folders are
  std::vector<std::string> folders;  // "" for itself
  std::vector<std::string> unread;   // folders that cannot be read
};

// All sorted, without those of temporary files. Links to folders are not followed.
Below FilesBelow(const fs::path& folder) {
  Below below;
  below.folders.emplace_back();
  for (size_t next = 0; next < below.folders.size(); ++next) {
    const fs::path relative = below.folders[next];
    std::error_code error;
    fs::directory_iterator entry(folder / relative, error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
      const fs::path name = entry->path().filename();
      std::error_code ignored;
      const bool isFolder = entry->is_directory(ignored);
      if (isFolder && (name == "tmp" || entry->is_symlink(ignored))) continue;
      if (isFolder) {
        below.folders.push_back((relative / name).string());
      } else if (entry->is_regular_file(ignored)) {
        below.files.push_back((relative / name).string());
      }
    }
    if (error) below.unread.push_back((relative / "").string());
  }
  for (auto* const list : {&below.files, &below.folders, &below.unread}) {
    std::sort(list->begin(), list->end());
  }
  return below;
}

std::string StampOf(const fs::path& path) {
  std::error_code error;
  const auto time = fs::last_write_time(path, error);
  if (error) return "";
  const uintmax_t size = fs::is_directory(path, error) ? 0 : fs::file_size(path, error);
  return std::to_string(size) + "@" + std::to_string(time.time_since_epoch().count());
}

bool IsUnread(const Below& below) {
  return std::find(below.unread.begin(), below.unread.end(), "") != below.unread.end();
}

const Trouble kUnreadFolder = {TroubleKind::Unreadable, "the folder cannot be read"};

}  // namespace

Outcome<std::vector<std::string>> FilesOfMaildir(const fs::path& folder) {
  Below below = FilesBelow(folder);
  if (IsUnread(below)) return kUnreadFolder;
  return std::move(below.files);
}

Outcome<FileSum> SumOfSource(const fs::path& path, SourceKind kind,
                             const std::function<void()>& beat) {
  if (kind != SourceKind::Maildir) return SumOfRegular(path, beat);
  const Below below = FilesBelow(path);
  if (IsUnread(below)) return kUnreadFolder;
  FileSum all;
  Sha256 lines;
  const auto addLine = [&lines](const std::string& sum, const std::string& name) {
    lines.add(sum + "  " + name + "\n");
  };
  for (const std::string& name : below.files) {
    const Outcome<FileSum> sum = SumOfRegular(path / name, beat);
    addLine(sum ? sum->sha256 : kUnreadable, name);
    if (sum) all.bytes += sum->bytes;
  }
  for (const std::string& name : below.unread) addLine(kUnreadable, name);
  all.sha256 = lines.digest();
  return all;
}

std::string StampOfSource(const fs::path& path, SourceKind kind) {
  if (kind != SourceKind::Maildir) return StampOf(path);
  const Below below = FilesBelow(path);
  Sha256 stamps;
  for (const auto* const list : {&below.folders, &below.files}) {
    for (const std::string& name : *list) {
      stamps.addText(name);
      stamps.addText(StampOf(path / name));
    }
  }
  return stamps.digest();
}

}  // namespace tarn::archive
