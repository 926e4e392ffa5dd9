// RtfCoverageMemo.h - what FindFontForText answered for each character of a document's header rows.
//
// A digital search tree over the units of the texts: every node holds a text, and at depth d bit d
// of its units decides between its two children. A look-up passes 65 nodes at most, whatever texts
// a document brings. Texts of up to 4 units are kept (a character and its marks are rarely longer),
// and no more than kMostAnswers of them; the block comes from the kernel when the first one does.
#ifndef TARN_RTF_RTFCOVERAGEMEMO_H
#define TARN_RTF_RTFCOVERAGEMEMO_H

#include <cstdint>
#include <string_view>

#include "Internal/Tarnclasses_.h"

namespace tarn {

// Fonts are only ever added behind the others. So the first font that covers a text stays the first
// one, and a text that no font covered may be covered by the entries that have come since.
struct RtfCoverageAnswer {
  bool covered = false;     // by the font of that number
  uint32_t fontNumber = 0;  // of a covered text
  int32_t asked = 0;        // of another: how many entries of the table were asked
};

class RtfCoverageMemo {
 public:
  static constexpr int32_t kMostAnswers = 4096;

  RtfCoverageMemo() = default;
  RtfCoverageMemo(const RtfCoverageMemo&) = delete;
  RtfCoverageMemo& operator=(const RtfCoverageMemo&) = delete;

  // The answer for exactly this text, or null.
  const RtfCoverageAnswer* find(std::u16string_view text) const;

  // Keeps an answer, in place of the one that the text had. A text that is too long, one more than
  // the most, and one for which there is no memory are not kept.
  void keep(std::u16string_view text, const RtfCoverageAnswer& answer);

  void clear();

 private:
  struct Node {
    uint64_t key;
    int32_t children[2];  // 0: none; the root is nobody's child
    RtfCoverageAnswer answer;
  };

  // Where a walk for a key ended: at its node, or at the one that its new node would hang from.
  struct Place {
    int32_t node;
    uint32_t side;
  };
  Place walk(uint64_t key) const;
  bool reserve(int32_t count);

  KernelBlock<Node> nodes_;
  int32_t count_ = 0;
  int32_t capacity_ = 0;
};

}  // namespace tarn

#endif
