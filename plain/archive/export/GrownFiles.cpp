#include "archive/export/GrownFiles.h"

#include <algorithm>
#include <utility>

namespace tarn::archive {

std::filesystem::path GrownFiles::pathOf(const std::string& name) const {
  Sha256 sum;
  sum.add(name);
  return folder_ / sum.digest();
}

Outcome<GrowingFile*> GrownFiles::open(const std::string& name) {
  constexpr size_t kMostOpen = 8;
  const auto found = open_.find(name);
  if (found != open_.end()) return found->second.get();
  Outcome<std::unique_ptr<GrowingFile>> file = GrowingFile::open(pathOf(name));
  if (!file) return file.trouble();
  if (open_.size() == kMostOpen) open_.clear();
  return (open_[name] = std::move(*file)).get();
}

std::optional<Trouble> GrownFiles::append(const std::string& name, std::string_view bytes) {
  if (bytes.empty() && files_.contains(name)) return std::nullopt;
  const Outcome<GrowingFile*> file = open(name);
  if (!file) return file.trouble();
  Grown& grown = files_[name];
  // What an ended run has left after the last batch goes.
  std::optional<Trouble> trouble;
  if ((*file)->size() != grown.bytes) trouble = (*file)->cutTo(grown.bytes);
  if (!trouble) trouble = (*file)->append(bytes);
  if (trouble) return trouble;
  grown.bytes += bytes.size();
  grown.sum.add(bytes);
  changed_.insert(name);
  return std::nullopt;
}

bool GrownFiles::restore(const std::string& name, const FileSum& sum) {
  Grown grown;
  const std::optional<Trouble> trouble = ReadInPieces(pathOf(name), [&](std::string_view piece) {
    piece = piece.substr(0, static_cast<size_t>(sum.bytes - grown.bytes));
    grown.sum.add(piece);
    grown.bytes += piece.size();
    return grown.bytes < sum.bytes;
  });
  if (trouble || grown.bytes != sum.bytes || grown.sum.digest() != sum.sha256) return false;
  files_.insert_or_assign(name, std::move(grown));
  return true;
}

std::map<std::string, FileSum> GrownFiles::sums() const {
  std::map<std::string, FileSum> sums;
  for (const auto& [name, grown] : files_) sums[name] = {grown.bytes, grown.sum.digest()};
  return sums;
}

std::map<std::string, FileSum> GrownFiles::takeChanges() {
  std::map<std::string, FileSum> sums;
  for (const std::string& name : std::exchange(changed_, {})) {
    const Grown& grown = files_[name];
    sums[name] = {grown.bytes, grown.sum.digest()};
  }
  return sums;
}

}  // namespace tarn::archive
