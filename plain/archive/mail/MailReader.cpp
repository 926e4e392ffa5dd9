#include <utility>

#include "archive/mail/MailBytes.h"
#include "archive/mail/MailItem.h"
#include "archive/mail/MailReaders.h"

namespace tarn::archive {
namespace {

constexpr std::string_view kId = "1";

class MailReader final : public ItemReader {
 public:
  explicit MailReader(mail::MailSource source) : source_(std::move(source)) {}

  std::optional<Entry> next() override {
    if (isGiven_) return std::nullopt;
    isGiven_ = true;
    return Entry(mail::MakeMailItem(source_));
  }

  Outcome<std::unique_ptr<Item>> find(std::string_view id) override {
    if (id != kId) return Trouble{TroubleKind::Missing, "the file has one mail, \"1\""};
    return mail::MakeMailItem(source_);
  }

 private:
  mail::MailSource source_;
  bool isGiven_ = false;
};

}  // namespace

Outcome<std::unique_ptr<ItemReader>> OpenMail(const std::filesystem::path& path) {
  Outcome<mail::SharedBytes> file = mail::OpenFile(path);
  if (!file) return file.trouble();
  ItemPlace place{std::string(kId), std::nullopt,
                  std::make_shared<const std::vector<std::string>>()};
  Outcome<mail::MailSource> source = mail::MailSourceOfFile(std::move(*file), std::move(place));
  if (!source) return source.trouble();
  return std::unique_ptr<ItemReader>(std::make_unique<MailReader>(std::move(*source)));
}

}  // namespace tarn::archive
