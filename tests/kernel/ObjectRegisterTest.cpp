// The register by itself, and the lines that it writes about what it holds: what the kernel does at
// the end of a process that asks for them.
#include "ObjectRegister.h"

#include <gtest/gtest.h>

#include <string>

#include "Report.h"

namespace tarn::kernel {
namespace {

// What the call writes to standard error, without the addresses.
template <typename Call>
std::string Written(Call call) {
  ::testing::internal::CaptureStderr();
  call();
  std::string text = ::testing::internal::GetCapturedStderr();
  for (size_t at = text.find("0x"); at != std::string::npos; at = text.find("0x", at + 2)) {
    text.erase(at + 2, text.find(' ', at) - at - 2);
  }
  return text;
}

TEST(ObjectRegister, ListsWhatItHolds) {
  ObjectRegister objects;
  int first = 0;
  int second = 0;
  objects.Add(1, &first, 7, u"First.cpp");
  EXPECT_EQ(Written([&] { EXPECT_TRUE(objects.List("object")); }),
            "Tarnbase: still alive: object 0x (line 7 of First.cpp)\n");
  objects.Add(1, &second, 8, nullptr);
  EXPECT_TRUE(objects.Remove(1, &first));
  EXPECT_EQ(Written([&] { EXPECT_TRUE(objects.List("font")); }),
            "Tarnbase: still alive: font 0x (line 8 of ?)\n");
  EXPECT_TRUE(objects.Remove(1, &second));
  EXPECT_EQ(Written([&] { EXPECT_TRUE(objects.List("object")); }), "");
}

TEST(ObjectRegister, KnowsOnlyWhatWasAdded) {
  ObjectRegister objects;
  int object = 0;
  EXPECT_FALSE(objects.Remove(1, &object));
  EXPECT_FALSE(objects.Remove(1, nullptr));
  objects.Add(1, nullptr, 1, u"Here.cpp");
  EXPECT_EQ(objects.size(), 0u);
  objects.Add(1, &object, 1, u"Here.cpp");
  EXPECT_FALSE(objects.Remove(2, &object));
  EXPECT_EQ(objects.size(), 1u);
  EXPECT_TRUE(objects.Remove(1, &object));
  EXPECT_FALSE(objects.Remove(1, &object));
  EXPECT_EQ(objects.size(), 0u);
}

TEST(Report, NamesTheSourceInUtf8) {
  EXPECT_EQ(Written([] { ReportLeak("block", nullptr, -1, u"Caf\u00E9.cpp"); }),
            "Tarnbase: still alive: block 0x (line -1 of Caf\xC3\xA9.cpp)\n");
}

TEST(Report, CutsTheNameOfASourceAfter255Units) {
  const std::u16string name(256, u'\u3042');
  std::string cut;
  for (int i = 0; i < 255; ++i) cut += "\xE3\x81\x82";
  EXPECT_EQ(Written([&] { ReportLeak("block", nullptr, 3, name.c_str()); }),
            "Tarnbase: still alive: block 0x (line 3 of " + cut + ")\n");
}

TEST(Report, NamesARegisterThatIsInUse) {
  EXPECT_EQ(Written([] { ReportUnlisted("block"); }), "Tarnbase: in use, not listed: blocks\n");
}

}  // namespace
}  // namespace tarn::kernel
