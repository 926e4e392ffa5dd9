// CharsetRename.h - the renaming of a text's declared charset to "UTF-8", which can be taken back
// when the conversion that it announces fails.
#ifndef TARN_EML_CHARSETRENAME_H
#define TARN_EML_CHARSETRENAME_H

#include <string_view>

#include "Internal/Tarnclasses_.h"

namespace tarn {

class CharsetRename {
 public:
  static constexpr std::string_view kNewName = "UTF-8";
  // "windows-" and the longest code page number.
  static constexpr uint64_t kLongestName = 18;

  // Replaces the first `name`, of at most kLongestName bytes, that stands at or behind `from` in
  // any case. 1, also when there is none; 0 without memory, and then the text is freed.
  int32_t apply(SizedBytes& text, uint64_t from, std::string_view name);

  bool found() const { return oldLength_ != 0; }
  // Where the new name ends; only if found.
  uint64_t end() const { return offset_ + kNewName.size(); }

  // Puts the old name back into the text, whose bytes behind the new name are as apply() left
  // them. Needs no memory: the block has never been made smaller.
  void undo(SizedBytes& text) const;

 private:
  uint64_t offset_ = 0;
  uint64_t oldLength_ = 0;
  char oldName_[kLongestName] = {};
};

}  // namespace tarn

#endif
