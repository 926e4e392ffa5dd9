#include "Common/AttachmentProperties.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <iterator>

#include "Common/FileTime.h"

namespace tarn {
namespace {

// Converts one text after the other in a block that grows to the longest of them.
class WideScratch {
 public:
  // Converts all of the text, and writes it up to its first NUL, cut to the field and terminated,
  // to `field`. 1; 0 when any of it is no UTF-8; -1 without memory.
  template <uint64_t N>
  int32_t convert(std::string_view text, char16_t (&field)[N]) {
    uint64_t units = 0;
    if (!text.empty()) {
      if (!makeRoom(text.size() + 1)) return StatusOutOfMemory;
      // Cleared, so that the text ends where the conversion does: not every kernel tells the units.
      std::fill_n(block_.get(), text.size() + 1, u'\0');
      if (KernelUtf8ToWide(text.data(), static_cast<int64_t>(text.size()), block_.get(),
                           static_cast<int64_t>(text.size() + 1)) == 0) {
        return StatusFailed;
      }
      for (; units < N - 1 && units < text.size() && block_[units] != u'\0'; ++units) {
        field[units] = block_[units];
      }
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

std::string_view TextOf(const char* text, uint64_t length = kNulTerminated) {
  if (text == nullptr) return {};
  return length == kNulTerminated ? std::string_view(text) : std::string_view(text, length);
}

}  // namespace

int32_t AddAttachmentProperty(PropertyList& list, const char* name, const char* value,
                              uint64_t valueLength) {
  AttachmentProperty property = {};
  WideScratch scratch;
  int32_t status = scratch.convert(TextOf(name), property.name);
  if (status != StatusOk) return status;
  status = scratch.convert(TextOf(value, valueLength), property.value);
  if (status != StatusOk) return status;
  return list.append(&property, 1);
}

int32_t AddWideAttachmentProperty(PropertyList& list, const char* name, std::u16string_view value) {
  AttachmentProperty property = {};
  const int32_t status = WideScratch().convert(TextOf(name), property.name);
  if (status != StatusOk) return status;
  value = value.substr(0, value.find(u'\0'));
  value.copy(property.value, std::size(property.value) - 1);
  return list.append(&property, 1);
}

int32_t AddTimeAttachmentProperty(PropertyList& list, const char* name, uint64_t fileTime) {
  const auto seconds = static_cast<uint64_t>(SecondsSince1970(static_cast<int64_t>(fileTime)));
  char digits[25];
  std::snprintf(digits, sizeof digits, "%" PRIu64, seconds);
  return AddAttachmentProperty(list, name, digits);
}

}  // namespace tarn
