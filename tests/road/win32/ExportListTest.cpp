// What the filter shows of itself, and what it needs: the system's libraries and the kernel beside
// it, whose operations it knows by number only.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <set>
#include <string>
#include <vector>

#include "support/PeFile.h"

namespace tarn::test {
namespace {

std::string LowerCase(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return text;
}

TEST(Exports, AreTheSixNamesAndNothingElse) {
  const PeExports exports = PeFile(TARN_FILTER_PATH).exports();
  EXPECT_EQ(exports.names,
            (std::set<std::string>{"TARN_Load", "fltExtractAttachment", "fltFreeData",
                                   "fltGetAttachmentInfo", "fltInfo", "fltLoad"}));
  EXPECT_EQ(exports.ordinals.size(), 6U);
}

TEST(Exports, NeedTheSystemAndTheKernelOnly) {
  const std::set<std::string> system = {"gdi32.dll", "kernel32.dll", "msvcrt.dll", "user32.dll",
                                        "usp10.dll"};
  size_t kernels = 0;
  for (const PeImport& import : PeFile(TARN_FILTER_PATH).imports()) {
    if (import.library == "Tarnbase.dll") {
      ++kernels;
      EXPECT_EQ(import.names, std::set<std::string>());
      EXPECT_GT(import.ordinals.size(), 20U);
      EXPECT_LE(*import.ordinals.rbegin(), 35U);  // no control of the plain kernel is among them
    } else {
      EXPECT_EQ(system.count(LowerCase(import.library)), 1U) << import.library;
    }
  }
  EXPECT_EQ(kernels, 1U);
}

}  // namespace
}  // namespace tarn::test
