// CharsetRename.h - the renaming of a text's declared charset to "UTF-8", which can be taken back
// when the conversion that it announces fails.
#ifndef TARN_EML_CHARSETRENAME_H
#define TARN_EML_CHARSETRENAME_H

#include "Common/FixedText.h"
#include "Internal/Tarnclasses_.h"

namespace tarn {

class CharsetRename {
 public:
  static constexpr std::string_view kNewName = "UTF-8";
  // "windows-" and the longest code page number are the longest.
  using Name = FixedText<18>;

  // Replaces the first `name` at or after `from`, in any case. StatusOk, also when there is none;
  // StatusFailed without memory, and then the text is absent.
  Status apply(SizedBytes& text, uint64_t from, std::string_view name);

  bool found() const { return !oldName_.view().empty(); }
  // Where the new name ends; only if found.
  uint64_t end() const { return offset_ + kNewName.size(); }

  // Puts the old name back into the text, whose bytes after the new name are as apply() left
  // them. Needs no memory: the block has never been made smaller.
  void undo(SizedBytes& text) const;

 private:
  uint64_t offset_ = 0;
  Name oldName_;
};

}  // namespace tarn

#endif
