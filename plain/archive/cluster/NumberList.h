// NumberList.h - numbers as engines take those of an array: "3,7-9".
#ifndef TARN_ARCHIVE_NUMBERLIST_H
#define TARN_ARCHIVE_NUMBERLIST_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "archive/export/NumberSpans.h"

namespace tarn::archive {

// Empty for none.
std::string NumberList(const NumberSpans& spans);
// Of rising numbers.
std::string NumberList(const std::vector<uint64_t>& numbers);

// What is not such a list, or goes beyond the largest number, gives what was read so far.
NumberSpans SpansOf(std::string_view list, uint64_t largest);

}  // namespace tarn::archive

#endif
