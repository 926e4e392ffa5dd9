// WordText.h - text as words that an index can hold, in any script.
#ifndef TARN_ARCHIVE_WORDTEXT_H
#define TARN_ARCHIVE_WORDTEXT_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tarn::archive {

// A text in which blanks part the words of all scripts.
struct WordText {
  std::string text;
  // Of each byte of the text where in the original the character begins that it comes from, and one
  // more for the end. Empty unless asked for.
  std::vector<uint32_t> origins;
};

enum class Origins : uint8_t { Leave, Keep };

// Characters are compared as Unicode's toNFKC_Casefold has them; points of Hebrew and Arabic, and
// the stroke that lengthens Arabic words, are left out. Of scripts that are written without blanks
// (Chinese, Japanese, Thai, Lao, Khmer, Burmese), and of Korean, whose words take endings, every
// two neighbouring characters are a word, and the last of a run is one of its own: 日本語 becomes
// "日本 本語 語". So a run of two or more is found as the phrase of its pairs, and a single
// character as the beginning of a word. What is no UTF-8 becomes U+FFFD. Time and memory are in
// proportion to the text.
WordText WordsOf(std::string_view text, Origins origins = Origins::Leave);

// Where the character ends that begins at a place in the text, with the marks that are put on it.
size_t EndOfCharacter(std::string_view text, size_t at);

// The same of something to look for. A run that ends it may go on in what is found.
struct WantedWords {
  std::string text;
  bool endsInPart = false;  // the last word is but the beginning of one
};

WantedWords WordsToFind(std::string_view text);

}  // namespace tarn::archive

#endif
