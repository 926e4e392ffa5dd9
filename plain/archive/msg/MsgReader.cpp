#include "archive/msg/MsgReader.h"

#include <utility>
#include <vector>

#include "archive/mapi/MapiItem.h"
#include "archive/msg/MsgMessage.h"

namespace tarn::archive {
namespace {

constexpr std::string_view kOnlyId = "1";

class MsgReader final : public ItemReader {
 public:
  explicit MsgReader(std::unique_ptr<msg::StorageFile> file)
      : file_(std::move(file)), names_(*file_) {}

  std::optional<Entry> next() override {
    if (std::exchange(isGiven_, true)) return std::nullopt;
    return makeItem();
  }

  Outcome<std::unique_ptr<Item>> find(std::string_view id) override {
    if (id != kOnlyId) return Trouble{TroubleKind::Missing, "the file has no such item"};
    return makeItem();
  }

 private:
  std::unique_ptr<Item> makeItem() {
    mapi::KnownFields known;
    known.size = file_->size();
    ItemPlace place{std::string(kOnlyId), std::nullopt, folder_};
    return mapi::MakeMapiItem(
        std::move(place),
        [this]() -> Outcome<std::unique_ptr<mapi::MapiMessage>> {
          return std::unique_ptr<mapi::MapiMessage>(
              std::make_unique<msg::MsgMessage>(*file_, names_, msg::kRootEntry));
        },
        std::move(known));
  }

  std::unique_ptr<msg::StorageFile> file_;
  msg::MsgNames names_;
  std::shared_ptr<const std::vector<std::string>> folder_ =
      std::make_shared<const std::vector<std::string>>();
  bool isGiven_ = false;
};

Outcome<std::unique_ptr<ItemReader>> ReadStorage(Outcome<std::unique_ptr<msg::StorageFile>> file) {
  if (!file) return file.trouble();
  if (!msg::IsMessageStorage(**file, msg::kRootEntry)) {
    return Trouble{TroubleKind::Unsupported, "the file is a compound file and no message"};
  }
  return std::unique_ptr<ItemReader>(std::make_unique<MsgReader>(std::move(*file)));
}

}  // namespace

Outcome<std::unique_ptr<ItemReader>> OpenMsg(const std::filesystem::path& path) {
  return ReadStorage(msg::StorageFile::Open(path));
}

Outcome<std::unique_ptr<ItemReader>> ReadMsg(std::string_view bytes) {
  return ReadStorage(msg::StorageFile::OfBytes(bytes));
}

}  // namespace tarn::archive
