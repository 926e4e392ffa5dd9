// PstProperties.h - the properties of a store's messages, and its texts within what a walk may
// cost. What the store throws passes.
#ifndef TARN_FILEFORMATS_PST_PSTPROPERTIES_H
#define TARN_FILEFORMATS_PST_PSTPROPERTIES_H

#include <cstdint>

#include "Internal/Status.h"
#include "pststore/Types.h"

namespace pststore {
class property_bag;
}

namespace tarn {

// By their published names.
enum MessageProperty : pststore::ushort {
  PR_IMPORTANCE = 0x0017,
  PR_SUBJECT = 0x0037,
  PR_CLIENT_SUBMIT_TIME = 0x0039,
  PR_SENDER_NAME = 0x0C1A,
  PR_DISPLAY_BCC = 0x0E02,
  PR_DISPLAY_CC = 0x0E03,
  PR_DISPLAY_TO = 0x0E04,
  PR_BODY = 0x1000,
  PR_RTF_COMPRESSED = 0x1009,
  PR_HTML = 0x1013,
};

// A text property that exists. StatusOk, or StatusOutOfMemory for one of more than `textLeft`
// bytes, and then nothing is read.
Status ReadText(const pststore::property_bag& properties, MessageProperty id, uint64_t& textLeft,
                pststore::wstring& text);

// The subject of a message, without the marker of two characters that it may start with; "No
// Subject" when there is none. As ReadText; std::out_of_range for half a marker.
Status ReadSubject(const pststore::property_bag& properties, uint64_t& textLeft,
                   pststore::wstring& subject);

// Messages of this subject take no number.
inline bool IsWithoutNumber(const pststore::wstring& subject) {
  return subject == u"LocalFreebusy";
}

}  // namespace tarn

#endif
