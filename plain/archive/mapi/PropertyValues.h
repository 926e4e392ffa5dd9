// PropertyValues.h - the values of a set of properties by type, text as UTF-8.
#ifndef TARN_ARCHIVE_PROPERTYVALUES_H
#define TARN_ARCHIVE_PROPERTYVALUES_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "archive/mapi/MapiMessage.h"
#include "archive/model/Moment.h"

namespace tarn::archive::mapi {

// What is read of a name, an address or a subject; and of a body, packed or not.
inline constexpr size_t kLargestText = size_t{1} << 20;
inline constexpr size_t kLargestBody = size_t{1} << 27;

// The code page of a message's 8-bit texts: PidTagMessageCodepage, else PidTagInternetCodepage.
// None where neither tells one that can be read.
std::optional<uint32_t> TextCodePage(PropertySet& message);

// 8-bit text of a code page as UTF-8, without NULs at its end. Without a code page it is UTF-8 when
// it is valid as such, else Windows-1252.
std::string Utf8OfText8(std::string_view bytes, std::optional<uint32_t> codePage);

// UTF-16LE as UTF-8, without NULs at its end. An odd byte at the end is dropped; half of a pair is
// U+FFFD.
std::string Utf8OfText16(std::string_view bytes);

// Reads one set. A value of another type than asked for is not there. One that is there and cannot
// be read is not there either, and a trouble.
class PropertyValues {
 public:
  // The set and the list outlive this.
  PropertyValues(PropertySet& set, std::optional<uint32_t> codePage,
                 std::vector<Trouble>* troubles = nullptr)
      : set_(set), codePage_(codePage), troubles_(troubles) {}

  std::optional<uint32_t> codePage() const { return codePage_; }
  PropertySet& set() { return set_; }

  std::optional<std::string> text(uint16_t id, size_t limit = kLargestText);
  // The first of these texts that is there and not empty; empty without one.
  std::string firstText(std::initializer_list<uint16_t> ids);
  std::optional<int64_t> integer(uint16_t id);  // of 16, 32 or 64 bits
  std::optional<double> real(uint16_t id);      // of 32 or 64 bits
  std::optional<bool> boolean(uint16_t id);
  std::optional<Moment> time(uint16_t id);
  std::optional<std::array<uint8_t, 16>> guid(uint16_t id);
  std::optional<std::string> binary(uint16_t id, size_t limit = kLargestText);

 private:
  // The bytes of a value that has one of the types.
  std::optional<std::string> bytesOf(uint16_t id, std::initializer_list<uint16_t> types,
                                     size_t limit);
  std::optional<std::string> fixed(uint16_t id, uint16_t type, size_t width);

  PropertySet& set_;
  std::optional<uint32_t> codePage_;
  std::vector<Trouble>* troubles_;
};

}  // namespace tarn::archive::mapi

#endif
