// RtfCoverageMemo.h - what FindFontForText answered for each character of a document's header rows.
//
// Texts of up to 4 units are kept (a character and its marks are rarely longer), and no more than
// kMostAnswers of them. The block comes from the kernel with the first one.
#ifndef TARN_RTF_RTFCOVERAGEMEMO_H
#define TARN_RTF_RTFCOVERAGEMEMO_H

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "Common/KernelMap.h"

namespace tarn {

// Fonts are only ever added after the others. So the first font that covers a text stays the first
// one, and a text that no font covered may be covered by the entries that have come since.
struct RtfCoverageAnswer {
  bool covered = false;     // by the font of that number
  uint32_t fontNumber = 0;  // of a covered text
  size_t asked = 0;         // of another: how many entries of the table were asked
};

class RtfCoverageMemo {
 public:
  static constexpr size_t kMostAnswers = 4096;

  // The answer for exactly this text, or null. It is valid until the next one is kept.
  const RtfCoverageAnswer* find(std::u16string_view text) const {
    return answers_.find(keyOf(text));
  }

  // Keeps an answer, in place of the one that the text had. A text that is too long, one more than
  // the most, and one for which there is no memory are not kept.
  void keep(std::u16string_view text, const RtfCoverageAnswer& answer) {
    const uint64_t key = keyOf(text);
    if (key == kNoKey) return;
    if (RtfCoverageAnswer* const kept = answers_.find(key)) {
      *kept = answer;
    } else if (answers_.size() < kMostAnswers) {
      [[maybe_unused]] const bool isKept = answers_.add(key, answer);
    }
  }

  void clear() { answers_.clear(); }

 private:
  static constexpr uint64_t kNoKey = 0;

  // All units. kNoKey for texts that are not kept: a NUL at the front would not count.
  static uint64_t keyOf(std::u16string_view text) {
    if (text.empty() || text.size() > 4 || text.front() == 0) return kNoKey;
    uint64_t key = 0;
    for (const char16_t unit : text) key = key << 16 | unit;
    return key;
  }

  KernelMap<uint64_t, RtfCoverageAnswer> answers_;
};

}  // namespace tarn

#endif
