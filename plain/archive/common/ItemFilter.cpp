#include "archive/common/ItemFilter.h"

#include <algorithm>

#include "archive/common/FoldedText.h"

namespace tarn::archive {
namespace {

std::optional<std::string> FoldedOption(const std::optional<std::string>& text) {
  return text ? std::optional(Folded(*text)) : std::nullopt;
}

// "/Inbox/" names what "Inbox" does.
std::optional<std::string> FoldedFolder(const std::optional<std::string>& text) {
  if (!text) return std::nullopt;
  std::string_view path = *text;
  while (path.starts_with('/')) path.remove_prefix(1);
  while (path.ends_with('/')) path.remove_suffix(1);
  return Folded(path);
}

bool Holds(const Address& address, const std::string& foldedPart) {
  return HoldsFolded(address.name, foldedPart) || HoldsFolded(address.address, foldedPart);
}

bool AnyHolds(const std::vector<Address>& addresses, const std::string& foldedPart) {
  return std::any_of(addresses.begin(), addresses.end(),
                     [&](const Address& address) { return Holds(address, foldedPart); });
}

// The folder or one above it.
bool MatchesFolder(std::string_view folder, std::string_view pattern) {
  if (pattern.empty()) return true;
  // Of a source without folders, and at the top of others.
  if (folder.empty()) return MatchesPattern(folder, pattern);
  for (size_t end = folder.size();; end = folder.rfind('/', end - 1)) {
    if (end == std::string_view::npos || end == 0) return false;
    if (MatchesPattern(folder.substr(0, end), pattern)) return true;
  }
}

}  // namespace

std::string FolderText(const std::vector<std::string>& folder) {
  std::string text;
  for (const std::string& name : folder) {
    if (&name != &folder.front()) text += '/';
    text += name;
  }
  return text;
}

bool MatchesPattern(std::string_view text, std::string_view pattern) {
  size_t at = 0;
  size_t wanted = 0;
  size_t star = std::string_view::npos;  // the last one met, and how far it has taken the text
  size_t taken = 0;
  while (at < text.size()) {
    if (wanted < pattern.size() && pattern[wanted] == '*') {
      star = wanted++;
      taken = at;
    } else if (wanted < pattern.size() && (pattern[wanted] == '?' || pattern[wanted] == text[at])) {
      // "?" takes a whole character.
      const bool isAny = pattern[wanted] == '?';
      ++wanted;
      ++at;
      while (isAny && at < text.size() && (text[at] & 0xC0) == 0x80) ++at;
    } else if (star != std::string_view::npos) {
      wanted = star + 1;
      at = ++taken;
    } else {
      return false;
    }
  }
  while (wanted < pattern.size() && pattern[wanted] == '*') ++wanted;
  return wanted == pattern.size();
}

ItemFilter::ItemFilter(const FilterOptions& options)
    : options_(options),
      folder_(FoldedFolder(options.folder)),
      from_(FoldedOption(options.from)),
      to_(FoldedOption(options.to)),
      subject_(FoldedOption(options.subject)),
      messageClass_(FoldedOption(options.messageClass)) {}

bool ItemFilter::takesFolder(const std::shared_ptr<const std::vector<std::string>>& folder) {
  if (!folder_) return true;
  if (folder != lastFolder_) {
    lastFolder_ = folder;
    takesLastFolder_ = MatchesFolder(Folded(FolderText(*folder)), *folder_);
    hasTakenFolder_ = hasTakenFolder_ || takesLastFolder_;
  }
  return takesLastFolder_;
}

bool ItemFilter::takes(Item& item) {
  if (!takesFolder(item.place().folder)) return false;
  const ItemFields& fields = item.fields(Detail::Headline);
  if (messageClass_ && !Folded(fields.messageClass).starts_with(*messageClass_)) return false;
  if (!takesDate(fields)) return false;
  if (subject_ && !HoldsFolded(fields.subject, *subject_)) return false;
  if (!takesSender(item) || !takesRecipients(item)) return false;
  // The table that a headline is from may be wrong about this.
  return !options_.hasAttachment || item.fields(Detail::Envelope).hasAttachments;
}

bool ItemFilter::takesDate(const ItemFields& fields) const {
  if (!options_.since && !options_.until) return true;
  const std::optional<Moment>& date = fields.sent ? fields.sent : fields.received;
  if (!date) return false;
  if (options_.since && date->seconds < options_.since->first) return false;
  return !options_.until || date->seconds <= options_.until->last;
}

bool ItemFilter::takesSender(Item& item) const {
  if (!from_ || Holds(item.fields(Detail::Headline).from, *from_)) return true;
  const ItemFields& fields = item.fields(Detail::Envelope);
  return Holds(fields.from, *from_) || (fields.sender && Holds(*fields.sender, *from_));
}

bool ItemFilter::takesRecipients(Item& item) const {
  if (!to_) return true;
  const ItemFields& fields = item.fields(Detail::Envelope);
  return AnyHolds(fields.to, *to_) || AnyHolds(fields.cc, *to_) || AnyHolds(fields.bcc, *to_);
}

}  // namespace tarn::archive
