#include "eml/CharsetRename.h"

#include "Common/ByteSearch.h"
#include "eml/Charsets.h"

namespace tarn {

Status CharsetRename::apply(SizedBytes& text, uint64_t from, std::string_view name) {
  const size_t found = FindIgnoringCase(text.view(), name, from);
  if (found == std::string_view::npos) return StatusOk;
  offset_ = found;
  oldName_.append(text.view().substr(found, name.size()));
  return ReplaceWithUtf8Name(text, offset_, name.size());
}

void CharsetRename::undo(SizedBytes& text) const {
  if (!found()) return;
  const std::string_view name = oldName_.view();
  const uint64_t after = text.length() - end();
  KernelBlock<char> block = text.take();
  char* const place = block.get() + offset_;
  std::memmove(place + name.size(), place + kNewName.size(), after);
  name.copy(place, name.size());
  text.adopt(std::move(block), offset_ + name.size() + after);
}

}  // namespace tarn
