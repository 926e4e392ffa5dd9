// PairSearch.h - the search of FindBytes and FindIgnoringCase; ByteSearch.cpp tells its idea.
#ifndef TARN_COMMON_PAIRSEARCH_H
#define TARN_COMMON_PAIRSEARCH_H

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "Common/SearchBlocks.h"
#include "Common/TwoWaySearch.h"

namespace tarn::search {

// Which bytes are equal: all different, or the two cases of an ASCII letter alike.
struct ExactBytes {
  static constexpr unsigned char Of(char byte) { return static_cast<unsigned char>(byte); }
  static constexpr unsigned char CaseBit(char) { return 0; }
};

struct FoldedBytes {
  static constexpr unsigned char Of(char byte) { return kFolded[static_cast<unsigned char>(byte)]; }
  static constexpr unsigned char CaseBit(char byte) {
    const unsigned char folded = Of(byte);
    return folded >= 'a' && folded <= 'z' ? 0x20 : 0;
  }

 private:
  static constexpr std::array<unsigned char, 256> kFolded = [] {
    std::array<unsigned char, 256> table = {};
    for (unsigned i = 0; i < 256; ++i) {
      table[i] = static_cast<unsigned char>(i >= 'A' && i <= 'Z' ? i + 0x20 : i);
    }
    return table;
  }();
};

// How common each byte is in mail files: headers, HTML, base64. 0 is rare.
inline constexpr std::array<unsigned char, 256> kCommonness = [] {
  std::array<unsigned char, 256> table = {};
  const auto set = [&table](std::string_view bytes, unsigned char value) {
    for (const char byte : bytes) table[static_cast<unsigned char>(byte)] = value;
  };
  set("-:=.,<>\"/+;&@", 1);
  set("\r\n\t", 2);
  set("0123456789JQXZKVWjqxzkvw", 3);
  set("ABCDFGHLMPUYbcdfghlmpuy", 4);
  for (unsigned i = 0x80; i < 0x100; ++i) table[i] = 4;
  set(" EINORSTAeinorsta", 5);
  return table;
}();

struct AnchorPair {
  Anchor first;
  Anchor second;
};

// The rarest byte of the needle, and the rarest of the bytes unequal to it, the later of two alike.
// A needle of one byte value has its ends. Only the front of a long needle is looked at.
template <typename Fold>
AnchorPair ChooseAnchors(std::string_view needle) {
  constexpr uint64_t kLookedAt = 256;
  const std::string_view front = needle.substr(0, kLookedAt);
  const auto commonness = [&front](uint64_t i) {
    return kCommonness[static_cast<unsigned char>(front[i])];
  };
  const auto anchor = [&front](uint64_t i) {
    return Anchor{i, Fold::Of(front[i]), Fold::CaseBit(front[i])};
  };

  uint64_t first = 0;
  for (uint64_t i = 1; i < front.size(); ++i) {
    if (commonness(i) < commonness(first)) first = i;
  }
  uint64_t second = front.size() - 1;
  bool differs = Fold::Of(front[second]) != Fold::Of(front[first]);
  for (uint64_t i = second; i-- > 0;) {
    if (Fold::Of(front[i]) == Fold::Of(front[first])) continue;
    if (!differs || commonness(i) < commonness(second)) second = i;
    differs = true;
  }
  return {anchor(first), anchor(second)};
}

template <typename Block, typename Fold>
class PairSearch {
 public:
  // The text is at least as long as the needle, which is not empty. Looks from `from` on.
  PairSearch(std::string_view text, std::string_view needle, size_t from)
      : PairSearch(text, needle, from, ChooseAnchors<Fold>(needle)) {}

  // The first occurrence, or npos.
  size_t find() {
    const char* const start = text_.data();
    uint64_t place = from_;
    for (; places_ - place >= kManyPlaces; place += kManyPlaces) {
      const uint64_t mask = block_.many(start + place);
      if (mask != 0 && tryCandidates(place, mask)) return result_;
    }
    for (; places_ - place >= Block::kFewPlaces; place += Block::kFewPlaces) {
      const uint64_t mask = block_.few(start + place);
      if (mask != 0 && tryCandidates(place, mask)) return result_;
    }
    for (; place < places_; ++place) {
      if (!anchors_.first.matches(start + place) || !anchors_.second.matches(start + place)) {
        continue;
      }
      if (tryCandidates(place, 1)) return result_;
    }
    return std::string_view::npos;
  }

 private:
  // What failed compares may cost: so many bytes, and as many again as the search has advanced.
  static constexpr uint64_t kFreeCompares = 1024;

  PairSearch(std::string_view text, std::string_view needle, size_t from, AnchorPair anchors)
      : text_(text),
        needle_(needle),
        from_(from),
        places_(text.size() - needle.size() + 1),
        anchors_(anchors),
        block_(anchors.first, anchors.second) {}

  // Compares at the places of the mask. True when the search is over: `result_` says how.
  bool tryCandidates(uint64_t place, uint64_t mask) {
    for (; mask != 0; mask &= mask - 1) {
      const uint64_t candidate = place + static_cast<uint64_t>(std::countr_zero(mask));
      const uint64_t equal = countEqual(text_.data() + candidate);
      if (equal == needle_.size()) {
        result_ = candidate;
        return true;
      }
      compared_ += equal + 1;
      if (compared_ > kFreeCompares + (candidate - from_)) {
        result_ = TwoWaySearch<Fold>(needle_).find(text_, candidate + 1);
        return true;
      }
    }
    return false;
  }

  uint64_t countEqual(const char* place) const {
    uint64_t i = 0;
    while (i < needle_.size() && Fold::Of(place[i]) == Fold::Of(needle_[i])) ++i;
    return i;
  }

  std::string_view text_;
  std::string_view needle_;
  uint64_t from_;
  uint64_t places_;  // the needle can begin at those before this one
  AnchorPair anchors_;
  Block block_;
  uint64_t compared_ = 0;  // bytes that failed compares have read
  size_t result_ = std::string_view::npos;
};

template <typename Block, typename Fold>
size_t FindByPair(std::string_view text, std::string_view needle, size_t from = 0) {
  if (needle.empty() || from > text.size() || text.size() - from < needle.size()) {
    return std::string_view::npos;
  }
  return PairSearch<Block, Fold>(text, needle, from).find();
}

}  // namespace tarn::search

#endif
