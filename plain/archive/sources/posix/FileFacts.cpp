#include "archive/sources/FileFacts.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace tarn::archive {
namespace {

Trouble LastTrouble() {
  const int error = errno;
  const bool isMissing = error == ENOENT || error == ENOTDIR;
  return {isMissing ? TroubleKind::Missing : TroubleKind::Unreadable,
          isMissing ? "no such file" : std::generic_category().message(error)};
}

FileForm FormOf(mode_t mode) {
  if (S_ISREG(mode)) return FileForm::Regular;
  if (S_ISDIR(mode)) return FileForm::Folder;
  return S_ISFIFO(mode) ? FileForm::Pipe : FileForm::Other;
}

}  // namespace

Outcome<FileFacts> FactsOfFile(const std::filesystem::path& path) {
  struct stat link = {};
  if (lstat(path.c_str(), &link) != 0) return LastTrouble();
  FileFacts facts;
  facts.isLink = S_ISLNK(link.st_mode);
  struct stat target = link;
  if (facts.isLink && stat(path.c_str(), &target) != 0) {
    const Trouble trouble = LastTrouble();
    if (trouble.kind != TroubleKind::Missing) return trouble;
    return Trouble{TroubleKind::Missing, "the link leads nowhere"};
  }
  facts.form = FormOf(target.st_mode);
  facts.identity = {target.st_dev, target.st_ino};
  return facts;
}

Outcome<std::string> BeginningOfFile(const std::filesystem::path& path, size_t count) {
  // Whatever it has become meanwhile, nothing here waits for it.
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  if (file < 0) return LastTrouble();
  std::string bytes(count, '\0');
  size_t got = 0;
  ssize_t step = 1;
  while (got < count && step != 0) {
    step = read(file, bytes.data() + got, count - got);
    if (step < 0 && errno == EINTR) continue;
    if (step < 0) break;
    got += static_cast<size_t>(step);
  }
  const Outcome<std::string> failed = step < 0 ? LastTrouble() : Trouble{};
  close(file);
  if (step < 0) return failed.trouble();
  bytes.resize(got);
  return bytes;
}

}  // namespace tarn::archive
