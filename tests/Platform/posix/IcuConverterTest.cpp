#include "Platform/posix/IcuConverter.h"

#include <gtest/gtest.h>

namespace tarn::platform {
namespace {

TEST(IcuConverter, WithoutItsTableConvertsNothing) {
  IcuConverter none("no-such-table", true);
  const uint8_t byte = 'x';
  EXPECT_EQ(none.Decode({&byte, 1}), std::nullopt);
  EXPECT_EQ(none.Encode(u'x'), std::nullopt);
}

}  // namespace
}  // namespace tarn::platform
