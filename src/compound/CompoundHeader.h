// CompoundHeader.h - the first 512 bytes of a compound file (MS-CFB 2.2).
//
//   offset 0   8  magic D0 CF 11 E0 A1 B1 1A E1
//          8  16  class id                 not read, written as 0
//         24   2  minor version            not read, written as 62
//         26   2  major version            not read, written as 3
//         28   2  byte order               not read, written as FE FF
//         30   2  bigShift                 log2 of the big block size
//         32   2  smallShift               log2 of the small block size
//         34  10  reserved                 not read, written as 0
//         44   4  tableBlockCount          blocks of the big table
//         48   4  directoryStart           first block of the directory
//         52   4  reserved                 not read, written as 0
//         56   4  threshold                streams of this size and up live in big blocks
//         60   4  smallTableStart          first block of the small table
//         64   4  smallTableBlockCount
//         68   4  metaStart                first meta block; 0xFFFFFFFE when there is none
//         72   4  metaBlockCount
//         76 436  tableBlocks              the first 109 blocks of the big table
//
// The header takes 512 bytes whatever the size of the blocks is.
#ifndef TARN_COMPOUND_COMPOUNDHEADER_H
#define TARN_COMPOUND_COMPOUNDHEADER_H

#include <array>
#include <cstdint>

namespace tarn {

inline constexpr uint64_t kHeaderSize = 512;
inline constexpr uint64_t kHeaderTableBlocks = 109;
inline constexpr uint64_t kSmallStreamLimit = 4096;

// Values of a table entry that are no block numbers.
inline constexpr uint64_t kFreeBlock = 0xFFFFFFFF;
inline constexpr uint64_t kChainEnd = 0xFFFFFFFE;
inline constexpr uint64_t kTableBlock = 0xFFFFFFFD;
inline constexpr uint64_t kMetaBlock = 0xFFFFFFFC;  // in files written here table blocks too

inline constexpr std::array<unsigned char, 8> kCompoundMagic = {0xD0, 0xCF, 0x11, 0xE0,
                                                                0xA1, 0xB1, 0x1A, 0xE1};

using HeaderBytes = std::array<unsigned char, kHeaderSize>;

struct CompoundHeader {
  std::array<unsigned char, 8> magic = kCompoundMagic;
  uint64_t bigShift = 9;
  uint64_t smallShift = 6;
  uint64_t tableBlockCount = 0;
  uint64_t directoryStart = 0;
  uint64_t threshold = kSmallStreamLimit;
  uint64_t smallTableStart = 0;
  uint64_t smallTableBlockCount = 0;
  uint64_t metaStart = kChainEnd;
  uint64_t metaBlockCount = 0;
  std::array<uint64_t, kHeaderTableBlocks> tableBlocks;

  CompoundHeader() { tableBlocks.fill(kFreeBlock); }

  // What a reader asks of a header besides its magic.
  bool isReadable() const;
};

void LoadHeader(CompoundHeader& header, const HeaderBytes& bytes);
void SaveHeader(const CompoundHeader& header, HeaderBytes& bytes);

}  // namespace tarn

#endif
