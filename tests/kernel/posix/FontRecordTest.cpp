#include <gtest/gtest.h>

#include <cstring>

#include "LogFontRecord.h"
#include "Tarnbase/PlainKernel.h"

namespace tarn::test {
namespace {

constexpr const char16_t* kHere = u"FontRecordTest.cpp";

TEST(Graphics, AFontHoldsTheRecordItWasMadeFrom) {
  LogFont record = LogFontWithFace(u"Courier New", 11);
  record[0] = 0xF4;
  void* const font = KernelCreateFont(record.data(), 1, kHere);
  ASSERT_NE(font, nullptr);
  record.fill(0);
  const auto* const bytes = static_cast<const unsigned char*>(font);
  EXPECT_EQ(bytes[0], 0xF4);
  EXPECT_EQ(std::memcmp(bytes + 28, u"Courier New", 24), 0);
  KernelDeleteFont(font, 2, kHere);
}

}  // namespace
}  // namespace tarn::test
