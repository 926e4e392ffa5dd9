#include "siblings/layout/BidiLines.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace tarn::pages {

namespace {

WordDirection DirectionOf(const ShapedWord& word) {
  if (word.rightToLeft) return WordDirection::RightToLeft;
  return word.leftToRight ? WordDirection::LeftToRight : WordDirection::Neutral;
}

// Neutral words take the direction of both neighbours, or that of the line.
void ResolveNeutral(std::vector<WordDirection>& words, WordDirection base) {
  WordDirection before = base;
  for (size_t i = 0; i < words.size();) {
    if (words[i] != WordDirection::Neutral) {
      before = words[i++];
      continue;
    }
    size_t end = i;
    while (end < words.size() && words[end] == WordDirection::Neutral) ++end;
    const WordDirection after = end < words.size() ? words[end] : base;
    std::fill(words.begin() + static_cast<std::ptrdiff_t>(i),
              words.begin() + static_cast<std::ptrdiff_t>(end), before == after ? before : base);
    i = end;
  }
}

bool FollowsOnLine(const PaintedText& before, const PaintedText& next) {
  constexpr double kGap = 3;
  return std::abs(before.baseline - next.baseline) < 1 &&
         std::abs(next.box.left - before.box.right()) < kGap;
}

// Puts the words in their order where they end and begin, not where whole pixels do. A line keeps
// its length.
void ArrangeLine(const std::vector<PaintedText*>& line) {
  std::vector<WordDirection> words;
  double exact = 0;
  double room = 0;
  for (const PaintedText* text : line) {
    words.push_back(DirectionOf(*text->word));
    exact += text->word->width;
    room += text->box.width;
  }
  if (exact <= 0) return;
  double left = line.front()->box.left;
  // cppcheck-suppress accessMoved ; a range is evaluated once
  for (const size_t index : VisualOrder(std::move(words))) {
    line[index]->box.left = left;
    line[index]->box.width = line[index]->word->width * room / exact;
    left += line[index]->box.width;
  }
}

}  // namespace

std::vector<size_t> VisualOrder(std::vector<WordDirection> words) {
  const auto strong = std::find_if(words.begin(), words.end(), [](WordDirection word) {
    return word != WordDirection::Neutral;
  });
  const WordDirection base = strong == words.end() ? WordDirection::LeftToRight : *strong;
  ResolveNeutral(words, base);
  std::vector<size_t> order(words.size());
  std::iota(order.begin(), order.end(), size_t{0});
  // Runs against the line's direction are turned, and then, from right to left, the line.
  for (size_t i = 0; i < words.size();) {
    size_t end = i + 1;
    while (end < words.size() && (words[end] == base) == (words[i] == base)) ++end;
    if (words[i] != base) {
      std::reverse(order.begin() + static_cast<std::ptrdiff_t>(i),
                   order.begin() + static_cast<std::ptrdiff_t>(end));
    }
    i = end;
  }
  if (base == WordDirection::RightToLeft) std::reverse(order.begin(), order.end());
  return order;
}

void ArrangeWords(DisplayList& list) {
  std::vector<PaintedText*> line;
  for (Painted& item : list.items) {
    auto* text = std::get_if<PaintedText>(&item);
    if (text == nullptr) continue;
    if (!line.empty() && !FollowsOnLine(*line.back(), *text)) {
      ArrangeLine(line);
      line.clear();
    }
    line.push_back(text);
  }
  if (!line.empty()) ArrangeLine(line);
}

}  // namespace tarn::pages
