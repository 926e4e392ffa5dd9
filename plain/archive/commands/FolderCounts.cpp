#include "archive/commands/FolderCounts.h"

#include "archive/commands/TroubleReport.h"
#include "archive/common/ItemFilter.h"
#include "archive/common/JsonWriter.h"
#include "archive/text/TerminalText.h"

namespace tarn::archive {

uint64_t& FolderCounts::countOf(const Folder& folder) {
  if (!last_ || folder != last_) {
    const auto [place, isNew] = indexes_.try_emplace(*folder, counts_.size());
    if (isNew) counts_.push_back({folder});
    last_ = folder;
    lastIndex_ = place->second;
  }
  return counts_[lastIndex_].items;
}

std::string FolderCounts::asJson(const ListedSource& from) const {
  std::string lines;
  for (const Count& count : counts_) {
    JsonWriter json;
    json.openObject();
    json.name("source");
    json.text(from.source.name);
    json.name("folder");
    json.text(FolderText(*count.folder));
    json.name("items");
    json.number(count.items);
    json.closeObject();
    lines += json.line();
    lines += '\n';
  }
  return lines;
}

std::string FolderCounts::asTabbed(const ListedSource& from) const {
  std::string lines;
  for (const Count& count : counts_) {
    lines += HarmlessLine(FolderText(*count.folder)) + '\t' + std::to_string(count.items);
    if (from.isOneOfSeveral) lines += '\t' + HarmlessLine(from.source.name);
    lines += '\n';
  }
  return lines;
}

std::string FolderCounts::asTree(const ListedSource& from) const {
  constexpr size_t kNumber = 8;
  constexpr size_t kIndent = 2;
  const std::string source = HarmlessLine(SpokenName(from.source.name));
  std::string lines;
  // A source without folders is one line.
  const bool isFlat = counts_.size() == 1 && counts_.front().folder->empty();
  if (from.isOneOfSeveral && !isFlat) lines = source + ":\n";
  for (const Count& count : counts_) {
    const std::string number = std::to_string(count.items);
    lines += std::string(number.size() < kNumber ? kNumber - number.size() : 0, ' ') + number;
    const size_t depth = count.folder->empty() ? 0 : count.folder->size() - 1;
    lines += std::string(2 + depth * kIndent, ' ');
    lines += count.folder->empty() ? source : HarmlessLine(count.folder->back());
    lines += '\n';
  }
  return lines;
}

}  // namespace tarn::archive
