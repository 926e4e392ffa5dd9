#include "archive/common/FoldedText.h"

#include <unicode/unorm2.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <climits>
#include <new>

namespace tarn::archive {
namespace {

bool IsAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(),
                     [](char c) { return static_cast<signed char>(c) >= 0; });
}

std::string FoldedAscii(std::string_view text) {
  std::string folded(text);
  for (char& letter : folded) {
    if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter - 'A' + 'a');
  }
  return folded;
}

// Out of memory is all that these calls can fail by.
void Check(UErrorCode error) {
  if (U_FAILURE(error) != 0 && error != U_BUFFER_OVERFLOW_ERROR) throw std::bad_alloc();
}

std::u16string Wide(std::string_view text) {
  std::u16string wide(text.size(), u'\0');  // never more units than bytes
  int32_t length = 0;
  UErrorCode error = U_ZERO_ERROR;
  u_strFromUTF8WithSub(wide.data(), static_cast<int32_t>(wide.size()), &length, text.data(),
                       static_cast<int32_t>(text.size()), 0xFFFD, nullptr, &error);
  Check(error);
  wide.resize(static_cast<size_t>(length));
  return wide;
}

std::string Narrow(std::u16string_view wide) {
  constexpr size_t kMostBytesAUnit = 3;
  std::string text(wide.size() * kMostBytesAUnit, '\0');
  int32_t length = 0;
  UErrorCode error = U_ZERO_ERROR;
  u_strToUTF8WithSub(text.data(), static_cast<int32_t>(text.size()), &length, wide.data(),
                     static_cast<int32_t>(wide.size()), 0xFFFD, nullptr, &error);
  Check(error);
  text.resize(static_cast<size_t>(length));
  return text;
}

}  // namespace

std::string Folded(std::string_view text) {
  if (IsAscii(text)) return FoldedAscii(text);
  // Beyond what the library's numbers hold nobody compares.
  constexpr size_t kLongest = INT_MAX / 64;
  const std::u16string wide = Wide(text.substr(0, kLongest));
  UErrorCode error = U_ZERO_ERROR;
  const UNormalizer2* const fold = unorm2_getNFKCCasefoldInstance(&error);
  Check(error);
  std::u16string folded(wide.size() + 16, u'\0');
  for (;;) {
    error = U_ZERO_ERROR;
    const int32_t length =
        unorm2_normalize(fold, wide.data(), static_cast<int32_t>(wide.size()), folded.data(),
                         static_cast<int32_t>(folded.size()), &error);
    Check(error);
    const bool fits = static_cast<size_t>(length) <= folded.size();
    folded.resize(static_cast<size_t>(length));
    if (fits && error != U_BUFFER_OVERFLOW_ERROR) return Narrow(folded);
  }
}

bool HoldsFolded(std::string_view text, std::string_view foldedPart) {
  return Folded(text).find(foldedPart) != std::string::npos;
}

}  // namespace tarn::archive
