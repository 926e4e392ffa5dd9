// NamedValues.h - the properties of an item by their tags and by their names, in one place.
#ifndef TARN_ARCHIVE_NAMEDVALUES_H
#define TARN_ARCHIVE_NAMEDVALUES_H

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "archive/mapi/MapiMessage.h"
#include "archive/mapi/PropertyValues.h"

namespace tarn::archive {

// The sets of named properties that items have (MS-OXPROPS 1.3.2).
using PropertySetId = std::array<uint8_t, 16>;
inline constexpr PropertySetId kAppointmentProperties = {0x02, 0x20, 0x06, 0, 0, 0, 0, 0,
                                                         0xC0, 0,    0,    0, 0, 0, 0, 0x46};
inline constexpr PropertySetId kTaskProperties = {0x03, 0x20, 0x06, 0, 0, 0, 0, 0,
                                                  0xC0, 0,    0,    0, 0, 0, 0, 0x46};
inline constexpr PropertySetId kContactProperties = {0x04, 0x20, 0x06, 0, 0, 0, 0, 0,
                                                     0xC0, 0,    0,    0, 0, 0, 0, 0x46};
inline constexpr PropertySetId kCommonProperties = {0x08, 0x20, 0x06, 0, 0, 0, 0, 0,
                                                    0xC0, 0,    0,    0, 0, 0, 0, 0x46};
inline constexpr PropertySetId kMeetingProperties = {
    0x90, 0xDA, 0xD8, 0x6E, 0x0B, 0x45, 0x1B, 0x10, 0x98, 0xDA, 0x00, 0xAA, 0x00, 0x3F, 0x13, 0x05};
inline constexpr PropertySetId kPublicStrings = {0x29, 0x03, 0x02, 0, 0, 0, 0, 0,
                                                 0xC0, 0,    0,    0, 0, 0, 0, 0x46};

// A property by its tag, or by its number in a set.
struct PropertyKey {
  const PropertySetId* set = nullptr;  // null for a tag
  uint32_t id = 0;
};

// What is not there, or is not of the type, is empty.
class NamedValues {
 public:
  // `message` may be null: then nothing is there. It and the list outlive this.
  NamedValues(mapi::MapiMessage* message, std::vector<Trouble>& troubles);

  std::string text(const PropertyKey& key);
  std::optional<int64_t> integer(const PropertyKey& key);
  std::optional<double> real(const PropertyKey& key);
  std::optional<Moment> time(const PropertyKey& key);
  std::string binary(const PropertyKey& key);
  bool isSet(const PropertyKey& key);  // a boolean that is there and true

  // The categories of the item.
  std::vector<std::string> categories();

 private:
  std::optional<uint16_t> idOf(const PropertyKey& key);

  mapi::MapiMessage* message_;
  std::optional<mapi::PropertyValues> values_;
};

}  // namespace tarn::archive

#endif
