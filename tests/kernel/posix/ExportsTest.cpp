#include <gtest/gtest.h>
#include <stdio.h>

#include <set>
#include <sstream>
#include <string>

namespace tarn::test {
namespace {

const std::set<std::string> kExpected = {"KernelAlloc",
                                         "KernelAllocZero",
                                         "KernelCreateDC",
                                         "KernelCreateFont",
                                         "KernelDeleteDC",
                                         "KernelDeleteFile",
                                         "KernelDeleteFileUtf8",
                                         "KernelDeleteFont",
                                         "KernelFileClose",
                                         "KernelFileOpen",
                                         "KernelFileRead",
                                         "KernelFileReadLarge",
                                         "KernelFileSeek",
                                         "KernelFileWrite",
                                         "KernelFileWriteLarge",
                                         "KernelFree",
                                         "KernelGetLanguage",
                                         "KernelIoModeFill",
                                         "KernelIoModeGet",
                                         "KernelIoModeSwap",
                                         "KernelLoaderEntry",
                                         "KernelMapLastError",
                                         "KernelMemFileClose",
                                         "KernelMemFileOpen",
                                         "KernelMemoryReport",
                                         "KernelNextChar",
                                         "KernelRawFileClose",
                                         "KernelRawFileCreate",
                                         "KernelRawFileWrite",
                                         "KernelRealloc",
                                         "KernelTempFileName",
                                         "KernelTrackObject",
                                         "KernelUntrackObject",
                                         "KernelUtf8ToWide",
                                         "KernelWideToUtf8",
                                         "PlainKernelFailAt",
                                         "PlainKernelFailFrom",
                                         "PlainKernelSetIoMode",
                                         "PlainKernelSetLanguage",
                                         "PlainKernelSetMemoryBudget",
                                         "PlainKernelSetTempDirectory",
                                         "PlainKernelUsage"};

// The names that `nm` lists for the library, last word of each line.
std::set<std::string> DefinedSymbols() {
  std::set<std::string> names;
  FILE* const pipe = ::popen("nm -D --defined-only '" TARN_KERNEL_LIBRARY "'", "r");
  if (pipe == nullptr) return names;
  char line[1024];
  while (::fgets(line, sizeof line, pipe) != nullptr) {
    std::istringstream words(line);
    std::string word;
    while (words >> word) continue;
    names.insert(word);
  }
  EXPECT_EQ(::pclose(pipe), 0);
  return names;
}

TEST(Exports, AreTheKernelOperationsAndControlsAndNothingElse) {
  EXPECT_EQ(DefinedSymbols(), kExpected);
}

}  // namespace
}  // namespace tarn::test
