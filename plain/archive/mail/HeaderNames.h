// HeaderNames.h - the names of headers by which mail is told from other text.
#ifndef TARN_ARCHIVE_HEADERNAMES_H
#define TARN_ARCHIVE_HEADERNAMES_H

#include <string_view>

namespace tarn::archive::mail {

// The name of a line "Name: value", in any case; empty where there is none (RFC 5322 2.2).
std::string_view NameOfHeader(std::string_view line);

// Whether mails have a header of this name, in any case. Other files have lines with a colon too,
// but none of these before them.
bool IsUsualHeader(std::string_view name);

}  // namespace tarn::archive::mail

#endif
