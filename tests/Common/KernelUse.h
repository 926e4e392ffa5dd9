// KernelUse.h - short forms of what tests ask the plain kernel.
#ifndef TARN_TESTS_COMMON_KERNELUSE_H
#define TARN_TESTS_COMMON_KERNELUSE_H

#include <cstring>
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
  SizedBytes text;
  text.setData(static_cast<char*>(KernelAlloc(bytes.size(), 1, TARN_HERE)));
  std::memcpy(text.data(), bytes.data(), bytes.size());
  text.setLength(bytes.size());
  return text;
}

// Bytes that hold NULs, from a literal.
template <size_t N>
std::string Raw(const char (&literal)[N]) {
  return std::string(literal, N - 1);
}

}  // namespace tarn::test

#endif
