// WordBreaks.h - where a line of HTML may be broken.
#ifndef TARN_SIBLINGS_LAYOUT_WORDBREAKS_H
#define TARN_SIBLINGS_LAYOUT_WORDBREAKS_H

#include <string>
#include <string_view>
#include <vector>

namespace tarn::pages {

// A longer word, an address most often, is broken in pieces no longer than this.
inline constexpr size_t kLongestWord = 40;  // characters

// A text as its words and its blanks, each blank by itself. Between two words without a blank a
// line may be broken: after Chinese characters, say.
std::vector<std::string> SplitIntoWords(std::string_view text);

}  // namespace tarn::pages

#endif
