// DocumentText.h - the pieces that finished documents of stores and MSG files are put together of.
#ifndef TARN_FILEFORMATS_PST_DOCUMENTTEXT_H
#define TARN_FILEFORMATS_PST_DOCUMENTTEXT_H

#include <cstring>
#include <string_view>

namespace tarn {

inline constexpr std::string_view kHtmlOpen = "<html>";
inline constexpr std::string_view kHtmlClose = "</html>";

// Copies the bytes, for which there is room, and gives the place behind them.
inline char* PutBytes(char* out, std::string_view bytes) {
  if (!bytes.empty()) std::memcpy(out, bytes.data(), bytes.size());
  return out + bytes.size();
}

}  // namespace tarn

#endif
