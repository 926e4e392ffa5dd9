// RawBytes.h - the bytes of a view as those who read numbers take them.
#ifndef TARN_ARCHIVE_RAWBYTES_H
#define TARN_ARCHIVE_RAWBYTES_H

#include <string_view>

namespace tarn::archive::mapi {

inline const unsigned char* RawBytes(std::string_view bytes) {
  return reinterpret_cast<const unsigned char*>(bytes.data());
}

}  // namespace tarn::archive::mapi

#endif
