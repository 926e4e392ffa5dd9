#include "siblings/client/FolderFiles.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <string_view>

#include "siblings/client/Protocol.h"

namespace tarn::pages {
namespace {

bool IsPlainName(std::string_view name) {
  constexpr std::string_view kForbidden("/\0", 2);
  return !name.empty() && name != "." && name != ".." && name.size() <= kMaxFileName &&
         name.find_first_of(kForbidden) == std::string_view::npos;
}

}  // namespace

FolderFiles::FolderFiles(const std::filesystem::path& folder) {
  if (folder.empty()) return;
  folder_ = Descriptor(open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
}

std::optional<CopiedFile> FolderFiles::copyOf(const std::string& name) const {
  if (!folder_ || !IsPlainName(name)) return std::nullopt;
  // Without waiting: a pipe has no writer, and is found out below.
  constexpr int kFlags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
  const Descriptor file(openat(folder_.get(), name.c_str(), kFlags));
  struct stat status = {};
  if (!file || fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
  return SealedCopyOf(file.get(), kMaxFolderFile);
}

}  // namespace tarn::pages
