#include "archive/store/StoreText.h"

#include <algorithm>

#include "Platform/Utf8Text.h"
#include "archive/mapi/PropertyValues.h"

namespace tarn::archive::store {

std::string TextOfStore(uint16_t type, std::string_view bytes) {
  std::string text = type == mapi::kTypeString8 ? mapi::Utf8OfText8(bytes, std::nullopt)
                                                : mapi::Utf8OfText16(bytes);
  text.resize(std::min(text.find('\0'), text.size()));
  return text;
}

std::optional<std::string> TextOfAnyCodePage(uint16_t type, std::string_view bytes) {
  const bool isAscii =
      std::all_of(bytes.begin(), bytes.end(), [](char c) { return platform::IsAscii(c); });
  if (type == mapi::kTypeString8 && !isAscii) return std::nullopt;
  return TextOfStore(type, bytes);
}

std::optional<std::u16string> Utf16OfUtf8(std::string_view text) {
  std::u16string wide(text.size(), u'\0');
  const platform::Conversion done = platform::ConvertText(text, std::span<char16_t>(wide));
  if (!done.isWellFormed) return std::nullopt;
  wide.resize(done.size);
  return wide;
}

}  // namespace tarn::archive::store
