// What a console of Windows is given of a text.

#include "console/win32/ConsoleText.h"

#include <gtest/gtest.h>

namespace tarn::host {
namespace {

TEST(TakeConsoleText, MakesUtf16OfUtf8) {
  std::string_view bytes = "Gr\u00FC\u00DFe \u4F1A\u8B70 \U0001F600\r\n";
  EXPECT_EQ(TakeConsoleText(bytes), L"Gr\u00FC\u00DFe \u4F1A\u8B70 \xD83D\xDE00\r\n");
  EXPECT_TRUE(bytes.empty());
}

TEST(TakeConsoleText, MarksWhatIsNoUtf8) {
  std::string_view bytes = "a\xFFz";
  EXPECT_EQ(TakeConsoleText(bytes), L"a\uFFFDz");
}

// Wherever the most that a call takes ends, no character is cut in two.
TEST(TakeConsoleText, KeepsCharactersWhole) {
  for (size_t front = 0; front < 8; ++front) {
    std::string text(front, '-');
    std::wstring expected(front, L'-');
    for (int i = 0; i < 9000; ++i) {
      text += i % 2 == 0 ? "\U0001F600" : "\u20AC";
      expected += i % 2 == 0 ? L"\xD83D\xDE00" : L"\u20AC";
    }
    std::string_view left = text;
    std::wstring taken;
    while (!left.empty()) {
      const size_t before = left.size();
      taken += TakeConsoleText(left);
      ASSERT_LE(before - left.size(), kMostConsoleBytes);
      ASSERT_LT(left.size(), before);
    }
    EXPECT_EQ(taken, expected) << front;
  }
}

TEST(TakeConsoleText, GetsAcrossContinuationBytesAlone) {
  const std::string text(kMostConsoleBytes + 10, '\x80');
  std::string_view left = text;
  TakeConsoleText(left);
  EXPECT_EQ(left.size(), 10u);
}

}  // namespace
}  // namespace tarn::host
