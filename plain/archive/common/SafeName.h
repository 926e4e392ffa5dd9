// SafeName.h - names of files for what mails name.
#ifndef TARN_ARCHIVE_SAFENAME_H
#define TARN_ARCHIVE_SAFENAME_H

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <string_view>

namespace tarn::archive {

inline constexpr size_t kLongestSafeName = 120;  // bytes

// A name that every system takes for a file, and that leads nowhere else: valid UTF-8 without
// separators, control characters, marks that turn the direction of writing, and the characters that
// Windows forbids; not the name of a device; no dots, dashes or blanks at its beginning, no dots or
// blanks at its end; at most kLongestSafeName bytes, cut between characters and before the
// extension. A text that leaves nothing becomes `otherwise`.
std::string SafeName(std::string_view name, std::string_view otherwise);

// Gives each name once, also where case does not tell names apart.
class UniqueNames {
 public:
  // A name that is taken.
  void take(std::string_view name);

  // The safe name itself, or "name (2).txt" and so on. Time does not grow with how often a name has
  // come.
  std::string make(const std::string& name);

 private:
  std::set<std::string> folded_;
  std::map<std::string, size_t> numbers_;  // the last one that was given, by the folded "name (2)"
};

}  // namespace tarn::archive

#endif
