#include <charconv>
#include <optional>
#include <string>
#include <utility>

#include "archive/mail/MailItem.h"
#include "archive/mail/MailReaders.h"
#include "archive/mail/MboxScan.h"

namespace tarn::archive {
namespace {

using mail::MboxMail;

class MboxReader final : public ItemReader {
 public:
  explicit MboxReader(mail::SharedBytes bytes) : bytes_(std::move(bytes)), scan_(*bytes_) {}

  std::optional<Trouble> begin() {
    const Outcome<uint64_t> first = scan_.first();
    if (!first) return first.trouble();
    next_ = *first;
    return std::nullopt;
  }

  std::optional<Entry> next() override {
    if (next_ >= bytes_->size()) return std::nullopt;
    const uint64_t start = next_;
    place_ = std::nullopt;
    const Outcome<MboxMail> mail = scan_.mailAt(start);
    next_ = mail ? mail->next : bytes_->size();
    Outcome<std::unique_ptr<Item>> item = mail ? itemOf(*mail) : mail.trouble();
    const bool follows = std::exchange(hasGiven_, item.ok());
    if (!item) return Entry(PlaceTrouble{placeOf(start), item.trouble()});
    place_ = ReadingPlace{0, start, follows};
    return Entry(std::move(*item));
  }

  Outcome<std::unique_ptr<Item>> find(std::string_view id) override {
    uint64_t start = 0;
    const auto [end, error] = std::from_chars(id.data(), id.data() + id.size(), start);
    const bool isNumber = error == std::errc() && end == id.data() + id.size();
    if (!isNumber || std::to_string(start) != id) return noSuchMail();
    const Outcome<bool> isThere = scan_.mayStartAt(start);
    if (!isThere) return isThere.trouble();
    if (!*isThere) return noSuchMail();
    const Outcome<MboxMail> mail = scan_.mailAt(start);
    if (!mail) return mail.trouble();
    return itemOf(*mail);
  }

  std::optional<ReadingPlace> place() const override { return place_; }

  std::optional<Trouble> goTo(const ReadingPlace& place,
                              std::shared_ptr<const std::vector<std::string>>) override {
    next_ = place.row;
    hasGiven_ = false;
    return std::nullopt;
  }

 private:
  static Trouble noSuchMail() { return {TroubleKind::Missing, "no mail begins there"}; }

  ItemPlace placeOf(uint64_t start) const {
    return {std::to_string(start), std::nullopt, noFolder_};
  }

  Outcome<std::unique_ptr<Item>> itemOf(const MboxMail& mail) const {
    Outcome<mail::MailSource> source = mail::MailSourceOfFile(
        mail::RangeOf(bytes_, mail.text, mail.end, mail.quotes), placeOf(mail.start));
    if (!source) return source.trouble();
    source->mboxLine = mail.line;
    if (mail.hasTooManyQuotes) {
      source->troubles.push_back({TroubleKind::TooLarge,
                                  "the mail has too many lines that begin with \">From \"; they "
                                  "stay as the mbox has them"});
    }
    return mail::MakeMailItem(std::move(*source));
  }

  std::shared_ptr<const std::vector<std::string>> noFolder_ =
      std::make_shared<const std::vector<std::string>>();
  mail::SharedBytes bytes_;
  mail::MboxScan scan_;
  uint64_t next_ = 0;
  bool hasGiven_ = false;
  std::optional<ReadingPlace> place_;
};

}  // namespace

Outcome<std::unique_ptr<ItemReader>> OpenMbox(const std::filesystem::path& path) {
  Outcome<mail::SharedBytes> file = mail::OpenFile(path);
  if (!file) return file.trouble();
  Outcome<mail::SharedBytes> bytes = mail::UsualText(std::move(*file));
  if (!bytes) return bytes.trouble();
  auto reader = std::make_unique<MboxReader>(std::move(*bytes));
  if (const auto trouble = reader->begin()) return *trouble;
  return std::unique_ptr<ItemReader>(std::move(reader));
}

}  // namespace tarn::archive
