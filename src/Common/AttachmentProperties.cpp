#include "Common/AttachmentProperties.h"

#include <cinttypes>
#include <cstdio>
#include <iterator>

#include "Common/ApiUtils.h"
#include "Common/FileTime.h"

namespace tarn {
namespace {

// Converts one text after the other in a block that grows to the longest of them.
class WideScratch {
 public:
  // Converts all of the text, and writes it up to its first NUL, cut to the field and terminated,
  // to `field`.
  //   StatusOk
  //   StatusFailed       any of it is no UTF-8
  //   StatusOutOfMemory
  template <uint64_t N>
  Status convert(std::string_view text, char16_t (&field)[N]) {
    uint64_t units = 0;
    if (!text.empty()) {
      char16_t* const wide = makeRoom(text.size() + 1);
      if (wide == nullptr) return StatusOutOfMemory;
      if (!ConvertToWide(text, {wide, text.size() + 1})) return StatusFailed;
      for (; units < N - 1 && units < text.size() && wide[units] != u'\0'; ++units) {
        field[units] = wide[units];
      }
    }
    field[units] = u'\0';
    return StatusOk;
  }

 private:
  // Null when memory is out.
  char16_t* makeRoom(uint64_t units) {
    if (units > room_) {
      void* const block = KernelRealloc(block_.get(), units * sizeof(char16_t), TARN_HERE);
      if (block == nullptr) return nullptr;
      block_.take();
      block_.reset(static_cast<char16_t*>(block));
      room_ = units;
    }
    return block_.get();
  }

  KernelBlock<char16_t> block_;
  uint64_t room_ = 0;  // units
};

}  // namespace

Status AddAttachmentProperty(PropertyList& list, std::string_view name, std::string_view value) {
  AttachmentProperty property = {};
  WideScratch scratch;
  if (const Status named = scratch.convert(name, property.name); !named.ok()) return named;
  if (const Status told = scratch.convert(value, property.value); !told.ok()) return told;
  return list.append(&property, 1);
}

Status AddWideAttachmentProperty(PropertyList& list, std::string_view name,
                                 std::u16string_view value) {
  AttachmentProperty property = {};
  if (const Status named = WideScratch().convert(name, property.name); !named.ok()) return named;
  value = value.substr(0, value.find(u'\0'));
  value.copy(property.value, std::size(property.value) - 1);
  return list.append(&property, 1);
}

Status AddTimeAttachmentProperty(PropertyList& list, std::string_view name, uint64_t fileTime) {
  const auto seconds = static_cast<uint64_t>(SecondsSince1970(static_cast<int64_t>(fileTime)));
  char digits[25];
  std::snprintf(digits, sizeof digits, "%" PRIu64, seconds);
  return AddAttachmentProperty(list, name, digits);
}

}  // namespace tarn
