// Ordinals.h - the numbers under which programs import the kernel on Windows. They are the
// interface with programs that were built before: none of them ever changes.
#ifndef TARN_TESTS_KERNEL_ORDINALS_H
#define TARN_TESTS_KERNEL_ORDINALS_H

#include <array>
#include <cstdint>
#include <string_view>

#include "Tarnbase/PlainKernel.h"

namespace tarn::test {

using AnyFunction = void (*)();

struct Ordinal {
  uint32_t number;
  std::string_view name;
  AnyFunction function;  // as this program got it from the library
};

inline const std::array<Ordinal, 42>& Ordinals() {
  static const std::array<Ordinal, 42> rows = {{
      {1, "KernelAlloc", reinterpret_cast<AnyFunction>(&KernelAlloc)},
      {2, "KernelAllocZero", reinterpret_cast<AnyFunction>(&KernelAllocZero)},
      {3, "KernelRealloc", reinterpret_cast<AnyFunction>(&KernelRealloc)},
      {4, "KernelFree", reinterpret_cast<AnyFunction>(&KernelFree)},
      {5, "KernelTrackObject", reinterpret_cast<AnyFunction>(&KernelTrackObject)},
      {6, "KernelUntrackObject", reinterpret_cast<AnyFunction>(&KernelUntrackObject)},
      {7, "KernelMemoryReport", reinterpret_cast<AnyFunction>(&KernelMemoryReport)},
      {8, "KernelFileOpen", reinterpret_cast<AnyFunction>(&KernelFileOpen)},
      {9, "KernelFileClose", reinterpret_cast<AnyFunction>(&KernelFileClose)},
      {10, "KernelFileRead", reinterpret_cast<AnyFunction>(&KernelFileRead)},
      {11, "KernelFileReadLarge", reinterpret_cast<AnyFunction>(&KernelFileReadLarge)},
      {12, "KernelFileWrite", reinterpret_cast<AnyFunction>(&KernelFileWrite)},
      {13, "KernelFileWriteLarge", reinterpret_cast<AnyFunction>(&KernelFileWriteLarge)},
      {14, "KernelFileSeek", reinterpret_cast<AnyFunction>(&KernelFileSeek)},
      {15, "KernelRawFileCreate", reinterpret_cast<AnyFunction>(&KernelRawFileCreate)},
      {16, "KernelRawFileWrite", reinterpret_cast<AnyFunction>(&KernelRawFileWrite)},
      {17, "KernelRawFileClose", reinterpret_cast<AnyFunction>(&KernelRawFileClose)},
      {18, "KernelDeleteFile", reinterpret_cast<AnyFunction>(&KernelDeleteFile)},
      {19, "KernelDeleteFileUtf8", reinterpret_cast<AnyFunction>(&KernelDeleteFileUtf8)},
      {20, "KernelTempFileName", reinterpret_cast<AnyFunction>(&KernelTempFileName)},
      {21, "KernelMemFileOpen", reinterpret_cast<AnyFunction>(&KernelMemFileOpen)},
      {22, "KernelMemFileClose", reinterpret_cast<AnyFunction>(&KernelMemFileClose)},
      {23, "KernelMapLastError", reinterpret_cast<AnyFunction>(&KernelMapLastError)},
      {24, "KernelWideToUtf8", reinterpret_cast<AnyFunction>(&KernelWideToUtf8)},
      {25, "KernelUtf8ToWide", reinterpret_cast<AnyFunction>(&KernelUtf8ToWide)},
      {26, "KernelNextChar", reinterpret_cast<AnyFunction>(&KernelNextChar)},
      {27, "KernelGetLanguage", reinterpret_cast<AnyFunction>(&KernelGetLanguage)},
      {28, "KernelIoModeGet", reinterpret_cast<AnyFunction>(&KernelIoModeGet)},
      {29, "KernelIoModeFill", reinterpret_cast<AnyFunction>(&KernelIoModeFill)},
      {30, "KernelIoModeSwap", reinterpret_cast<AnyFunction>(&KernelIoModeSwap)},
      {31, "KernelCreateDC", reinterpret_cast<AnyFunction>(&KernelCreateDC)},
      {32, "KernelDeleteDC", reinterpret_cast<AnyFunction>(&KernelDeleteDC)},
      {33, "KernelCreateFont", reinterpret_cast<AnyFunction>(&KernelCreateFont)},
      {34, "KernelDeleteFont", reinterpret_cast<AnyFunction>(&KernelDeleteFont)},
      {35, "KernelLoaderEntry", reinterpret_cast<AnyFunction>(&KernelLoaderEntry)},
      {101, "PlainKernelSetLanguage", reinterpret_cast<AnyFunction>(&PlainKernelSetLanguage)},
      {102, "PlainKernelSetIoMode", reinterpret_cast<AnyFunction>(&PlainKernelSetIoMode)},
      {103, "PlainKernelSetTempDirectory",
       reinterpret_cast<AnyFunction>(&PlainKernelSetTempDirectory)},
      {104, "PlainKernelSetMemoryBudget",
       reinterpret_cast<AnyFunction>(&PlainKernelSetMemoryBudget)},
      {105, "PlainKernelFailAt", reinterpret_cast<AnyFunction>(&PlainKernelFailAt)},
      {106, "PlainKernelUsage", reinterpret_cast<AnyFunction>(&PlainKernelUsage)},
      {107, "PlainKernelFailFrom", reinterpret_cast<AnyFunction>(&PlainKernelFailFrom)},
  }};
  return rows;
}

}  // namespace tarn::test

#endif
