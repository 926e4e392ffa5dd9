#include "archive/mapi/MapiItem.h"

#include <string>
#include <utility>
#include <vector>

#include "archive/mapi/MapiAttachments.h"
#include "archive/mapi/MapiBodies.h"
#include "archive/mapi/MapiFields.h"
#include "archive/mapi/PropertyValues.h"

namespace tarn::archive::mapi {
namespace {

class MapiItem final : public Item {
 public:
  MapiItem(ItemPlace place, OpenMessage open, KnownFields known, int depth)
      : place_(std::move(place)), open_(std::move(open)), depth_(depth) {
    isHeadlineKnown_ = known.headline.has_value();
    if (isHeadlineKnown_) fields_ = std::move(*known.headline);
    if (!fields_.size) fields_.size = known.size;
  }

  const ItemPlace& place() const override { return place_; }
  const ItemFields& fields(Detail detail) override;
  Bodies bodies() override;
  Outcome<std::string> originalHeaders() override;
  const std::vector<Attachment>& attachments() override;
  Outcome<std::unique_ptr<ByteSource>> open(size_t index) override;
  Outcome<std::unique_ptr<Item>> embedded(size_t index) override;
  Outcome<std::unique_ptr<ByteSource>> original() override { return std::unique_ptr<ByteSource>(); }
  MapiMessage* properties() override { return message(); }
  const std::vector<Trouble>& troubles() const override { return troubles_; }

 private:
  // Opened when it is first asked for; null when it does not open.
  MapiMessage* message();
  // Null, with a trouble, for one that is not there.
  const Attachment* attachment(size_t index);

  ItemPlace place_;
  OpenMessage open_;
  int depth_;
  bool isOpened_ = false;
  std::unique_ptr<MapiMessage> message_;
  Trouble openTrouble_;  // where the message did not open
  std::optional<uint32_t> codePage_;
  bool isHeadlineKnown_ = false;  // from a table, or read
  bool isHeadlineRead_ = false;
  bool isEnvelopeRead_ = false;
  ItemFields fields_;
  std::optional<std::vector<Attachment>> attachments_;
  std::vector<Trouble> troubles_;
};

MapiMessage* MapiItem::message() {
  if (isOpened_) return message_.get();
  isOpened_ = true;
  Outcome<std::unique_ptr<MapiMessage>> opened = open_();
  if (opened) {
    message_ = std::move(*opened);
    codePage_ = TextCodePage(message_->properties());
    for (Trouble& trouble : message_->properties().troubles()) {
      troubles_.push_back(std::move(trouble));
    }
    for (Trouble& trouble : message_->troubles()) troubles_.push_back(std::move(trouble));
  } else {
    openTrouble_ = opened.trouble();
    troubles_.push_back(openTrouble_);
  }
  return message_.get();
}

const ItemFields& MapiItem::fields(Detail detail) {
  const bool isThere = detail == Detail::Envelope ? isEnvelopeRead_ : isHeadlineKnown_;
  if (isThere || message() == nullptr) return fields_;
  // What a table told is overwritten by what the message tells.
  if (!isHeadlineRead_) ReadHeadline(*message_, codePage_, fields_, troubles_);
  isHeadlineRead_ = isHeadlineKnown_ = true;
  if (detail == Detail::Envelope) {
    ReadEnvelope(*message_, codePage_, fields_, troubles_);
    isEnvelopeRead_ = true;
  }
  return fields_;
}

Bodies MapiItem::bodies() {
  if (message() != nullptr) return ReadBodies(*message_, codePage_);
  Bodies none;
  none.troubles.push_back(openTrouble_);
  return none;
}

Outcome<std::string> MapiItem::originalHeaders() {
  if (message() == nullptr) return openTrouble_;
  return ReadTransportHeaders(*message_);
}

const std::vector<Attachment>& MapiItem::attachments() {
  if (!attachments_) {
    attachments_.emplace();
    if (message() != nullptr) attachments_ = ReadAttachments(*message_, codePage_, troubles_);
  }
  return *attachments_;
}

const Attachment* MapiItem::attachment(size_t index) {
  const std::vector<Attachment>& all = attachments();
  return index < all.size() ? &all[index] : nullptr;
}

Outcome<std::unique_ptr<ByteSource>> MapiItem::open(size_t index) {
  if (message() == nullptr) return openTrouble_;
  const Attachment* const wanted = attachment(index);
  if (wanted == nullptr) return Trouble{TroubleKind::Missing, "there is no such attachment"};
  if (wanted->trouble) return *wanted->trouble;
  return OpenAttachment(*message_, index, wanted->kind);
}

Outcome<std::unique_ptr<Item>> MapiItem::embedded(size_t index) {
  if (message() == nullptr) return openTrouble_;
  const Attachment* const wanted = attachment(index);
  if (wanted == nullptr || wanted->kind != AttachmentKind::Item) {
    return Trouble{TroubleKind::Missing, "there is no such embedded item"};
  }
  if (wanted->trouble) return *wanted->trouble;
  if (depth_ >= kDeepestItem) {
    return Trouble{TroubleKind::TooDeep, "the item is embedded too deeply"};
  }
  Outcome<std::unique_ptr<MapiMessage>> inner = message_->embedded(index);
  if (!inner) return inner.trouble();
  ItemPlace place{place_.id + "/" + std::to_string(index + 1), place_.id, place_.folder};
  // A function is copied, and the message is not: they share it until the item takes it.
  auto held = std::make_shared<std::unique_ptr<MapiMessage>>(std::move(*inner));
  return MakeMapiItem(
      std::move(place),
      [held]() -> Outcome<std::unique_ptr<MapiMessage>> { return std::move(*held); }, {},
      depth_ + 1);
}

}  // namespace

std::unique_ptr<Item> MakeMapiItem(ItemPlace place, OpenMessage open, KnownFields known,
                                   int depth) {
  return std::make_unique<MapiItem>(std::move(place), std::move(open), std::move(known), depth);
}

}  // namespace tarn::archive::mapi
