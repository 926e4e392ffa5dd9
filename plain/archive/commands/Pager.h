// Pager.h - the user's program for texts that are longer than the terminal. One folder a system
// implements it.
#ifndef TARN_ARCHIVE_PAGER_H
#define TARN_ARCHIVE_PAGER_H

#include <string_view>

namespace tarn::archive {

// Shows the text through $PAGER, else less, until the user has seen enough. False, with nothing
// shown, where the user wants none ("" or "cat") or there is none.
bool ShowThroughPager(std::string_view text);

}  // namespace tarn::archive

#endif
