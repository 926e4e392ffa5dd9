#include "archive/sources/ItemWalk.h"

#include <charconv>
#include <string>
#include <utility>

namespace tarn::archive {
namespace {

// "200024/2" as "200024" and 2; none for an id that cannot be an embedded item's.
std::optional<std::pair<std::string_view, size_t>> SplitId(std::string_view id) {
  const size_t slash = id.rfind('/');
  if (slash == std::string_view::npos) return std::nullopt;
  const std::string_view digits = id.substr(slash + 1);
  size_t place = 0;
  const auto [stop, error] = std::from_chars(digits.begin(), digits.end(), place);
  if (error != std::errc() || stop != digits.end() || place == 0) return std::nullopt;
  return std::pair(id.substr(0, slash), place);
}

}  // namespace

ItemWalk::~ItemWalk() {
  while (!levels_.empty()) levels_.pop_back();
}

std::optional<WalkStep> ItemWalk::next() {
  while (!levels_.empty()) {
    std::optional<WalkStep> step = nextWithin(levels_.back());
    if (step) return step;
    levels_.pop_back();
  }
  std::optional<Entry> entry = reader_.next();
  if (!entry) return std::nullopt;
  if (auto* const folder = std::get_if<FolderStart>(&*entry)) return WalkStep(std::move(*folder));
  if (auto* const trouble = std::get_if<PlaceTrouble>(&*entry)) {
    return WalkStep(std::move(*trouble));
  }
  levels_.push_back({std::move(std::get<std::unique_ptr<Item>>(*entry))});
  return WalkStep(levels_.back().item.get());
}

// Does not touch `level` after it has made a deeper one.
std::optional<WalkStep> ItemWalk::nextWithin(Level& level) {
  Item& item = *level.item;
  if (!level.isDone && embedded_ == EmbeddedItems::Walk &&
      item.fields(Detail::Envelope).hasAttachments) {
    const std::vector<Attachment>& attachments = item.attachments();
    while (level.nextAttachment < attachments.size()) {
      const size_t index = level.nextAttachment++;
      const Attachment& attachment = attachments[index];
      if (attachment.trouble) {
        Trouble trouble = *attachment.trouble;
        trouble.reason = "attachment " + std::to_string(index + 1) + ": " + trouble.reason;
        return WalkStep(PlaceTrouble{item.place(), std::move(trouble)});
      }
      if (attachment.kind != AttachmentKind::Item) continue;
      // The outermost item has depth 0, and this one as many as there are levels.
      if (levels_.size() > static_cast<size_t>(kDeepestItem)) {
        return WalkStep(embeddedTrouble(
            item, index, {TroubleKind::TooDeep, "is too deep within other items to be read"}));
      }
      Outcome<std::unique_ptr<Item>> embedded = item.embedded(index);
      if (!embedded) return WalkStep(embeddedTrouble(item, index, embedded.trouble()));
      levels_.push_back({std::move(*embedded)});
      return WalkStep(levels_.back().item.get());
    }
  }
  level.isDone = true;
  const std::vector<Trouble>& troubles = item.troubles();
  if (level.troublesTold == troubles.size()) return std::nullopt;
  return WalkStep(PlaceTrouble{item.place(), troubles[level.troublesTold++]});
}

PlaceTrouble ItemWalk::embeddedTrouble(const Item& parent, size_t index, Trouble trouble) const {
  ItemPlace place = parent.place();
  place.parent = place.id;
  place.id += '/';
  place.id += std::to_string(index + 1);
  return {std::move(place), std::move(trouble)};
}

ItemChain::~ItemChain() {
  while (!items_.empty()) items_.pop_back();
}

Outcome<ItemChain> FindItem(ItemReader& reader, std::string_view id) {
  // The places within the item that the reader knows, the innermost first. The whole is tried
  // first: an id of the reader's own may look like an embedded item's.
  std::vector<size_t> places;
  Outcome<std::unique_ptr<Item>> outermost = reader.find(id);
  while (!outermost && outermost.trouble().kind == TroubleKind::Missing &&
         places.size() < static_cast<size_t>(kDeepestItem)) {
    const auto split = SplitId(id);
    if (!split) break;
    id = split->first;
    places.push_back(split->second);
    outermost = reader.find(id);
  }
  if (!outermost) return outermost.trouble();
  ItemChain chain;
  chain.add(std::move(*outermost));
  for (; !places.empty(); places.pop_back()) {
    const size_t index = places.back() - 1;
    const std::vector<Attachment>& attachments = chain.item().attachments();
    if (index >= attachments.size() || attachments[index].kind != AttachmentKind::Item) {
      return Trouble{TroubleKind::Missing, "no item is embedded there"};
    }
    Outcome<std::unique_ptr<Item>> embedded = chain.item().embedded(index);
    if (!embedded) return embedded.trouble();
    chain.add(std::move(*embedded));
  }
  return chain;
}

}  // namespace tarn::archive
