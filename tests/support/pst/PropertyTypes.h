// PropertyTypes.h - the property types and ids that stores of mail use (MS-OXCDATA, MS-OXPROPS).
#ifndef TARN_TESTS_SUPPORT_PST_PROPERTYTYPES_H
#define TARN_TESTS_SUPPORT_PST_PROPERTYTYPES_H

#include <cstddef>
#include <cstdint>

namespace tarn::test {

enum PropertyType : uint16_t {
  kTypeInt16 = 0x02,
  kTypeInt32 = 0x03,
  kTypeFloat = 0x04,
  kTypeDouble = 0x05,
  kTypeCurrency = 0x06,
  kTypeFloatingTime = 0x07,
  kTypeError = 0x0A,
  kTypeBoolean = 0x0B,
  kTypeObject = 0x0D,
  kTypeInt64 = 0x14,
  kTypeString8 = 0x1E,
  kTypeString = 0x1F,
  kTypeTime = 0x40,
  kTypeGuid = 0x48,
  kTypeBinary = 0x102,
};

enum PropertyId : uint16_t {
  kPropImportance = 0x0017,
  kPropMessageClass = 0x001A,
  kPropSubject = 0x0037,
  kPropClientSubmitTime = 0x0039,
  kPropSenderName = 0x0C1A,
  kPropDisplayBcc = 0x0E02,
  kPropDisplayCc = 0x0E03,
  kPropDisplayTo = 0x0E04,
  kPropMessageFlags = 0x0E07,
  kPropMessageSize = 0x0E08,
  kPropMessageStatus = 0x0E17,
  kPropAttachSize = 0x0E20,
  kPropRecordKey = 0x0FF9,
  kPropBody = 0x1000,
  kPropRtfCompressed = 0x1009,
  kPropHtml = 0x1013,
  kPropDisplayName = 0x3001,
  kPropCreationTime = 0x3007,
  kPropLastModificationTime = 0x3008,
  kPropValidFolderMask = 0x35DF,
  kPropIpmSubtreeEntryId = 0x35E0,
  kPropIpmWastebasketEntryId = 0x35E3,
  kPropFinderEntryId = 0x35E7,
  kPropContentCount = 0x3602,
  kPropContentUnreadCount = 0x3603,
  kPropSubfolders = 0x360A,
  kPropContainerClass = 0x3613,
  kPropAttachData = 0x3701,
  kPropAttachEncoding = 0x3702,
  kPropAttachExtension = 0x3703,
  kPropAttachFilename = 0x3704,
  kPropAttachMethod = 0x3705,
  kPropAttachLongFilename = 0x3707,
  kPropRenderingPosition = 0x370B,
  kPropAttachMimeTag = 0x370E,
  kPropAttachContentId = 0x3712,
  kPropPstPassword = 0x67FF,
  kPropRowId = 0x67F2,
  kPropRowVersion = 0x67F3,
};

// Bytes of a type's value in the record of a property itself; 0: it is in the heap.
inline size_t InlineWidth(uint16_t type) {
  switch (type) {
    case kTypeInt16:
      return 2;
    case kTypeInt32:
    case kTypeFloat:
    case kTypeError:
      return 4;
    case kTypeBoolean:
      return 1;
    default:
      return 0;
  }
}

// Bytes of a cell of this type in a table row; 4 for what is in the heap or in a subnode.
inline uint8_t CellWidth(uint16_t type) {
  switch (type) {
    case kTypeInt16:
      return 2;
    case kTypeBoolean:
      return 1;
    case kTypeDouble:
    case kTypeCurrency:
    case kTypeFloatingTime:
    case kTypeInt64:
    case kTypeTime:
      return 8;
    default:
      return 4;
  }
}

// Whether a cell of this type holds its value and not a heap or node id.
inline bool IsFixedType(uint16_t type) { return InlineWidth(type) != 0 || CellWidth(type) == 8; }

}  // namespace tarn::test

#endif
