// Headers of compressed RTF that fit again.
#include "mutators/RtfMending.h"

#include <gtest/gtest.h>

#include "support/RtfCompressor.h"

namespace tarn::test {
namespace {

using fuzz::MendCompressedRtf;

TEST(RtfMending, LeavesWhatFits) {
  for (const std::string& whole :
       {PackRtf("{\\rtf1 Hello}"), StoreRtf("{\\rtf1 Hello}", StoredCrc::OfContents)}) {
    std::string mended = whole;
    MendCompressedRtf(mended);
    EXPECT_EQ(mended, whole);
  }
}

TEST(RtfMending, SizesAndChecksumFollowTheContents) {
  LzfuTokens tokens;
  tokens.literals("{\\rtf1}").endMarker();
  std::string packed =
      WriteCompressedRtf({.compressedSize = 1, .rawSize = 7, .crc = 99}, tokens.bytes());
  MendCompressedRtf(packed);
  EXPECT_EQ(packed, WriteCompressedRtf({.rawSize = 7}, tokens.bytes()));

  std::string stored = StoreRtf("{\\rtf1}");
  stored += "more";
  MendCompressedRtf(stored);
  EXPECT_EQ(stored, StoreRtf("{\\rtf1}more", StoredCrc::OfContents));
}

TEST(RtfMending, LeavesOtherBytes) {
  for (const std::string& other : {std::string("short"), std::string(40, 'x'), std::string()}) {
    std::string mended = other;
    MendCompressedRtf(mended);
    EXPECT_EQ(mended, other);
  }
}

}  // namespace
}  // namespace tarn::test
