#include "archive/export/ItemNames.h"

#include <algorithm>

#include "archive/common/FoldedText.h"
#include "archive/export/Sha256.h"

namespace tarn::archive {
namespace {

constexpr size_t kDigits = 16;

// The first digits of a hash.
std::string ShortHash(std::string_view text) {
  Sha256 sum;
  sum.add(text);
  return sum.digest().substr(0, kDigits);
}

// Cuts after a whole character, and leaves nothing at the end that a name must not end in.
std::string CutName(std::string_view name, size_t bytes) {
  if (name.size() > bytes) {
    while (bytes != 0 && (static_cast<unsigned char>(name[bytes]) & 0xC0) == 0x80) --bytes;
    name = name.substr(0, bytes);
  }
  return std::string(name.substr(0, name.find_last_not_of(". ") + 1));
}

// Ids of lower case and digits are told apart by every system.
std::string IdInNames(std::string_view id) {
  constexpr size_t kLongestId = 40;
  const bool isPlain =
      !id.empty() && id.size() <= kLongestId &&
      std::all_of(id.begin(), id.end(), [](char character) {
        return (character >= 'a' && character <= 'z') || (character >= '0' && character <= '9');
      });
  return isPlain ? std::string(id) : "~" + ShortHash(id);
}

// What files of a whole folder may be named.
bool IsReserved(std::string_view name) {
  const std::string folded = Folded(name);
  return folded.starts_with("messages") && (folded.ends_with(".mbox") || folded.ends_with(".pdf"));
}

}  // namespace

std::string ItemName(const ItemFields& fields) {
  constexpr size_t kDayLength = 10;
  const std::optional<Moment>& moment = fields.sent ? fields.sent : fields.received;
  const std::string day = moment ? ShortDate(*moment).substr(0, kDayLength) : "undated";
  const std::string subject = SafeName(fields.subject, "no subject");
  return CutName(day + " " + subject, kLongestSafeName);
}

std::string ItemNameWithId(std::string_view name, std::string_view id) {
  const std::string suffix = " [" + IdInNames(id) + "]";
  return CutName(name, kLongestSafeName - suffix.size()) + suffix;
}

bool NeedsId(std::string_view name) { return name.ends_with(']'); }

std::string EmbeddedName(std::string_view id, std::string_view outermostId,
                         const ItemFields& fields) {
  constexpr size_t kLongestPlaces = 40;
  std::string places(id.substr(std::min(id.size(), outermostId.size() + 1)));
  std::replace(places.begin(), places.end(), '/', '_');
  if (places.size() > kLongestPlaces) places = "~" + ShortHash(id);
  return CutName(places + " " + SafeName(fields.subject, "no subject"), kLongestSafeName);
}

uint64_t NameHash(std::string_view folderPath, std::string_view name) {
  return std::stoull(ShortHash(Folded(std::string(folderPath) + "/" + std::string(name))), nullptr,
                     16);
}

const std::string& FolderPaths::pathOf(const std::vector<std::string>& folder) {
  const auto known = paths_.find(folder);
  if (known != paths_.end()) return known->second;
  std::string path;
  if (!folder.empty()) {
    const std::vector<std::string> parent(folder.begin(), folder.end() - 1);
    const std::string& above = pathOf(parent);
    if (above.size() > kLongestPath) {
      // Beside the last folder whose path may still be written out.
      std::string whole;
      for (const std::string& name : folder) whole += name + '\0';
      const std::string beside = above.substr(0, above.rfind('/'));
      path = beside + "/" + taken_[beside].make("deeper " + ShortHash(whole));
    } else {
      const std::string name = SafeName(folder.back(), "unnamed");
      path = taken_[above].make(IsReserved(name) ? name + "_" : name);
      if (!above.empty()) path.insert(0, above + "/");
    }
  }
  return paths_.emplace(folder, std::move(path)).first->second;
}

}  // namespace tarn::archive
