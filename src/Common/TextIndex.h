// TextIndex.h - many searches in one text that does not change: the occurrences of one needle after
// the other, each set in order.
//
// The first searches read the text. Once the searches for needles of some length have read it many
// times, the windows of that length are hashed: chains lead from window to window of one hash
// value, in order of place. A needle of n bytes has windows of l bytes, the largest power of two
// within n, at its two ends:
//
//   needle   cid:image0042.png@01D9      n = 22
//   l = 16   [cid:image0042.pn]
//                  [e0042.png@01D9.]     together they hold every byte
//
// Both chains are followed by turns, so that the rarer window sets the cost: whatever tells the
// needle from others is in one of the two. A search whose chains are long goes back to reading the
// text, and so never costs much more than that, whatever the text is made of.
#ifndef TARN_COMMON_TEXTINDEX_H
#define TARN_COMMON_TEXTINDEX_H

#include <array>
#include <cstdint>
#include <string_view>

#include "Internal/Tarnclasses_.h"

namespace tarn {

inline constexpr uint64_t kNoPlace = std::string_view::npos;

class TextIndex {
 public:
  // The windows of one length.
  class Windows {
   public:
    // False without memory. The text has at least `length` bytes, and fewer than 4 GiB.
    bool build(std::string_view text, uint64_t length);
    bool isBuilt() const { return static_cast<bool>(heads_); }
    static uint64_t MemoryFor(uint64_t textLength);

    // The first window whose hash is that of the bytes, which are as long as the windows are.
    uint64_t first(const char* bytes) const;
    // The next one with the hash of the window at `place`.
    uint64_t next(uint64_t place) const { return Place(nexts_[place]); }

   private:
    static uint64_t Place(uint32_t link) { return link == 0 ? kNoPlace : link - 1; }
    uint64_t bucketOf(uint64_t hash) const;

    uint64_t length_ = 0;
    unsigned shift_ = 0;
    KernelBlock<uint32_t> heads_;  // of each chain: a place and 1, or 0
    KernelBlock<uint32_t> nexts_;
  };

  struct Limits {
    uint64_t memory;    // bytes that the hashed windows of all lengths may take
    uint64_t readings;  // how often searches for one length read the text before it is hashed
  };

  // The text belongs to the caller. Without memory for windows, searches go on reading.
  TextIndex(std::string_view text, Limits limits) : text_(text), limits_(limits) {}

  std::string_view text() const { return text_; }

  // Windows for a needle of the length; null when none are made yet or ever.
  const Windows* windowsFor(uint64_t needleLength);
  // Tells that a search for a needle of the length has read so many bytes.
  void countReading(uint64_t needleLength, uint64_t bytes);

 private:
  struct Level {
    Windows windows;
    uint64_t read = 0;
    bool isRefused = false;
  };

  static unsigned LevelOf(uint64_t needleLength);

  std::string_view text_;
  Limits limits_;
  uint64_t memory_ = 0;
  std::array<Level, 16> levels_;  // windows of 2^i bytes
};

// The occurrences of one needle.
class Occurrences {
 public:
  // The needle is not empty; its bytes and the index live as long as the object.
  Occurrences(TextIndex& index, std::string_view needle);

  std::string_view needle() const { return needle_; }

  // The first occurrence at or after `from`, which never falls from call to call; kNoPlace when
  // there is none.
  uint64_t next(uint64_t from);
  // What the calls since the last question have cost, in bytes read.
  uint64_t takeCost() { return std::exchange(cost_, 0); }

 private:
  // One chain of windows; `place` is where the needle would be.
  struct Chain {
    uint64_t offset = 0;  // of the window in the needle
    uint64_t place = kNoPlace;
  };

  Chain startChain(uint64_t offset) const;
  void advance(Chain& chain) const;
  bool isAt(uint64_t place) const;
  uint64_t read(uint64_t from);

  TextIndex& index_;
  std::string_view needle_;
  const TextIndex::Windows* windows_;
  Chain front_;
  Chain back_;
  uint64_t stepsLeft_;
  uint64_t cost_ = 0;
};

}  // namespace tarn

#endif
