// KernelUse.h - short forms of what tests ask the plain kernel.
#ifndef TARN_TESTS_COMMON_KERNELUSE_H
#define TARN_TESTS_COMMON_KERNELUSE_H

#include <string>
#include <string_view>

#include "Internal/Tarnclasses_.h"
#include "Tarnbase/PlainKernel.h"
#include "support/KernelUsage.h"

namespace tarn::test {

inline uint64_t ReportedBytes() { return Usage().reportedBytes; }
inline uint64_t Allocations() { return Usage().allocationCalls; }

// A block of exactly these bytes, so that reading or writing past them is found out.
inline SizedBytes Bytes(std::string_view bytes) {
  KernelBlock<char> block = AllocateBlock<char>(bytes.size(), TARN_HERE);
  bytes.copy(block.get(), bytes.size());
  return {std::move(block), bytes.size()};
}

// Bytes that hold NULs, from a literal.
template <size_t N>
std::string Raw(const char (&literal)[N]) {
  return std::string(literal, N - 1);
}

}  // namespace tarn::test

#endif
