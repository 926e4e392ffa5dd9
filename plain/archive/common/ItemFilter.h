// ItemFilter.h - which items a command is about.
#ifndef TARN_ARCHIVE_ITEMFILTER_H
#define TARN_ARCHIVE_ITEMFILTER_H

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "archive/common/MomentText.h"
#include "archive/model/Item.h"

namespace tarn::archive {

// Names joined by "/".
std::string FolderText(const std::vector<std::string>& folder);

struct FilterOptions {
  std::optional<std::string> folder;  // its path, or a pattern of "*" and "?"
  std::optional<std::string> from;    // parts of names or addresses
  std::optional<std::string> to;
  std::optional<std::string> subject;
  std::optional<std::string> messageClass;  // its beginning
  std::optional<Span> since;
  std::optional<Span> until;
  bool hasAttachment = false;
};

// Texts are compared as FoldedText.h says.
class ItemFilter {
 public:
  explicit ItemFilter(const FilterOptions& options);

  // The folder is the one that was asked for, or below it. "*" in the pattern is any run of
  // characters, also across "/".
  bool takesFolder(const std::shared_ptr<const std::vector<std::string>>& folder);

  // Asks for the envelope only where the headline cannot tell. Items without a date are not taken
  // where one is asked for. `to` is looked for in To, Cc and Bcc.
  bool takes(Item& item);

  // Whether a folder was asked for, and none that was met is the one.
  bool hasMissedFolder() const { return folder_ && !hasTakenFolder_; }

 private:
  bool takesDate(const ItemFields& fields) const;
  bool takesSender(Item& item) const;
  bool takesRecipients(Item& item) const;

  FilterOptions options_;
  std::optional<std::string> folder_;  // folded
  std::optional<std::string> from_;
  std::optional<std::string> to_;
  std::optional<std::string> subject_;
  std::optional<std::string> messageClass_;

  std::shared_ptr<const std::vector<std::string>> lastFolder_;
  bool takesLastFolder_ = false;
  bool hasTakenFolder_ = false;
};

// Whether the text is as the pattern says, in time proportional to the product of both at most.
bool MatchesPattern(std::string_view text, std::string_view pattern);

}  // namespace tarn::archive

#endif
