// MapiMessage.h - messages as sets of properties (MS-OXCMSG, MS-OXPROPS): what stores, MSG files
// and TNEF have in common. MapiItem makes an Item of one.
#ifndef TARN_ARCHIVE_MAPIMESSAGE_H
#define TARN_ARCHIVE_MAPIMESSAGE_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "archive/model/ByteSource.h"
#include "archive/model/Trouble.h"

namespace tarn::archive::mapi {

// Types of values (MS-OXCDATA 2.11.1).
enum PropertyType : uint16_t {
  kTypeInteger16 = 0x0002,
  kTypeInteger32 = 0x0003,
  kTypeFloat32 = 0x0004,
  kTypeFloat64 = 0x0005,
  kTypeCurrency = 0x0006,
  kTypeFloatingTime = 0x0007,
  kTypeError = 0x000A,
  kTypeBoolean = 0x000B,
  kTypeObject = 0x000D,
  kTypeInteger64 = 0x0014,
  kTypeString8 = 0x001E,
  kTypeString = 0x001F,
  kTypeTime = 0x0040,
  kTypeGuid = 0x0048,
  kTypeBinary = 0x0102,
  kMultipleValues = 0x1000
};

// The name of a named property: a set, and a number or a name in it (MS-OXPROPS 1.3.2).
struct PropertyName {
  std::array<uint8_t, 16> set{};  // GUID, as in files
  uint32_t number = 0;            // where there is no name
  std::u16string name;

  friend bool operator==(const PropertyName&, const PropertyName&) = default;
};

struct PropertyTag {
  uint16_t id = 0;
  uint16_t type = 0;
};

// A set of properties: of a message, a recipient or an attachment. Values are bytes as MS-OXCDATA
// lays them out, little-endian: numbers at their width (booleans one byte), 8-bit text and UTF-16LE
// without a terminator, times as 8 bytes. The typed readers are in PropertyValues.h.
class PropertySet {
 public:
  PropertySet() = default;
  PropertySet(const PropertySet&) = delete;
  PropertySet& operator=(const PropertySet&) = delete;
  virtual ~PropertySet() = default;

  // In the order of the source. Of a set that is damaged what could be read.
  virtual std::vector<PropertyTag> tags() = 0;

  virtual std::optional<uint16_t> typeOf(uint16_t id) = 0;

  // The length of a value in bytes, without reading it; none for one that is not there.
  virtual std::optional<uint64_t> sizeOf(uint16_t id) = 0;

  // Missing for a property that is not there, Damaged for one that cannot be read, TooLarge beyond
  // the limit.
  virtual Outcome<std::string> bytes(uint16_t id, size_t limit) = 0;

  // A value of any length, in pieces.
  virtual Outcome<std::unique_ptr<ByteSource>> stream(uint16_t id) = 0;

  // The values of a multiple-valued property, each as bytes() would give it; one of any other. The
  // limit is for all of them together.
  virtual Outcome<std::vector<std::string>> values(uint16_t id, size_t limit) = 0;

  // What of the set was found damaged or missing when it was opened, besides single values.
  virtual std::vector<Trouble> troubles() { return {}; }
};

// A message with its recipients and attachments. Sets of properties live as long as the message.
class MapiMessage {
 public:
  MapiMessage() = default;
  MapiMessage(const MapiMessage&) = delete;
  MapiMessage& operator=(const MapiMessage&) = delete;
  virtual ~MapiMessage() = default;

  virtual PropertySet& properties() = 0;

  // The id, in this source, of a named property; none where it does not occur.
  virtual std::optional<uint16_t> idOf(const PropertyName& name) = 0;
  // The name of an id from 0x8000 on.
  virtual std::optional<PropertyName> nameOf(uint16_t id) = 0;

  // What of the message was found damaged or missing when it was opened, besides its set.
  virtual std::vector<Trouble> troubles() { return {}; }

  virtual Outcome<size_t> recipientCount() = 0;
  virtual Outcome<std::unique_ptr<PropertySet>> recipient(size_t index) = 0;

  virtual Outcome<size_t> attachmentCount() = 0;
  virtual Outcome<std::unique_ptr<PropertySet>> attachment(size_t index) = 0;

  // The message that attachment `index` holds (method 5). `this` must outlive it.
  virtual Outcome<std::unique_ptr<MapiMessage>> embedded(size_t index) = 0;

  // What attachment `index` holds as an object of another program (method 6): the bytes of its
  // stream, or of its storage as a compound file of its own.
  virtual Outcome<std::unique_ptr<ByteSource>> object(size_t index) = 0;
};

}  // namespace tarn::archive::mapi

#endif
