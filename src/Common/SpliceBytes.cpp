#include "Common/InlineImages.h"

namespace tarn {

Status SpliceBytes(SizedBytes& text, uint64_t offset, uint64_t removed, const char* bytes,
                   uint64_t count) {
  return text.splice(offset, removed, {bytes, count});
}

}  // namespace tarn
