// KernelText.h - the bytes of an input as the filter holds them.
#ifndef TARN_FUZZ_KERNELTEXT_H
#define TARN_FUZZ_KERNELTEXT_H

#include <cstdlib>
#include <string_view>

#include "Internal/Tarnclasses_.h"

namespace tarn::fuzz {

// In a block of exactly these bytes, so that reading or writing past them is found out.
inline SizedBytes KernelText(std::string_view bytes) {
  KernelBlock<char> block = AllocateBlock<char>(bytes.size(), TARN_HERE);
  if (!block) std::abort();
  bytes.copy(block.get(), bytes.size());
  return {std::move(block), bytes.size()};
}

}  // namespace tarn::fuzz

#endif
