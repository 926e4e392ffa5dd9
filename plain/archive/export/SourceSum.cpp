#include "archive/export/SourceSum.h"

#include <algorithm>
#include <system_error>
#include <vector>

namespace tarn::archive {
namespace {

namespace fs = std::filesystem;

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

// Relative, in byte order.
Outcome<std::vector<std::string>> FilesBelow(const fs::path& folder) {
  std::vector<std::string> names;
  std::error_code error;
  fs::recursive_directory_iterator entry(folder, error);
  for (; !error && entry != fs::recursive_directory_iterator(); entry.increment(error)) {
    std::error_code ignored;
    if (entry->path().filename() == "tmp" && entry->is_directory(ignored)) {
      entry.disable_recursion_pending();
    } else if (entry->is_regular_file(ignored)) {
      names.push_back(entry->path().lexically_relative(folder).string());
    }
  }
  if (error) return SystemTrouble(folder, error.value());
  std::sort(names.begin(), names.end());
  return names;
}

std::string StampOf(const fs::path& path) {
  std::error_code error;
  const auto time = fs::last_write_time(path, error);
  if (error) return "";
  const uintmax_t size = fs::is_directory(path, error) ? 0 : fs::file_size(path, error);
  return std::to_string(size) + "@" + std::to_string(time.time_since_epoch().count());
}

}  // namespace

Outcome<FileSum> SumOfSource(const fs::path& path, SourceKind kind,
                             const std::function<void()>& beat) {
  if (kind != SourceKind::Maildir) return SumOfRegular(path, beat);
  const Outcome<std::vector<std::string>> names = FilesBelow(path);
  if (!names) return names.trouble();
  FileSum all;
  Sha256 lines;
  for (const std::string& name : *names) {
    const Outcome<FileSum> sum = SumOfRegular(path / name, beat);
    if (!sum) return sum.trouble();
    lines.add(sum->sha256 + "  " + name + "\n");
    all.bytes += sum->bytes;
  }
  all.sha256 = lines.digest();
  return all;
}

std::string StampOfSource(const fs::path& path, SourceKind kind) {
  if (kind != SourceKind::Maildir) return StampOf(path);
  return StampOf(path / "cur") + " " + StampOf(path / "new");
}

}  // namespace tarn::archive
