#include "Platform/posix/Johab.h"

#include <gtest/gtest.h>

namespace tarn::platform {
namespace {

// Page 949 holds more than KS X 1001: syllables have pairs that are calculated, other rows none.
TEST(JohabPairOfWansung, IsForTheRowsOfSignsAndOfHanjaAlone) {
  EXPECT_EQ(JohabPairOfWansung(0xA1A1), 0xD931);
  EXPECT_EQ(JohabPairOfWansung(0xADA1), std::nullopt) << "a row that the table leaves free";
  EXPECT_EQ(JohabPairOfWansung(0xB0A1), std::nullopt) << "syllables";
  EXPECT_EQ(JohabPairOfWansung(0xCAA1), 0xE031);
  EXPECT_EQ(JohabPairOfWansung(0xFDFE), 0xF9FE);
  EXPECT_EQ(JohabPairOfWansung(0xFEA1), std::nullopt);
  EXPECT_EQ(JohabPairOfWansung(0xA1A0), std::nullopt) << "a trail byte of the extension";
}

}  // namespace
}  // namespace tarn::platform
