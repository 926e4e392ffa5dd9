// EncodedWords.h - RFC 2047 encoded words, "=?charset?B?text?=", in header fields and parameters.
//
// Only the capital letters B and Q are known, blanks between two words stay, and text in front of a
// refused word appears twice when a word before it was decoded: callers rely on all three. The
// first word that is refused (an unknown charset or letter, a part missing) ends the decoding, and
// what follows stays as it stands.
#ifndef TARN_EML_ENCODEDWORDS_H
#define TARN_EML_ENCODEDWORDS_H

#include "Internal/EmlMessage.h"

namespace tarn {

// Decodes the words of a text whose length counts its terminator; one shorter than 14 bytes stays.
// Sets `*convertToUtf8` (if not null) when a word became UTF-8. 1, or a failure code and then the
// text is unchanged.
int32_t DecodeEncodedWords(SizedBytes& text, uint32_t* convertToUtf8);

// Appends the decoded text of one word to the output's text and counts a terminating NUL.
// `encoding` is 'B' or 'Q'. In Q text an "=" at the end reads the two bytes behind `text`, which
// are the "?=" of the word and must be readable. 1, -1, or the result of DecodeBase64, and then the
// output has the text it had.
int32_t DecodeEncodedWordText(char encoding, const char* text, uint64_t length, SizedBytes& output);

// A copy of a parameter value in `output`, which is empty before. Its words are decoded if it
// begins with "=?", and it is left raw when that fails. A NUL stands behind the text, counted
// unless the last word was ISO-2022-JP. 1, or -1 without memory for the copy.
int32_t DecodeParameterValue(const char* start, const char* end, SizedBytes& output);

// The same, stored as the part's name in the place of any other. 1 or -1.
int32_t DecodePartName(EmlPart& part, const char* start, const char* end);

}  // namespace tarn

#endif
