#include "archive/store/StoreReader.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "archive/mapi/MapiItem.h"
#include "archive/store/FolderRows.h"
#include "archive/store/FolderTree.h"
#include "archive/store/NameMap.h"
#include "archive/store/StoreMessage.h"
#include "archive/store/StoreSession.h"
#include "archive/store/StoreTrouble.h"

namespace tarn::archive {
namespace store {
namespace {

// Of the places of items that no table names, whose rows are their ids. No folder has that number.
constexpr uint64_t kRecovered = 0;

class StoreReader final : public ItemReader {
 public:
  StoreReader(std::unique_ptr<StoreSession> session, const ReaderOptions& options)
      : session_(std::move(session)), options_(options), tree_(*session_, troubles_) {}

  std::optional<Entry> next() override;
  Outcome<std::unique_ptr<Item>> find(std::string_view id) override { return findIn(nullptr, id); }
  Outcome<std::unique_ptr<Item>> findIn(const FolderPath& folder, std::string_view id) override;
  std::optional<ReadingPlace> place() const override { return place_; }
  std::optional<Trouble> goTo(const ReadingPlace& place, FolderPath folder) override;

 private:
  enum class Stage : uint8_t { Folders, Unlisted, Recovered, Done };

  void dropWhatIsKept();
  std::optional<Entry> nextOfFolder();
  std::optional<Entry> enterNextFolder();
  std::optional<Entry> beginRecovered();
  std::optional<Entry> nextRecovered();
  void findUnlisted();
  void readNames();
  Outcome<std::unique_ptr<mapi::MapiMessage>> openMessage(uint32_t nid);
  std::unique_ptr<Item> makeItem(uint32_t nid, FolderPath folder, mapi::KnownFields known = {});

