// NumberSpans.h - rising numbers: those that follow each other take as little room as one.
#ifndef TARN_ARCHIVE_NUMBERSPANS_H
#define TARN_ARCHIVE_NUMBERSPANS_H

#include <algorithm>
#include <cstdint>
#include <vector>

namespace tarn::archive {

struct NumberSpan {
  uint64_t first = 0;
  uint64_t last = 0;  // included

  friend bool operator==(const NumberSpan&, const NumberSpan&) = default;
};

// Rising, and none touches the next.
using NumberSpans = std::vector<NumberSpan>;

// A number that is larger than all before.
inline void AddNumber(NumberSpans& spans, uint64_t number) {
  if (!spans.empty() && spans.back().last + 1 == number) {
    spans.back().last = number;
  } else {
    spans.push_back({number, number});
  }
}

inline bool HasNumber(const NumberSpans& spans, uint64_t number) {
  const auto after =
      std::upper_bound(spans.begin(), spans.end(), number,
                       [](uint64_t wanted, const NumberSpan& span) { return wanted < span.first; });
  return after != spans.begin() && number <= (after - 1)->last;
}

}  // namespace tarn::archive

#endif
