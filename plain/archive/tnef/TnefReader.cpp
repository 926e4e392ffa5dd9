#include "archive/tnef/TnefReader.h"

#include <fstream>
#include <utility>
#include <vector>

#include "archive/mapi/MapiItem.h"
#include "archive/tnef/TnefMessage.h"

namespace tarn::archive {
namespace {

constexpr std::string_view kOnlyId = "1";
constexpr uint64_t kLargestFile = uint64_t{1} << 30;

class TnefReader final : public ItemReader {
 public:
  explicit TnefReader(std::string bytes) : bytes_(std::move(bytes)) {}

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
    known.size = bytes_.size();
    return mapi::MakeMapiItem(
        {std::string(kOnlyId), std::nullopt, folder_},
        [this]() -> Outcome<std::unique_ptr<mapi::MapiMessage>> {
          return std::unique_ptr<mapi::MapiMessage>(
              std::make_unique<tnef::TnefMessage>(std::string_view(bytes_), 0));
        },
        std::move(known));
  }

  std::string bytes_;
  std::shared_ptr<const std::vector<std::string>> folder_ =
      std::make_shared<const std::vector<std::string>>();
  bool isGiven_ = false;
};

Trouble IsNoTnef() { return {TroubleKind::Unsupported, "the file does not begin as TNEF"}; }

Outcome<std::string> ReadFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::error_code error;
  const uint64_t size = std::filesystem::file_size(path, error);
  if (!file || error) return Trouble{TroubleKind::Unreadable, "the file cannot be opened"};
  if (size > kLargestFile) {
    return Trouble{TroubleKind::TooLarge, "the file is larger than such files can be"};
  }
  std::string bytes(size, '\0');
  file.read(bytes.data(), static_cast<std::streamsize>(size));
  if (file.bad()) return Trouble{TroubleKind::Unreadable, "the file cannot be read"};
  bytes.resize(static_cast<size_t>(file.gcount()));
  return bytes;
}

}  // namespace

Outcome<std::unique_ptr<ItemReader>> OpenTnef(const std::filesystem::path& path) {
  Outcome<std::string> bytes = ReadFile(path);
  if (!bytes) return bytes.trouble();
  if (!tnef::AttributeWalk::IsTnef(*bytes)) return IsNoTnef();
  return std::unique_ptr<ItemReader>(std::make_unique<TnefReader>(std::move(*bytes)));
}

Outcome<std::unique_ptr<mapi::MapiMessage>> ReadTnef(std::string bytes) {
  if (!tnef::AttributeWalk::IsTnef(bytes)) return IsNoTnef();
  return std::unique_ptr<mapi::MapiMessage>(std::make_unique<tnef::TnefMessage>(std::move(bytes)));
}

}  // namespace tarn::archive
