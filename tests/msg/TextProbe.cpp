#include "TextProbe.h"

#include <dlfcn.h>

#include <cstring>
#include <string>

#include "Tarnbase/Kernel.h"

namespace {

int64_t g_answer = 0;  // 0: the kernel's own

}  // namespace

namespace tarn::test {

TextProbe::TextProbe(int64_t answer) { g_answer = answer; }
TextProbe::~TextProbe() { g_answer = 0; }

}  // namespace tarn::test

int64_t KernelUtf8ToWide(const char* source, int64_t bytes, char16_t* destination, int64_t units) {
  void* const address = dlsym(RTLD_NEXT, "KernelUtf8ToWide");
  decltype(&KernelUtf8ToWide) next = nullptr;
  static_assert(sizeof(next) == sizeof(address));
  std::memcpy(&next, &address, sizeof(address));
  std::u16string before;
  if (destination != nullptr && units > 0) before.assign(destination, static_cast<size_t>(units));
  const int64_t written = next(source, bytes, destination, units);
  if (written == 0 || g_answer == 0) return written;
  // The units behind are as they were.
  for (int64_t i = written; i < units; ++i) destination[i] = before[static_cast<size_t>(i)];
  return g_answer;
}
