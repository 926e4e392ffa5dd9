// MimeText.h - a text as the content of a part (RFC 2045).
#ifndef TARN_ARCHIVE_MIMETEXT_H
#define TARN_ARCHIVE_MIMETEXT_H

#include <string>
#include <string_view>

namespace tarn::archive {

struct MimeText {
  std::string encoding;  // of its transfer: empty, "quoted-printable" or "base64"
  std::string content;   // encoded, lines ended by CRLF
};

// Text in a charset that has ASCII as it is. Line ends of any kind become CRLF. Plain where it is
// ASCII in lines that mail can have and that no boundary begins; else whichever is more readable.
MimeText EncodeText(std::string_view text);

}  // namespace tarn::archive

#endif
