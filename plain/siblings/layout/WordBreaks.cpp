#include "siblings/layout/WordBreaks.h"

#include <pango/pango.h>

#include <algorithm>

#include "siblings/layout/AsciiText.h"
#include "siblings/layout/Utf8.h"

namespace tarn::pages {

namespace {

// Ends of addresses' parts, after which a long word is broken first.
bool IsGoodEnd(char c) {
  return std::string_view("/?&=-_.,;:+%#").find(c) != std::string_view::npos;
}

bool StartsCharacter(char c) { return (static_cast<uint8_t>(c) & 0xC0) != 0x80; }

void AddPieces(std::vector<std::string>& words, std::string_view word) {
  while (word.size() > kLongestWord) {
    size_t characters = 0;
    size_t end = 0;
    size_t good = 0;
    while (end < word.size() && characters < kLongestWord) {
      ++end;
      while (end < word.size() && !StartsCharacter(word[end])) ++end;
      ++characters;
      if (characters > kLongestWord / 3 && IsGoodEnd(word[end - 1])) good = end;
    }
    if (end == word.size()) break;
    if (good == 0) good = end;
    words.emplace_back(word.substr(0, good));
    word.remove_prefix(good);
  }
  if (!word.empty()) words.emplace_back(word);
}

// Letters of scripts that are written without blanks.
void AddBreakable(std::vector<std::string>& words, std::string_view text) {
  const auto characters =
      static_cast<size_t>(std::count_if(text.begin(), text.end(), StartsCharacter));
  std::vector<PangoLogAttr> attributes(characters + 1);
  pango_get_log_attrs(text.data(), static_cast<int>(text.size()), -1,
                      pango_language_from_string("en"), attributes.data(),
                      static_cast<int>(attributes.size()));
  size_t start = 0;
  size_t index = 0;
  for (size_t position = 0; position < text.size(); ++index) {
    if (position > start && attributes[index].is_line_break) {
      AddPieces(words, text.substr(start, position - start));
      start = position;
    }
    NextCharacter(text, position);
  }
  AddPieces(words, text.substr(start));
}

}  // namespace

std::vector<std::string> SplitIntoWords(std::string_view text) {
  std::vector<std::string> words;
  for (size_t position = 0; position < text.size();) {
    if (IsBlank(text[position])) {
      words.emplace_back(1, text[position++]);
      continue;
    }
    size_t end = position;
    while (end < text.size() && !IsBlank(text[end])) ++end;
    const std::string_view word = text.substr(position, end - position);
    if (IsAscii(word)) {
      AddPieces(words, word);
    } else {
      AddBreakable(words, word);
    }
    position = end;
  }
  return words;
}

}  // namespace tarn::pages
