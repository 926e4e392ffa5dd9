// PaperSheet.h - a sheet of paper, and the part of it that is drawn on. All in points.
#ifndef TARN_SIBLINGS_LAYOUT_PAPERSHEET_H
#define TARN_SIBLINGS_LAYOUT_PAPERSHEET_H

#include "siblings/Pages.h"

namespace tarn::pages {

struct PaperSheet {
  PageSize size;
  double margin = 0;  // on all four sides

  double contentWidth() const { return size.width - 2 * margin; }
  double contentHeight() const { return size.height - 2 * margin; }
};

inline PaperSheet SheetOf(Paper paper, double margin) {
  constexpr double kPointsPerMillimetre = 72 / 25.4;
  if (paper == Paper::Letter) return {{612, 792}, margin};
  return {{210 * kPointsPerMillimetre, 297 * kPointsPerMillimetre}, margin};
}

}  // namespace tarn::pages

#endif
