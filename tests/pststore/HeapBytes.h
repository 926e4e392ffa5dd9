// HeapBytes.h - heaps and BTHs written byte by byte, for tests that say exactly what is where.
#ifndef TARN_TESTS_PSTSTORE_HEAPBYTES_H
#define TARN_TESTS_PSTSTORE_HEAPBYTES_H

#include <cstdint>
#include <string>
#include <vector>

#include "support/pst/HeapBuilder.h"
#include "support/pst/PstBytes.h"

namespace tarn::test {

// The page, the allocations one after the other, and their map.
inline std::string WithPageMap(std::string page, const std::vector<std::string>& allocations) {
  std::string map = LeBytes(allocations.size(), 2) + LeBytes(0, 2) + LeBytes(page.size(), 2);
  for (const std::string& bytes : allocations) {
    page += bytes;
    AppendLe(map, page.size(), 2);
  }
  PutLe(page, 0, page.size(), 2);
  return page + map;
}

// The first page of a heap; its allocations have the heap ids 0x20, 0x40, 0x60, ...
inline std::string HeapPage(uint8_t clientSignature, uint32_t root,
                            const std::vector<std::string>& allocations) {
  return WithPageMap("??\xEC" + LeBytes(clientSignature, 1) + LeBytes(root, 4) + LeBytes(0, 4),
                     allocations);
}

// A further page; the heap ids of page 1 are 0x10020, 0x10040, ...
inline std::string NextHeapPage(const std::vector<std::string>& allocations) {
  return WithPageMap("??", allocations);
}

// The header of a BTH.
inline std::string BthHeader(uint8_t keySize, uint8_t entrySize, uint8_t levels, uint32_t root) {
  return "\xB5" + LeBytes(keySize, 1) + LeBytes(entrySize, 1) + LeBytes(levels, 1) +
         LeBytes(root, 4);
}

// Two numbers of 4 bytes: a BTH record of a 4-byte key.
inline std::string Record4(uint32_t key, uint32_t value) {
  return LeBytes(key, 4) + LeBytes(value, 4);
}

// A BTH record of a property: key, type, value.
inline std::string Record2(uint16_t key, uint16_t type, uint32_t value) {
  return LeBytes(key, 2) + LeBytes(type, 2) + LeBytes(value, 4);
}

}  // namespace tarn::test

#endif
