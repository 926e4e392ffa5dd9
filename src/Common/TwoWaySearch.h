// TwoWaySearch.h - string search in linear time and constant space for any needle and any stretch.
//
// The Two-Way algorithm (Crochemore and Perrin, 1991). The needle is cut in two at a critical
// position, where the local period of the cut is the period of the whole needle. The right part is
// compared from left to right; a mismatch there moves the needle past the mismatching byte. Then
// the left part is compared; a mismatch there moves it by the period. For a needle that repeats
// itself, what the last move proved equal is remembered and not compared again. Both the cut and
// the search take at most a few compares for each byte.
//
// `Fold` says which bytes count as equal: Fold::Of(byte) is one byte for all of its class.
#ifndef TARN_COMMON_TWOWAYSEARCH_H
#define TARN_COMMON_TWOWAYSEARCH_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace tarn::search {

template <typename Fold>
class TwoWaySearch {
 public:
  // The needle is not empty and outlives the search.
  explicit TwoWaySearch(std::string_view needle) : needle_(needle) {
    const Suffix rising = maximalSuffix(false);
    const Suffix falling = maximalSuffix(true);
    const Suffix cut = falling.start < rising.start ? rising : falling;
    cut_ = cut.start;
    period_ = cut.period;
    // The period of the right part is that of the needle only if the left part repeats with it.
    repeats_ = period_ + cut_ <= needle.size();
    for (uint64_t i = 0; repeats_ && i < cut_; ++i) repeats_ = at(i) == at(i + period_);
    if (!repeats_) period_ = std::max(cut_, needle.size() - cut_) + 1;
  }

  // The first occurrence from `from` on, or npos.
  size_t find(std::string_view text, size_t from = 0) const {
    const uint64_t length = needle_.size();
    const char* p = text.data() + from;
    uint64_t left = text.size() - from;  // bytes from p on
    uint64_t known = 0;                  // so many bytes at p are known to equal the needle's
    while (left >= length) {
      uint64_t i = std::max(cut_, known);
      while (i < length && at(i) == Fold::Of(p[i])) ++i;
      if (i < length) {
        p += i - cut_ + 1;
        left -= i - cut_ + 1;
        known = 0;
        continue;
      }
      i = cut_;
      while (i > known && at(i - 1) == Fold::Of(p[i - 1])) --i;
      if (i <= known) return text.size() - left;
      if (left - length < period_) break;
      p += period_;
      left -= period_;
      known = repeats_ ? length - period_ : 0;
    }
    return std::string_view::npos;
  }

 private:
  struct Suffix {
    uint64_t start;
    uint64_t period;
  };

  unsigned char at(uint64_t i) const { return Fold::Of(needle_[i]); }

  // The suffix that is greatest in the order of bytes, or in the reversed order, and its period.
  Suffix maximalSuffix(bool reversed) const {
    Suffix best = {0, 1};
    uint64_t rival = 1;  // start of the suffix that is compared with the best one
    uint64_t equal = 0;  // so many bytes of the two are equal
    while (rival + equal < needle_.size()) {
      const unsigned char a = at(rival + equal);
      const unsigned char b = at(best.start + equal);
      if (a == b) {
        if (++equal == best.period) {
          rival += best.period;
          equal = 0;
        }
      } else if ((a < b) != reversed) {
        rival += equal + 1;
        equal = 0;
        best.period = rival - best.start;
      } else {
        best = {rival, 1};
        ++rival;
        equal = 0;
      }
    }
    return best;
  }

  std::string_view needle_;
  uint64_t cut_ = 0;
  uint64_t period_ = 1;
  bool repeats_ = false;
};

}  // namespace tarn::search

#endif
