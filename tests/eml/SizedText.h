// SizedText.h - texts in kernel blocks of exactly their size, and their bytes back.
#ifndef TARN_TESTS_EML_SIZEDTEXT_H
#define TARN_TESTS_EML_SIZEDTEXT_H

#include <cstring>
#include <string>
#include <string_view>

#include "Internal/Tarnclasses_.h"

namespace tarn::test {

using namespace std::string_view_literals;

inline SizedBytes Sized(std::string_view bytes) {
  SizedBytes text;
  text.setData(static_cast<char*>(KernelAlloc(bytes.size(), 1, TARN_HERE)));
  text.setLength(bytes.size());
  if (!bytes.empty()) std::memcpy(text.data(), bytes.data(), bytes.size());
  return text;
}

// All bytes that the length counts, a trailing NUL included.
inline std::string Bytes(const SizedBytes& text) { return std::string(text.view()); }

}  // namespace tarn::test

#endif
