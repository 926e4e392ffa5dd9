// RtfFontIndex.h - the code pages of a growing list of fonts, by font number.
//
// A digital search tree: every node holds a font, and at depth d bit d of the number decides
// between its two children. No number has more than 32 bits, so a look-up passes 33 nodes at most,
// whatever the numbers are, and about log2 of their count where they run from 0 on.
#ifndef TARN_RTF_RTFFONTINDEX_H
#define TARN_RTF_RTFFONTINDEX_H

#include <cstdint>

#include "Internal/Tarnclasses_.h"
#include "rtf/RtfFontTable.h"

namespace tarn {

class RtfFontIndex {
 public:
  // Takes in what was appended to the table since the last call; earlier entries are not read
  // again. Of two fonts with one number the first counts. False without memory.
  bool update(const RtfFontTable& table);

  // The code page of the font with that number, or null. kNoRtfFont is no font's number.
  const uint32_t* find(uint32_t number) const;

 private:
  struct Node {
    uint32_t number;
    uint32_t codePage;
    int32_t children[2];  // 0: none; the root is nobody's child
  };

  bool reserve(int32_t count);
  void insert(const RtfFontEntry& font);

  KernelBlock<Node> nodes_;
  int32_t count_ = 0;
  int32_t capacity_ = 0;
  int32_t taken_ = 0;  // entries of the table
};

}  // namespace tarn

#endif
