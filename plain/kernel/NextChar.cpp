// Steps over one user-visible character: a code point and the combining marks behind it.
#include <algorithm>
#include <iterator>

#include "CombiningMarks.h"
#include "Surrogates.h"
#include "Tarnbase/Kernel.h"

namespace tarn::kernel {
namespace {

bool IsCombiningMark(char32_t point) {
  if (point < kCombiningMarks[0].first) return false;
  const auto* const behind = std::upper_bound(
      std::begin(kCombiningMarks), std::end(kCombiningMarks), point,
      [](char32_t value, const CodePointRange& range) { return value < range.first; });
  return point <= std::prev(behind)->last;
}

// The code point at the front, past which `position` moves; a lone surrogate stands for itself.
char32_t TakeCodePoint(const char16_t*& position, const char16_t* end) {
  const char16_t unit = *position++;
  if (IsHighSurrogate(unit) && position < end && IsLowSurrogate(*position)) {
    return JoinSurrogates(unit, *position++);
  }
  return unit;
}

}  // namespace
}  // namespace tarn::kernel

const char16_t* KernelNextChar(const char16_t* position, int64_t unitsLeft) {
  using namespace tarn::kernel;
  if (position == nullptr || unitsLeft <= 0) return position;
  const char16_t* const end = position + unitsLeft;
  TakeCodePoint(position, end);
  while (position < end) {
    const char16_t* next = position;
    if (!IsCombiningMark(TakeCodePoint(next, end))) break;
    position = next;
  }
  return position;
}
