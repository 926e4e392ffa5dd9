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
  std::set<std::string> libraries;
  for (const PeImport& import : PeFile(TARN_FILTER_PATH).imports()) {
    libraries.insert(LowerCase(import.library));
    if (import.library == "Tarnbase.dll") {
      EXPECT_EQ(import.names, std::set<std::string>());
      EXPECT_GT(import.ordinals.size(), 20U);
      EXPECT_LE(*import.ordinals.rbegin(), 35U);  // no control of the plain kernel is among them
    } else if (LowerCase(import.library) == "gdi32.dll") {
      EXPECT_EQ(import.names, (std::set<std::string>{"SelectObject"}));
    } else if (LowerCase(import.library) == "usp10.dll") {
      EXPECT_EQ(import.names, (std::set<std::string>{"ScriptFreeCache", "ScriptGetCMap"}));
    }
  }
  EXPECT_EQ(libraries, (std::set<std::string>{"gdi32.dll", "kernel32.dll", "msvcrt.dll",
                                              "tarnbase.dll", "usp10.dll"}));
}

}  // namespace
}  // namespace tarn::test
