// PstExtent.h - what is where in a PST file that was written: the writer's own record.
#ifndef TARN_TESTS_SUPPORT_PST_PSTEXTENT_H
#define TARN_TESTS_SUPPORT_PST_PSTEXTENT_H

#include <cstdint>

namespace tarn::test {

enum class PstExtentKind : uint8_t {
  AMap,
  PMap,
  FMap,
  FPMap,
  DList,
  NbtPage,
  BbtPage,
  DataBlock,      // an external block
  ExtendedBlock,  // XBLOCK, XXBLOCK
  SubnodeBlock,   // SLBLOCK, SIBLOCK
};

struct PstExtent {
  uint64_t offset;
  uint64_t id;
  uint16_t size;  // of a page 512, of a block the cb of its data
  PstExtentKind kind;
};

inline bool IsBlock(PstExtentKind kind) { return kind >= PstExtentKind::DataBlock; }

}  // namespace tarn::test

#endif
