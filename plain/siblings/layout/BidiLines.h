// BidiLines.h - the places of words on their lines, some of which may go from right to left.
//
// The HTML library lays words out from left to right, as they are written. Shaping has put the
// letters of each in order; here the words are, by the rules of Unicode's algorithm for whole
// words. The direction of a line is that of its first letter. And the library knows whole pixels
// alone, which would leave gaps of uneven width.
#ifndef TARN_SIBLINGS_LAYOUT_BIDILINES_H
#define TARN_SIBLINGS_LAYOUT_BIDILINES_H

#include <cstddef>
#include <vector>

#include "siblings/layout/DisplayList.h"

namespace tarn::pages {

enum class WordDirection : uint8_t { LeftToRight, RightToLeft, Neutral };

// The places of words from left to right: which word comes first, which second.
std::vector<size_t> VisualOrder(std::vector<WordDirection> words);

// Moves the words of a display list to their places.
void ArrangeWords(DisplayList& list);

}  // namespace tarn::pages

#endif
