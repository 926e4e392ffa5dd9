#include "Report.h"

#include <array>
#include <cstdio>
#include <cstdlib>

#include "Utf8.h"

namespace tarn::kernel {
namespace {

constexpr size_t kLongestFileName = 255;  // units; a longer name is cut

using FileName = std::array<char, kLongestFileName * 3 + 1>;

FileName NarrowName(const char16_t* file) {
  FileName name = {'?'};
  if (file == nullptr) return name;
  size_t units = 0;
  while (units < kLongestFileName && file[units] != u'\0') ++units;
  EncodeUtf8({file, units}, name);
  return name;
}

// Not "%p", which spells addresses differently from one runtime to the next.
unsigned long long AddressNumber(const void* address) {
  return static_cast<unsigned long long>(reinterpret_cast<uintptr_t>(address));
}

}  // namespace

void AbortOnMisuse(const char* operation, const char* what, const void* address, int32_t line,
                   const char16_t* file) {
  std::fprintf(stderr, "Tarnbase: %s: %s: 0x%llx (line %d of %s)\n", operation, what,
               AddressNumber(address), static_cast<int>(line), NarrowName(file).data());
  std::fflush(stderr);
  std::abort();
}

void ReportUnlisted(const char* what) {
  std::fprintf(stderr, "Tarnbase: in use, not listed: %ss\n", what);
}

void ReportLeak(const char* what, const void* address, int32_t line, const char16_t* file) {
  std::fprintf(stderr, "Tarnbase: still alive: %s 0x%llx (line %d of %s)\n", what,
               AddressNumber(address), static_cast<int>(line), NarrowName(file).data());
}

}  // namespace tarn::kernel
