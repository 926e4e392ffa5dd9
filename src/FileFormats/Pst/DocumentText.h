// DocumentText.h - puts finished documents of stores and MSG files together.
#ifndef TARN_FILEFORMATS_PST_DOCUMENTTEXT_H
#define TARN_FILEFORMATS_PST_DOCUMENTTEXT_H

#include <cstring>
#include <string_view>

namespace tarn {

// Copies the bytes, for which there is room, and gives the place behind them.
inline char* PutBytes(char* out, std::string_view bytes) {
  if (!bytes.empty()) std::memcpy(out, bytes.data(), bytes.size());
  return out + bytes.size();
}

}  // namespace tarn

#endif