  std::unique_ptr<StoreSession> session_;
  ReaderOptions options_;
  std::vector<PlaceTrouble> troubles_;  // met, and not given yet
  size_t givenTroubles_ = 0;
  FolderTree tree_;
  std::shared_ptr<NameMap> names_;
  IdSet met_;
  std::optional<FolderRows> rows_;
  uint32_t folderNid_ = 0;  // of the rows
  FolderPath folder_;
  std::optional<ReadingPlace> place_;
  Stage stage_ = Stage::Folders;
  std::vector<uint32_t> unlisted_;
  size_t recovered_ = 0;
};

// Nothing that was given refers to the context any more.
void StoreReader::dropWhatIsKept() {
  if (!session_->isFull()) return;
  if (rows_) rows_->drop();
  session_->drop();
}

std::optional<Entry> StoreReader::next() {
  dropWhatIsKept();
  for (;;) {
    if (givenTroubles_ < troubles_.size()) return std::move(troubles_[givenTroubles_++]);
    troubles_.clear();
    givenTroubles_ = 0;
    std::optional<Entry> entry;
    if (rows_) {
      entry = nextOfFolder();
    } else if (stage_ == Stage::Folders) {
      entry = enterNextFolder();
    } else if (stage_ == Stage::Unlisted) {
      entry = beginRecovered();
    } else if (stage_ == Stage::Recovered) {
      entry = nextRecovered();
    } else {
      return std::nullopt;
    }
    if (entry) return entry;
  }
}

std::optional<Entry> StoreReader::nextOfFolder() {
  auto listed = rows_->next();
  if (rows_->isAtEnd() && !listed) rows_ = std::nullopt;
  if (!listed) return std::nullopt;
  // The place is that of rows_ as long as there is one.
  place_ = ReadingPlace{folderNid_, rows_->row(), rows_->follows()};
  return makeItem(listed->nid, folder_, std::move(listed->known));
}

std::optional<Entry> StoreReader::enterNextFolder() {
  const auto folder = tree_.next();
  if (!folder) {
    if (tree_.isAtEnd()) stage_ = Stage::Unlisted;
    return std::nullopt;
  }
  const auto opened = Guarded("the list of its items cannot be read", [&] {
    rows_.emplace(*session_, *folder, met_, troubles_);
    return true;
  });
  if (!opened) {
    rows_ = std::nullopt;
    // A folder of which nothing is there is one trouble.
    if (folder->isReadable || opened.trouble().kind != TroubleKind::Missing) {
      troubles_.push_back({{IdText(folder->nid), std::nullopt, folder->path}, opened.trouble()});
    }
  }
  folder_ = folder->path;
  folderNid_ = folder->nid;
  if (folder->isOnlyForItems && (!rows_ || rows_->isEmpty())) return std::nullopt;
  return FolderStart{folder->path, folder->declaredItems};
}

void StoreReader::findUnlisted() {
  const auto damaged = Guarded("the index of the store cannot be read", [&] {
    return ScanNodes(*session_, [&](const pststore::node_info& info) {
      if (IsNodeOf(info.id, kMessageNode) && !met_.contains(info.id)) unlisted_.push_back(info.id);
    });
  });
  std::sort(unlisted_.begin(), unlisted_.end());
  unlisted_.erase(std::unique(unlisted_.begin(), unlisted_.end()), unlisted_.end());
  if (!damaged) {
    troubles_.push_back({{{}, std::nullopt, RootPath()}, damaged.trouble()});
  } else if (*damaged != 0) {
    troubles_.push_back({{{}, std::nullopt, RootPath()},
                         {TroubleKind::Damaged, "pages of the store's index that cannot be read: " +
                                                    std::to_string(*damaged)}});
  }
  if (options_.recover || unlisted_.empty()) return;
  troubles_.push_back({{{}, std::nullopt, RootPath()},
                       {TroubleKind::Missing, "items that no folder lists and --recover adds: " +
                                                  std::to_string(unlisted_.size())}});
  unlisted_.clear();
}

std::optional<Entry> StoreReader::beginRecovered() {
  findUnlisted();
  stage_ = unlisted_.empty() ? Stage::Done : Stage::Recovered;
  if (unlisted_.empty()) return std::nullopt;
  folder_ = std::make_shared<std::vector<std::string>>(1, "Recovered");
  return FolderStart{folder_, std::nullopt};
}

std::optional<Entry> StoreReader::nextRecovered() {
  if (recovered_ == unlisted_.size()) {
    stage_ = Stage::Done;
    return std::nullopt;
  }
  place_ = ReadingPlace{kRecovered, unlisted_[recovered_], false};
  return makeItem(unlisted_[recovered_++], folder_);
}

std::optional<Trouble> StoreReader::goTo(const ReadingPlace& place, FolderPath folder) {
  rows_ = std::nullopt;
  met_ = {};
  troubles_.clear();
  givenTroubles_ = 0;
  place_ = std::nullopt;
  folder_ = std::move(folder);
  stage_ = Stage::Done;
  if (place.folder == kRecovered) {
    unlisted_.assign(1, static_cast<uint32_t>(place.row));
    recovered_ = 0;
    stage_ = Stage::Recovered;
    return std::nullopt;
  }
  folderNid_ = static_cast<uint32_t>(place.folder);
  const FolderVisit visit = {folderNid_, folder_, std::nullopt, true, false};
  const auto opened = Guarded("the list of its items cannot be read", [&] {
    rows_.emplace(*session_, visit, met_, troubles_);
    rows_->goTo(place.row);
    return true;
  });
  if (opened) return std::nullopt;
  rows_ = std::nullopt;
  return opened.trouble();
}

void StoreReader::readNames() {
  names_ = NameMap::Read(*session_);
  if (!names_->trouble()) return;
  troubles_.push_back({{IdText(kNameMapNode), std::nullopt, RootPath()}, *names_->trouble()});
}

Outcome<std::unique_ptr<mapi::MapiMessage>> StoreReader::openMessage(uint32_t nid) {
  if (names_ == nullptr) readNames();
  return Guarded("the message cannot be read", [&]() -> std::unique_ptr<mapi::MapiMessage> {
    return std::make_unique<StoreMessage>(session_->context()->lookup_node(nid), names_,
                                          session_->blockSize());
  });
}

std::unique_ptr<Item> StoreReader::makeItem(uint32_t nid, FolderPath folder,
                                            mapi::KnownFields known) {
  return mapi::MakeMapiItem(
      {IdText(nid), std::nullopt, std::move(folder)}, [this, nid] { return openMessage(nid); },
      std::move(known));
}

Outcome<std::unique_ptr<Item>> StoreReader::findIn(const FolderPath& folder, std::string_view id) {
  const Trouble missing{TroubleKind::Missing, "the store has no such item"};
  uint32_t nid = 0;
  const auto read = std::from_chars(id.data(), id.data() + id.size(), nid, 16);
  if (read.ec != std::errc() || IdText(nid) != id || !IsNodeOf(nid, kMessageNode)) return missing;
  dropWhatIsKept();
  const auto info = Guarded("the item cannot be looked up",
                            [&] { return session_->context()->lookup_node_info(nid); });
  if (!info) return info.trouble().kind == TroubleKind::Missing ? missing : info.trouble();
  return makeItem(nid, folder ? folder : tree_.pathByParents(info->parent_id));
}

}  // namespace
}  // namespace store

Outcome<std::unique_ptr<ItemReader>> OpenStore(const std::filesystem::path& path,
                                               const ReaderOptions& options) {
  auto session = store::StoreSession::Open(path);
  if (!session) return session.trouble();
  return std::unique_ptr<ItemReader>(new store::StoreReader(std::move(*session), options));
}

}  // namespace tarn::archive
