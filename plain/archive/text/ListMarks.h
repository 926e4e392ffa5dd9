// ListMarks.h - the marks of numbered lists.
#ifndef TARN_ARCHIVE_LISTMARKS_H
#define TARN_ARCHIVE_LISTMARKS_H

#include <cstdint>
#include <string>

namespace tarn::archive {

// "3. ", and of the types of HTML "c. ", "C. ", "iii. ", "III. " where they have the number.
std::string MarkOfItem(int64_t number, char numbering);

}  // namespace tarn::archive

#endif
