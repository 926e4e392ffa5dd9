#include "TextProbe.h"

#include <string>

#include "Tarnbase/Kernel.h"

namespace {

int64_t g_answer = 0;  // 0: the kernel's own

}  // namespace

namespace tarn::test {

TextProbe::TextProbe(int64_t answer) { g_answer = answer; }
TextProbe::~TextProbe() { g_answer = 0; }

}  // namespace tarn::test

extern "C" {

int64_t __real_KernelUtf8ToWide(const char* source, int64_t bytes, char16_t* destination,
                                int64_t units);

int64_t __wrap_KernelUtf8ToWide(const char* source, int64_t bytes, char16_t* destination,
                                int64_t units) {
  std::u16string before;
  if (destination != nullptr && units > 0) before.assign(destination, static_cast<size_t>(units));
  const int64_t written = __real_KernelUtf8ToWide(source, bytes, destination, units);
  if (written == 0 || g_answer == 0) return written;
  // The units after it are as they were.
  for (int64_t i = written; i < units; ++i) destination[i] = before[static_cast<size_t>(i)];
  return g_answer;
}

}  // extern "C"
