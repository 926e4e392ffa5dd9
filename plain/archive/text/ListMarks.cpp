#include "archive/text/ListMarks.h"

#include <string_view>

namespace tarn::archive {
namespace {

std::string LettersOf(int64_t number, char first) {
  std::string letters;
  for (; number > 0; number = (number - 1) / 26) {
    letters.insert(letters.begin(), static_cast<char>(first + (number - 1) % 26));
  }
  return letters;
}

std::string RomanOf(int64_t number, bool isUpper) {
  struct Numeral {
    int64_t value;
    std::string_view text;
  };
  static constexpr Numeral kNumerals[] = {
      {1000, "m"}, {900, "cm"}, {500, "d"}, {400, "cd"}, {100, "c"}, {90, "xc"}, {50, "l"},
      {40, "xl"},  {10, "x"},   {9, "ix"},  {5, "v"},    {4, "iv"},  {1, "i"}};
  std::string text;
  for (const Numeral& numeral : kNumerals) {
    for (; number >= numeral.value; number -= numeral.value) text += numeral.text;
  }
  if (isUpper) {
    for (char& c : text) c = static_cast<char>(c - 32);
  }
  return text;
}

}  // namespace

std::string MarkOfItem(int64_t number, char numbering) {
  constexpr int64_t kLargestRoman = 3999;
  std::string mark;
  if ((numbering == 'a' || numbering == 'A') && number > 0) mark = LettersOf(number, numbering);
  if ((numbering == 'i' || numbering == 'I') && number > 0 && number <= kLargestRoman) {
    mark = RomanOf(number, numbering == 'I');
  }
  if (mark.empty()) mark = std::to_string(number);
  return mark + ". ";
}

}  // namespace tarn::archive
