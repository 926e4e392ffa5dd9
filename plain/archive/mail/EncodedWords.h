// EncodedWords.h - the encoded words of headers (RFC 2047) as they should have been written.
#ifndef TARN_ARCHIVE_ENCODEDWORDS_H
#define TARN_ARCHIVE_ENCODEDWORDS_H

#include <string>
#include <string_view>

namespace tarn::archive::mail {

// The value of a header, where words in base64 that follow each other, in one charset, are one word
// in quoted-printable: GMime drops what comes after the first of them that is padded. Their bytes
// are joined, since characters may begin in one and end in the next.
std::string WithBase64WordsJoined(std::string_view value);

// The value of a header, with base64 words joined, where what the words in quoted-printable have
// unencoded is encoded: bytes beyond ASCII, which are in the word's charset, and blanks, commas and
// the like, at which a list of addresses would be split. Line ends within words are gone. Bytes
// outside of words stay.
std::string WithWordsEncoded(std::string_view value);

}  // namespace tarn::archive::mail

#endif
