#include "eml/CharsetRename.h"

#include <cstring>

#include "Common/ByteSearch.h"
#include "eml/Charsets.h"

namespace tarn {

int32_t CharsetRename::apply(SizedBytes& text, uint64_t from, std::string_view name) {
  const char* const end = text.data() + text.length();
  const char* const found = FindIgnoringCase(text.data() + from, end, name);
  if (found == nullptr) return StatusOk;
  offset_ = static_cast<uint64_t>(found - text.data());
  oldLength_ = name.size();
  std::memcpy(oldName_, found, name.size());
  return ReplaceWithUtf8Name(text, offset_, oldLength_);
}

void CharsetRename::undo(SizedBytes& text) const {
  if (!found()) return;
  char* const place = text.data() + offset_;
  std::memmove(place + oldLength_, text.data() + end(), text.length() - end());
  std::memcpy(place, oldName_, oldLength_);
  text.setLength(text.length() - kNewName.size() + oldLength_);
}

}  // namespace tarn
