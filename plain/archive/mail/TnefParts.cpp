#include "archive/mail/TnefParts.h"

#include <string>
#include <utility>

#include "archive/mail/PartBytes.h"
#include "archive/mapi/MapiItem.h"
#include "archive/text/AsciiText.h"
#include "archive/tnef/TnefReader.h"

namespace tarn::archive::mail {
namespace {

// An item of a message that is read already. A function is copied, and the message is not: they
// share it until the item takes it.
std::unique_ptr<Item> ItemOf(ItemPlace place, std::unique_ptr<mapi::MapiMessage> message,
                             int depth) {
  auto held = std::make_shared<std::unique_ptr<mapi::MapiMessage>>(std::move(message));
  return mapi::MakeMapiItem(
      std::move(place),
      [held]() -> Outcome<std::unique_ptr<mapi::MapiMessage>> { return std::move(*held); }, {},
      depth);
}

bool IsBlank(const std::optional<std::string>& text) { return !text || Trimmed(*text).empty(); }

}  // namespace

Item* TnefParts::of(const LaidPart& laid) {
  if (!laid.isTnef || !GMIME_IS_PART(laid.part)) return nullptr;
  const auto [place, isNew] = places_.try_emplace(laid.part, parts_.size());
  if (isNew) parts_.push_back({read(laid)});
  return parts_[place->second].item.get();
}

std::unique_ptr<Item> TnefParts::read(const LaidPart& laid) {
  Outcome<std::string> bytes = ReadAll(*OpenPart(GMIME_PART(laid.part)), left_);
  if (bytes) {
    left_ -= bytes->size();
    Outcome<std::unique_ptr<mapi::MapiMessage>> message = ReadTnef(std::move(*bytes));
    if (message) return ItemOf(place_, std::move(*message), depth_);
    bytes = message.trouble();
  }
  const Trouble& trouble = bytes.trouble();
  troubles_.push_back({trouble.kind, "an attachment cannot be unpacked: " + trouble.reason});
  return nullptr;
}

Outcome<std::unique_ptr<Item>> TnefParts::embedded(const LaidPart& laid, size_t inner,
                                                   size_t index) {
  Item* const item = of(laid);
  mapi::MapiMessage* const message = item == nullptr ? nullptr : item->properties();
  if (message == nullptr) return Trouble{TroubleKind::Missing, "there is no such embedded item"};
  Outcome<std::unique_ptr<mapi::MapiMessage>> opened = message->embedded(inner);
  if (!opened) return opened.trouble();
  ItemPlace place{place_.id + "/" + std::to_string(index + 1), place_.id, place_.folder};
  return ItemOf(std::move(place), std::move(*opened), depth_ + 1);
}

void TnefParts::addTo(Bodies& bodies, const MailLayout& layout) {
  for (const LaidPart& laid : layout.parts) {
    Item* const item = of(laid);
    if (item == nullptr) continue;
    Bodies own = item->bodies();
    if (IsBlank(bodies.text) && own.text) bodies.text = std::move(own.text);
    if (!bodies.html) bodies.html = std::move(own.html);
    if (!bodies.rtf) bodies.rtf = std::move(own.rtf);
    for (Trouble& trouble : own.troubles) bodies.troubles.push_back(std::move(trouble));
  }
}

std::vector<Trouble> TnefParts::takeTroubles() {
  for (ReadPart& part : parts_) {
    if (part.item == nullptr) continue;
    const std::vector<Trouble>& troubles = part.item->troubles();
    while (part.troublesTold < troubles.size()) {
      troubles_.push_back(troubles[part.troublesTold++]);
    }
  }
  return std::exchange(troubles_, {});
}

}  // namespace tarn::archive::mail
