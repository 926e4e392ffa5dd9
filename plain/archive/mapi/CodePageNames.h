// CodePageNames.h - the code pages of messages as the names of charsets.
#ifndef TARN_ARCHIVE_CODEPAGENAMES_H
#define TARN_ARCHIVE_CODEPAGENAMES_H

#include <cstdint>
#include <string_view>

namespace tarn::archive::mapi {

// The IANA name in lower case, "windows-1252"; empty for a number that is no code page of texts.
std::string_view CharsetOfCodePage(uint32_t codePage);

}  // namespace tarn::archive::mapi

#endif
