#include "Report.h"

#include <array>
#include <cstdio>
#include <cstdlib>

#include "Text.h"

namespace tarn::kernel {
namespace {

constexpr int64_t kLongestFileName = 255;  // units; a longer name is cut

}  // namespace

void AbortOnMisuse(const char* operation, const char* what, const void* address, int32_t line,
                   const char16_t* file) {
  std::array<char, kLongestFileName* 3 + 1> name = {'?', '\0'};
  if (file != nullptr) {
    int64_t units = 0;
    while (units < kLongestFileName && file[units] != u'\0') ++units;
    EncodeUtf8(file, units, name.data(), static_cast<int64_t>(name.size()));
  }
  // No "%p" of null, whose spelling differs between runtimes.
  std::fprintf(stderr, "Tarnbase: %s: %s: 0x%llx (line %d of %s)\n", operation, what,
               static_cast<unsigned long long>(reinterpret_cast<uintptr_t>(address)),
               static_cast<int>(line), name.data());
  std::fflush(stderr);
  std::abort();
}

}  // namespace tarn::kernel
