#include <gtest/gtest.h>

#include "support/LeakCheck.h"

int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  ::testing::UnitTest::GetInstance()->listeners().Append(new tarn::test::LeakCheck);
  return RUN_ALL_TESTS();
}
