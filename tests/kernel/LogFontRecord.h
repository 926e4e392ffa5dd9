// LogFontRecord.h - LOGFONTW records for KernelCreateFont, byte by byte.
#ifndef TARN_TESTS_KERNEL_LOGFONTRECORD_H
#define TARN_TESTS_KERNEL_LOGFONTRECORD_H

#include <array>
#include <cstring>

namespace tarn::test {

using LogFont = std::array<unsigned char, 92>;

inline LogFont LogFontWithFace(const char16_t* face, size_t units) {
  LogFont record = {};
  std::memcpy(record.data() + 28, face, units * 2);
  return record;
}

}  // namespace tarn::test

#endif
