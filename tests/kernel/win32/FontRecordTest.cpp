#include <gtest/gtest.h>
#include <windows.h>

#include <cstring>

#include "LogFontRecord.h"
#include "Tarnbase/PlainKernel.h"

namespace tarn::test {
namespace {

constexpr const char16_t* kHere = u"FontRecordTest.cpp";

TEST(Graphics, AFontHoldsTheRecordItWasMadeFrom) {
  LogFont record = LogFontWithFace(u"Courier New", 11);
  record[0] = 0xF4;  // a height of -12
  record[1] = record[2] = record[3] = 0xFF;
  record[16] = 0x90;  // a weight of 400
  record[17] = 0x01;
  void* const font = KernelCreateFont(record.data(), 1, kHere);
  ASSERT_NE(font, nullptr);
  LOGFONTW held = {};
  ASSERT_EQ(::GetObjectW(font, sizeof held, &held), static_cast<int>(sizeof held));
  EXPECT_EQ(std::memcmp(&held, record.data(), sizeof held), 0);
  EXPECT_EQ(::GetObjectType(font), DWORD{OBJ_FONT});
  KernelDeleteFont(font, 2, kHere);
  EXPECT_EQ(::GetObjectType(font), DWORD{0});
}

TEST(Graphics, ARecordMayLieAnywhere) {
  unsigned char bytes[93] = {};
  std::memcpy(bytes + 1, LogFontWithFace(u"Arial", 5).data(), 92);
  void* const font = KernelCreateFont(bytes + 1, 1, kHere);
  LOGFONTW held = {};
  ASSERT_NE(::GetObjectW(font, sizeof held, &held), 0);
  EXPECT_STREQ(held.lfFaceName, L"Arial");
  KernelDeleteFont(font, 2, kHere);
}

TEST(Graphics, AContextIsOneOfTheScreenAndTakesAFont) {
  void* const context = KernelCreateDC(0, 1, kHere);
  ASSERT_NE(context, nullptr);
  EXPECT_EQ(::GetObjectType(context), DWORD{OBJ_DC});
  EXPECT_EQ(::GetDeviceCaps(static_cast<HDC>(context), TECHNOLOGY), DT_RASDISPLAY);
  void* const font = KernelCreateFont(LogFontWithFace(u"Arial", 5).data(), 2, kHere);
  const HGDIOBJ before = ::SelectObject(static_cast<HDC>(context), font);
  EXPECT_NE(before, nullptr);
  EXPECT_EQ(::SelectObject(static_cast<HDC>(context), before), font);
  KernelDeleteFont(font, 3, kHere);
  KernelDeleteDC(context, 4, kHere);
  EXPECT_EQ(::GetObjectType(context), DWORD{0});
}

}  // namespace
}  // namespace tarn::test
