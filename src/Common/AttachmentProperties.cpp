#include "Common/AttachmentProperties.h"

#include <algorithm>

namespace tarn {
namespace {

// Converts one text after the other in a block that grows to the longest of them.
class WideScratch {
 public:
  // Writes the text, cut to the field and terminated, to `field`. 1; 0 when it is no UTF-8; -1
  // without memory.
  template <uint64_t N>
  int32_t convert(std::string_view text, char16_t (&field)[N]) {
    uint64_t units = 0;
    if (!text.empty()) {
      if (!makeRoom(text.size() + 1)) return StatusOutOfMemory;
      const int64_t written = KernelUtf8ToWide(text.data(), static_cast<int64_t>(text.size()),
                                               block_.get(), static_cast<int64_t>(room_));
      if (written <= 0) return StatusFailed;
      units = std::min({static_cast<uint64_t>(written), room_, N - 1});
      std::copy_n(block_.get(), units, field);
    }
    field[units] = u'\0';
    return StatusOk;
  }

 private:
  bool makeRoom(uint64_t units) {
    if (units <= room_) return true;
    void* const block = KernelRealloc(block_.get(), units * sizeof(char16_t), TARN_HERE);
    if (block == nullptr) return false;
    block_.take();
    block_.reset(static_cast<char16_t*>(block));
    room_ = units;
    return true;
  }

  KernelBlock<char16_t> block_;
  uint64_t room_ = 0;  // units
};

std::string_view UpToNul(const char* text, uint64_t length) {
  if (text == nullptr) return {};
  if (length == kNulTerminated) return text;
  const std::string_view whole(text, length);
  return whole.substr(0, whole.find('\0'));
}

}  // namespace

int32_t AddAttachmentProperty(PropertyList& list, const char* name, const char* value,
                              uint64_t valueLength) {
  AttachmentProperty property = {};
  WideScratch scratch;
  int32_t status = scratch.convert(UpToNul(name, kNulTerminated), property.name);
  if (status != StatusOk) return status;
  status = scratch.convert(UpToNul(value, valueLength), property.value);
  if (status != StatusOk) return status;
  return list.append(&property, 1);
}

}  // namespace tarn
