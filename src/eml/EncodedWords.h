// EncodedWords.h - RFC 2047 encoded words, "=?charset?B?text?=", in header fields and parameters.
//
// Only the capital letters B and Q are known, blanks between two words stay, and text before a
// refused word appears twice when a word before it was decoded: callers rely on all three. The
// first word that is refused (an unknown charset or letter, a part missing) ends the decoding, and
// what follows stays as it is.
#ifndef TARN_EML_ENCODEDWORDS_H
#define TARN_EML_ENCODEDWORDS_H

#include "Internal/EmlMessage.h"

namespace tarn {

// Decodes the words of a text whose length counts its terminator; one shorter than 14 bytes stays.
// Sets `*convertToUtf8` (if not null) when a word became UTF-8, even if a later one fails.
//   StatusOk            also without a word, and when one is refused
//   StatusOutOfMemory   the text is unchanged
//   others              of ConvertTailToUtf8; the text is unchanged
Status DecodeEncodedWords(SizedBytes& text, bool* convertToUtf8);

// Appends the decoded text of one word to the output's text and counts a terminating NUL.
// `encoding` is 'B' or 'Q'. In Q text an "=" at the end reads on in the "?=" that ends the word.
// StatusOk, StatusOutOfMemory, or the result of DecodeBase64; after a failure the output has the
// text it had.
Status DecodeEncodedWordText(char encoding, std::string_view text, SizedBytes& output);

// A copy of a parameter value in `output`, which is empty before. Its words are decoded if it
// begins with "=?", and it is left raw when that fails. A NUL comes after the text, counted
// unless the last word was ISO-2022-JP. StatusOk, or StatusOutOfMemory for the copy.
Status DecodeParameterValue(std::string_view value, SizedBytes& output);

// The same, stored as the part's name in the place of any other.
Status DecodePartName(EmlPart& part, std::string_view value);

}  // namespace tarn

#endif
