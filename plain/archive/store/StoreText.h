// StoreText.h - text of a store as UTF-8, where no message tells a code page.
#ifndef TARN_ARCHIVE_STORE_STORETEXT_H
#define TARN_ARCHIVE_STORE_STORETEXT_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tarn::archive::store {

// Text of one of the two types of text, up to its first NUL.
std::string TextOfStore(uint16_t type, std::string_view bytes);

// The same, but none for 8-bit text that needs a code page.
std::optional<std::string> TextOfAnyCodePage(uint16_t type, std::string_view bytes);

// UTF-16 of a path; none where the path is not UTF-8.
std::optional<std::u16string> Utf16OfUtf8(std::string_view text);

}  // namespace tarn::archive::store

#endif
