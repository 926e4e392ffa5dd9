// TextEngine.h - pages of plain text: a fixed-width font, lines wrapped between words, tab stops
// every eight columns, a paragraph from right to left where its first letters are.
#ifndef TARN_SIBLINGS_LAYOUT_TEXTENGINE_H
#define TARN_SIBLINGS_LAYOUT_TEXTENGINE_H

#include <memory>

#include "siblings/layout/Engine.h"

namespace tarn::pages {

std::unique_ptr<Engine> MakeTextEngine();

}  // namespace tarn::pages

#endif
