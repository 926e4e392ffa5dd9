// Expect.h - how a fuzz target ends the process.
#ifndef TARN_FUZZ_HOST_EXPECT_H
#define TARN_FUZZ_HOST_EXPECT_H

#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace tarn::fuzz {

inline void Expect(bool holds, const char* otherwise) {
  if (holds) return;
  std::fprintf(stderr, "%s\n", otherwise);
  std::abort();
}

// Touches every byte, so that the sanitizers see them; a number that tells contents apart.
uint64_t ReadAll(const void* data, uint64_t size);

}  // namespace tarn::fuzz

#endif
