#include "archive/export/OnePdf.h"

#include <system_error>
#include <utility>

#include "console/Paths.h"
#include "console/SystemFiles.h"

namespace tarn::archive {

namespace fs = std::filesystem;

std::string OnePdfName(size_t number) {
  return number == 1 ? "messages.pdf" : "messages " + std::to_string(number) + ".pdf";
}

OnePdf::OnePdf(Staging& staging, std::function<void()> step, const OnePdfLimits& limits)
    : staging_(staging), step_(std::move(step)), limits_(limits) {}

void OnePdf::add(const ItemPages& pages) {
  Folder& folder = folders_[pages.path];
  if (pages.depth == 0) {
    folder.item = folder.end;
    if (folder.waitingPages >= limits_.pages || folder.waitingBytes >= limits_.bytes) {
      write(pages.path, folder);
    }
  }
  folder.end += pages.bytes;
  if (pages.pages == 0) return;
  folder.waiting.push_back({folder.item + pages.offset, pages.bytes, pages.bookmark, pages.depth});
  folder.waitingPages += pages.pages;
  folder.waitingBytes += pages.bytes;
}

void OnePdf::finish() {
  for (auto& [path, folder] : folders_) {
    if (!folder.waiting.empty()) write(path, folder);
  }
}

fs::path OnePdf::copyPart(const GrowingFile& from, const Part& part, size_t number) const {
  fs::path path = staging_.path("pages") / std::to_string(number);
  const Outcome<std::unique_ptr<GrowingFile>> file = GrowingFile::open(path);
  if (!file) CheckStaged(file.trouble());
  CheckStaged(from.readInPieces(part.offset, part.bytes,
                                [&](std::string_view piece) { return (*file)->append(piece); }));
  return path;
}

// Made in the staging, so that nothing half is ever in its place.
void OnePdf::write(const std::string& path, Folder& folder) {
  const fs::path work = staging_.path("pages");
  std::error_code error;
  host::RemoveTree(work);
  fs::create_directory(work, error);
  if (error) CheckStaged(SystemTrouble(work, error.value()));
  const Outcome<std::unique_ptr<GrowingFile>> grown =
      GrowingFile::open(staging_.grown().pathOf(path));
  if (!grown) CheckStaged(grown.trouble());
  std::vector<PdfPart> parts;
  for (const Part& part : folder.waiting) {
    parts.push_back({copyPart(**grown, part, parts.size()).string(), part.bookmark, part.depth});
  }
  const size_t number = folder.files.size() + 1;
  const size_t slash = path.rfind('/');
  const std::string title =
      path.substr(0, slash) + (number == 1 ? "" : ", " + std::to_string(number));
  const fs::path made = work / "joined";
  CheckStaged(JoinPdfs(parts, title, made.string()));
  const Outcome<FileSum> sum = SumOfFile(made);
  if (!sum) CheckStaged(sum.trouble());
  const std::string place = path.substr(0, slash + 1) + OnePdfName(number);
  const fs::path to = staging_.tree() / host::PathFromUtf8(place);
  step_();
  fs::create_directories(to.parent_path(), error);
  if (error) CheckStaged(SystemTrouble(to.parent_path(), error.value()));
  error = host::MoveIntoPlace(made, to);
  if (error) CheckStaged(SystemTrouble(to, error.value()));
  host::RemoveTree(work);
  folder.files.push_back({place, *sum, parts.size()});
  folder.waiting.clear();
  folder.waitingPages = 0;
  folder.waitingBytes = 0;
}

PdfPlace OnePdf::place(const ItemPages& pages) {
  Folder& folder = folders_.at(pages.path);
  if (folder.part == folder.files.at(folder.file).parts) {
    ++folder.file;
    folder.part = 0;
    folder.page = 1;
  }
  const File& file = folder.files.at(folder.file);
  PdfPlace place = {file.path, file.sum, folder.page};
  ++folder.part;
  folder.page += pages.pages;
  return place;
}

}  // namespace tarn::archive
