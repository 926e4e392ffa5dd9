#include "PageFolder.h"

#include <cstdio>
#include <random>
#include <system_error>

#include "console/Failure.h"
#include "console/Paths.h"
#include "console/SystemErrors.h"
#include "console/SystemFiles.h"

namespace tarn::host {
namespace {

namespace fs = std::filesystem;

// A folder of a new name, with the rights that any folder gets.
fs::path MakeHidden(const fs::path& parent, std::error_code& error) {
  std::random_device random;
  fs::path hidden;
  do {
    hidden = parent / (".tarnmail-" + std::to_string(random()) + ".part");
  } while (!fs::create_directory(hidden, error) && !error);
  return hidden;
}

}  // namespace

std::string PageFileName(int32_t page) {
  char name[32];
  std::snprintf(name, sizeof name, "page-%04d.png", page);
  return name;
}

PageFolder::PageFolder(const std::string& folder, const std::string& source)
    : folder_(folder), source_(source), place_(PathFromUtf8(folder)) {
  if (folder.empty()) throw Failure(ExitStatus::Usage, "empty name of the output folder");
  // "pages/" is "pages".
  if (!place_.has_filename()) place_ = place_.parent_path();
  std::error_code error;
  const FileKind kind = KindOfFile(place_, error);
  if (kind == FileKind::Unknown) throw Failure(ExitStatus::Usage, folder_, ErrorText(error));
  isNew_ = kind == FileKind::Missing;
  if (!isNew_ && kind != FileKind::Directory) {
    throw Failure(ExitStatus::Usage, folder_, "is not a folder");
  }
  const fs::path parent = isNew_ ? place_.parent_path() : place_;
  error = hidden_.make([&parent](std::error_code& failed) { return MakeHidden(parent, failed); });
  if (error) throw Failure(ExitStatus::Usage, folder_, ErrorText(error));
}

void PageFolder::write(int32_t page, std::string_view bytes) {
  const std::string name = PageFileName(page);
  if (!isNew_) checkPlace(place_ / name);
  WritableFile file;
  std::error_code error = file.create(hidden_.path() / name);
  if (!error) error = file.writeAndClose(bytes);
  if (error) throw Failure(ExitStatus::Failed, Utf8FromPath(place_ / name), ErrorText(error));
  names_.push_back(name);
}

// What is there must be one that may be replaced.
void PageFolder::checkPlace(const fs::path& place) const {
  std::error_code error;
  const FileKind kind = KindOfFile(place, error);
  if (kind == FileKind::Missing) return;
  const auto refuse = [&](const std::string& why) {
    return Failure(ExitStatus::Usage, Utf8FromPath(place), why);
  };
  if (kind == FileKind::Unknown) throw refuse(ErrorText(error));
  if (kind != FileKind::Regular) throw refuse("is there already, and is no file");
  if (IsSameFile(place, PathFromUtf8(source_))) throw refuse("is the mail file itself");
  error = CheckWritable(place);
  if (error) throw refuse(ErrorText(error));
}

void PageFolder::putInPlace() {
  std::error_code error;
  if (isNew_) {
    error = MoveIntoPlace(hidden_.path(), place_);
    if (error) throw Failure(ExitStatus::Usage, folder_, ErrorText(error));
    hidden_.keep();
    return;
  }
  for (const std::string& name : names_) {
    error = MoveIntoPlace(hidden_.path() / name, place_ / name);
    if (error) throw Failure(ExitStatus::Usage, Utf8FromPath(place_ / name), ErrorText(error));
  }
}

}  // namespace tarn::host
